#include "failure.h"

#include <cerrno>
#include <cstring>

namespace dewarp_tool {

Failure::Failure(ExitStatus status, const std::string& message)
    : std::runtime_error(message), m_status(status) {}

void BadInput(const std::string& message) {
  throw Failure(kExitBadInput, message);
}

void EngineFailure(const std::string& what) {
  const int code = errno;
  throw Failure(kExitEngine, what + " failed (errno " + std::to_string(code) + ", " +
                                 std::strerror(code) + "); run with --log info for the engine's reasons");
}

}  // namespace dewarp_tool
