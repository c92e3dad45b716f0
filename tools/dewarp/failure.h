// Failures of the dewarp tool. Every problem with the command line or the input files becomes one
// of these, carrying a one-line message and the exit status; main() prints it and exits, so no
// problem ever ends the process any other way.
#ifndef DEWARP_TOOL_FAILURE_H
#define DEWARP_TOOL_FAILURE_H

#include <stdexcept>
#include <string>

namespace dewarp_tool {

// Exit statuses: 0 done, 1 the engine or plug-in refused to work, 2 bad command line or input.
enum ExitStatus { kExitOk = 0, kExitEngine = 1, kExitBadInput = 2 };

class Failure : public std::runtime_error {
public:
  Failure(ExitStatus status, const std::string& message);
  ExitStatus Status() const { return m_status; }

private:
  ExitStatus m_status;
};

// Bad command line or input (exit status 2).
[[noreturn]] void BadInput(const std::string& message);
// The engine or plug-in failed on valid input (exit status 1); the engine's errno is appended.
[[noreturn]] void EngineFailure(const std::string& what);

}  // namespace dewarp_tool

#endif
