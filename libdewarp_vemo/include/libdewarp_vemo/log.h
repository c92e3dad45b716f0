// The engine's process-wide log: printf-style formats handed, with the caller's argument list, to
// the callback installed through set_logging. A delivered line is the level prefix, "- " and the
// message format; the callback expands the placeholders.
#pragma once

#include <libdewarp_vemo/dewarp.h>

#include <atomic>
#include <cstdarg>
#include <string>

#define DEWARP_LOG_PRINTF(format_index, first_argument) \
  __attribute__((format(__printf__, format_index, first_argument)))

namespace vemo {
namespace libdewarp {

class Log {
public:
  // The effective level is clamped to LOG_ERROR .. LOG_INFO.
  static constexpr DEWARP_LOG_LEVEL MinLevel = LOG_ERROR;
  static constexpr DEWARP_LOG_LEVEL MaxLevel = LOG_INFO;

  // Installs the function and the clamped level; returns the previous settings.
  static DEWARP_LOG_SETTINGS set_logging(const DEWARP_LOG_SETTINGS& settings);
  // True when `level` is not above the current level.
  static bool check_level(DEWARP_LOG_LEVEL level);

  static void err(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);
  static void warn(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);
  static void info(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);
  static void debug(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);
  // Trace level with the tags "[ENTRY] " and "[EXIT] "; never delivered because of the clamping.
  static void entry(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);
  static void exit(int line, const char* file, const char* function, const char* format, ...)
      DEWARP_LOG_PRINTF(4, 5);

  // Without a level test: "LIBDEWARP: - " and the format.
  static void printf(const char* format, ...) DEWARP_LOG_PRINTF(1, 2);
  static void vprintf(const char* format, va_list arguments);

  // Line formats. The line, file, function and tag are accepted but not written into the line.
  static std::string reformat(DEWARP_LOG_LEVEL level, int line, const char* file, const char* function,
                              const char* message);
  static std::string reformat(DEWARP_LOG_LEVEL level, int line, const char* file, const char* function,
                              const char* tag, const char* message);
  static std::string reformat(const char* message);

  // Hands format and arguments to the installed function, if there is one.
  static void log(const char* format, va_list arguments);

private:
  static void deliver(DEWARP_LOG_LEVEL level, int line, const char* file, const char* function,
                      const char* tag, const char* format, va_list arguments);

  // Process-wide and taken without a lock; atomic so that a thread logging while another installs
  // new settings reads either the old or the new value of each.
  static std::atomic<DEWARP_LOG_FUNCTION> m_fnLogger;
  static std::atomic<DEWARP_LOG_LEVEL> m_eLevel;
};

}  // namespace libdewarp
}  // namespace vemo

#define DEWARP_LOG_ERR(fmt, ...) \
  ::vemo::libdewarp::Log::err(__LINE__, __FILE__, __FUNCTION__, fmt, ##__VA_ARGS__)
#define DEWARP_LOG_WARN(fmt, ...) \
  ::vemo::libdewarp::Log::warn(__LINE__, __FILE__, __FUNCTION__, fmt, ##__VA_ARGS__)
#define DEWARP_LOG_INFO(fmt, ...) \
  ::vemo::libdewarp::Log::info(__LINE__, __FILE__, __FUNCTION__, fmt, ##__VA_ARGS__)
#define DEWARP_LOG_DEBUG(fmt, ...) \
  ::vemo::libdewarp::Log::debug(__LINE__, __FILE__, __FUNCTION__, fmt, ##__VA_ARGS__)
