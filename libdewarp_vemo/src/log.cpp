#include <libdewarp_vemo/log.h>

#include <libdewarp_vemo/defaults.h>

namespace vemo {
namespace libdewarp {

std::atomic<DEWARP_LOG_FUNCTION> Log::m_fnLogger(Defaults::LogFunction);
std::atomic<DEWARP_LOG_LEVEL> Log::m_eLevel(Defaults::LogLevel);

namespace {

const char* LevelPrefix(DEWARP_LOG_LEVEL level) {
  switch (level) {
    case LOG_ERROR:
      return "LIBDEWARP: ERROR ";
    case LOG_WARNING:
      return "LIBDEWARP: WARNING ";
    case LOG_INFO:
      return "LIBDEWARP: INFO ";
    case LOG_DEBUG:
      return "LIBDEWARP: DEBUG ";
    case LOG_TRACE:
      return "LIBDEWARP: TRACE ";
  }
  // Any other level has no prefix: the line starts with "- ".
  return "";
}

std::string TextOrEmpty(const char* text) { return text ? std::string(text) : std::string(); }

}  // namespace

DEWARP_LOG_SETTINGS Log::set_logging(const DEWARP_LOG_SETTINGS& settings) {
  DEWARP_LOG_SETTINGS previous;
  previous.Function = m_fnLogger.load(std::memory_order_relaxed);
  previous.Level = m_eLevel.load(std::memory_order_relaxed);

  DEWARP_LOG_LEVEL level = settings.Level;
  if (level < MinLevel) {
    level = MinLevel;
  } else if (level > MaxLevel) {
    level = MaxLevel;
  }
  m_fnLogger.store(settings.Function, std::memory_order_relaxed);
  m_eLevel.store(level, std::memory_order_relaxed);
  return previous;
}

bool Log::check_level(DEWARP_LOG_LEVEL level) { return level <= m_eLevel.load(std::memory_order_relaxed); }

// Nothing is formatted unless a function is installed and the level passes.
void Log::deliver(DEWARP_LOG_LEVEL level, int line, const char* file, const char* function, const char* tag,
                  const char* format, va_list arguments) {
  if (!m_fnLogger.load(std::memory_order_relaxed) || !check_level(level)) {
    return;
  }
  // Logging never throws into the engine: a line that cannot be built is dropped.
  try {
    const std::string text = tag ? reformat(level, line, file, function, tag, format)
                                 : reformat(level, line, file, function, format);
    log(text.c_str(), arguments);
  } catch (...) {
  }
}

#define DEWARP_LOG_DELIVER(level, tag)                                  \
  do {                                                                  \
    va_list arguments;                                                  \
    va_start(arguments, format);                                        \
    deliver(level, line, file, function, tag, format, arguments);       \
    va_end(arguments);                                                  \
  } while (0)

void Log::err(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_ERROR, nullptr);
}

void Log::warn(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_WARNING, nullptr);
}

void Log::info(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_INFO, nullptr);
}

void Log::debug(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_DEBUG, nullptr);
}

void Log::entry(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_TRACE, "[ENTRY] ");
}

void Log::exit(int line, const char* file, const char* function, const char* format, ...) {
  DEWARP_LOG_DELIVER(LOG_TRACE, "[EXIT] ");
}

#undef DEWARP_LOG_DELIVER

void Log::printf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vprintf(format, arguments);
  va_end(arguments);
}

void Log::vprintf(const char* format, va_list arguments) {
  if (!m_fnLogger.load(std::memory_order_relaxed)) {
    return;
  }
  try {
    const std::string text = reformat(format);
    log(text.c_str(), arguments);
  } catch (...) {
  }
}

std::string Log::reformat(DEWARP_LOG_LEVEL level, int, const char*, const char*, const char* message) {
  return std::string(LevelPrefix(level)) + "- " + TextOrEmpty(message);
}

std::string Log::reformat(DEWARP_LOG_LEVEL level, int, const char*, const char*, const char*,
                          const char* message) {
  return std::string(LevelPrefix(level)) + "- " + TextOrEmpty(message);
}

std::string Log::reformat(const char* message) { return "LIBDEWARP: - " + TextOrEmpty(message); }

void Log::log(const char* format, va_list arguments) {
  const DEWARP_LOG_FUNCTION function = m_fnLogger.load(std::memory_order_relaxed);
  if (function) {
    va_list copy;
    va_copy(copy, arguments);
    function(format, copy);
    va_end(copy);
  }
}

}  // namespace libdewarp
}  // namespace vemo
