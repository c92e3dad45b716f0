// The built-in camera model: the Norvik Kestrel Mk2 circular fisheye lens, 183 degrees, 1936 by 1936
// pixels. GetNorvikKestrelMk2Camera (declared in dewarp.h) returns a copy of it.
#pragma once

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

extern const DEWARP_INTERNAL_CAMERA_MODEL NorvikKestrelMk2;

}  // namespace libdewarp
}  // namespace vemo
