#include <libdewarp_vemo/map_functor.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

MapFunctor& MapFunctor::operator=(const MapFunctor& other) {
  if (this == &other) DEWARP_LOG_WARN("Self assignment of %s object\n", "MapFunctor");
  return *this;
}

}  // namespace libdewarp
}  // namespace vemo
