// The exception barrier of the C interface.
//
// Every interface function holds a BadExceptionHandler for its whole call and runs the engine
// through BadExceptionHandler::Invoke. The engine lets through only std::exception (Error included)
// and std::bad_exception; an exception of any other type is logged with the first matching line of
// the unexpected-exception ladder and replaced by std::bad_exception, which the interface function
// then reports with its own line.
#pragma once

#include <exception>
#include <utility>

namespace vemo {
namespace libdewarp {

class BadExceptionHandler {
public:
  // Installs TerminateHandler as the process's terminate handler and keeps the previous one.
  BadExceptionHandler();
  // Puts the previous terminate handler back.
  virtual ~BadExceptionHandler();

  // Must be called while an exception is being handled (inside a catch block): logs the ladder line
  // of the current exception with Log::err and throws std::bad_exception.
  [[noreturn]] static void UnexpectedHandler();

  // Logs the ladder line of the current exception, if there is one; no exception leaves it.
  static void LogUnexpected() noexcept;

  // Calls f() and gives its result. std::exception (Error and std::bad_exception included) passes
  // unchanged; any other exception becomes the logged ladder line and a thrown std::bad_exception.
  template <class F>
  static auto Invoke(F&& f) -> decltype(f()) {
    try {
      return std::forward<F>(f)();
    } catch (const std::exception&) {
      throw;
    } catch (...) {
      UnexpectedHandler();
    }
  }

  std::terminate_handler GetOldHandler() const { return m_pfnOldHandler; }

private:
  BadExceptionHandler(const BadExceptionHandler&) = delete;
  BadExceptionHandler& operator=(const BadExceptionHandler&) = delete;

  // Installed for the duration of an interface call: logs the ladder line of the exception that
  // ends the process (if any) before the process is aborted as by the default handler.
  [[noreturn]] static void TerminateHandler();

  std::terminate_handler m_pfnOldHandler;
};

}  // namespace libdewarp
}  // namespace vemo
