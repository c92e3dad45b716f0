#include <libdewarp_vemo/defaults.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

Defaults::Defaults() {}

Defaults::Defaults(const Defaults&) {}

// Defaults carries no data: assignment only reports a self assignment.
Defaults& Defaults::operator=(const Defaults& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Defaults");
  }
  return *this;
}

Defaults::~Defaults() {}

}  // namespace libdewarp
}  // namespace vemo
