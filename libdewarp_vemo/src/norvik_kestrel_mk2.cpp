#include <libdewarp_vemo/norvik_kestrel_mk2.h>

namespace vemo {
namespace libdewarp {

const DEWARP_INTERNAL_CAMERA_MODEL NorvikKestrelMk2 = {CIRCULAR_FISHEYE_CAMERA, 183.0f, 183.0f, 183.0f, 1936, 1936};

}  // namespace libdewarp
}  // namespace vemo

extern "C" DEWARP_API DEWARP_INTERNAL_CAMERA_MODEL GetNorvikKestrelMk2Camera(void) {
  return vemo::libdewarp::NorvikKestrelMk2;
}
