// Test helper: captures the lines the engine log delivers while it is alive.
//
//   vemo::test::LogCapture cap;               // installs a callback at LOG_INFO
//   vemo::test::LogCapture cap(LOG_WARNING);  // or at a given level
//   cap.lines()      every delivered line, expanded with its argument list (vsnprintf)
//   cap.formats()    the same lines as delivered, placeholders unexpanded
//   cap.contains(s)  true when some expanded line contains s
//   cap.clear()
// The destructor turns logging off (no function, LOG_ERROR). One capture at a time; the callback may
// be called from several threads.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/log.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace vemo {
namespace test {

class LogCapture {
public:
  explicit LogCapture(DEWARP_LOG_LEVEL level = LOG_INFO) {
    {
      std::lock_guard<std::mutex> lock(Mutex());
      Active() = this;
    }
    DEWARP_LOG_SETTINGS settings;
    settings.Function = &LogCapture::Callback;
    settings.Level = level;
    ::vemo::libdewarp::Log::set_logging(settings);
  }

  ~LogCapture() {
    DEWARP_LOG_SETTINGS settings;
    settings.Function = nullptr;
    settings.Level = LOG_ERROR;
    ::vemo::libdewarp::Log::set_logging(settings);
    std::lock_guard<std::mutex> lock(Mutex());
    if (Active() == this) {
      Active() = nullptr;
    }
  }

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  const std::vector<std::string>& lines() const { return m_lines; }
  const std::vector<std::string>& formats() const { return m_formats; }

  bool contains(const std::string& substring) const {
    std::lock_guard<std::mutex> lock(Mutex());
    for (const std::string& line : m_lines) {
      if (line.find(substring) != std::string::npos) {
        return true;
      }
    }
    return false;
  }

  // Number of expanded lines that contain substring.
  std::size_t count(const std::string& substring) const {
    std::lock_guard<std::mutex> lock(Mutex());
    std::size_t n = 0;
    for (const std::string& line : m_lines) {
      if (line.find(substring) != std::string::npos) {
        ++n;
      }
    }
    return n;
  }

  void clear() {
    std::lock_guard<std::mutex> lock(Mutex());
    m_lines.clear();
    m_formats.clear();
  }

  // The log callback: expands the line into a growing buffer and records it with its format.
  static int Callback(const char* format, va_list arguments) {
    std::string text;
    if (format) {
      std::vector<char> buffer(256);
      for (;;) {
        va_list copy;
        va_copy(copy, arguments);
        const int length = std::vsnprintf(buffer.data(), buffer.size(), format, copy);
        va_end(copy);
        if (length < 0) {
          break;
        }
        if (static_cast<std::size_t>(length) < buffer.size()) {
          text.assign(buffer.data(), static_cast<std::size_t>(length));
          break;
        }
        buffer.resize(static_cast<std::size_t>(length) + 1);
      }
    }
    std::lock_guard<std::mutex> lock(Mutex());
    if (LogCapture* capture = Active()) {
      capture->m_lines.push_back(text);
      capture->m_formats.push_back(format ? format : "");
    }
    return static_cast<int>(text.size());
  }

private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static LogCapture*& Active() {
    static LogCapture* active = nullptr;
    return active;
  }

  std::vector<std::string> m_lines;
  std::vector<std::string> m_formats;
};

}  // namespace test
}  // namespace vemo
