// Argument checks of the C interface. Each overload takes the code location of the call and either
// returns or sets errno and throws an Error built from that location, the code and the message.
#pragma once

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/dewarp.h>

#include <cstddef>

namespace vemo {
namespace libdewarp {

// Enumerations: EINVAL with "Invalid camera mount" (mount, and the camera type too), "Invalid image
// format", "Invalid aspect ratio", "Invalid view", "Invalid projection", "Invalid interpolation".
void Verify(const CodeLocation& location, DEWARP_INTERNAL_CAMERA_MOUNT mount);
void Verify(const CodeLocation& location, DEWARP_INTERNAL_CAMERA_TYPE type);
void Verify(const CodeLocation& location, DEWARP_IMAGE_FORMAT format);
void Verify(const CodeLocation& location, DEWARP_ASPECT_RATIO aspectRatio);
void Verify(const CodeLocation& location, DEWARP_VIEW view);
void Verify(const CodeLocation& location, DEWARP_PROJECTION projection);
void Verify(const CodeLocation& location, DEWARP_INTERPOLATION interpolation);
// An invalid log level is only reported with a warning; the call goes on.
void Verify(const CodeLocation& location, DEWARP_LOG_LEVEL level);

// EFAULT with "Invalid pointer to <name>" for a null pointer. The size of the pointed-to object is
// carried for the record but not tested.
void Verify(const CodeLocation& location, const void* pointer, std::size_t size, const char* name);

// Records: only the camera type of a model is tested; PTZ positions are never rejected (the view
// clamps them later).
void Verify(const CodeLocation& location, const DEWARP_INTERNAL_CAMERA_MODEL& model);
void Verify(const CodeLocation& location, const DEWARP_PTZ_POSITION& position);
void Verify(const CodeLocation& location, const DEWARP_LOG_SETTINGS& settings);
// Aspect ratio, interpolation, projection, view, in that order.
void Verify(const CodeLocation& location, const DEWARP_CHANNEL_SETTINGS& settings);
// Format, then non-zero width, height and stride, then stride not less than width (in pixels).
void Verify(const CodeLocation& location, const DEWARP_IMAGE_INFO& info);
// The description, then the data pointer ("image data").
void Verify(const CodeLocation& location, const DEWARP_IMAGE& image);

// EDOM when value is below lower ("Invalid <name>, must be <lower> or greater") or above upper
// ("Invalid <name>, must be less than <upper>"); the bounds themselves are valid.
void Verify(const CodeLocation& location, float value, float lower, float upper, const char* name);

// Byte size of an image's pixel buffer as carried by the pointer check: 0 in this version.
std::size_t SizeOf(const DEWARP_IMAGE& image);

}  // namespace libdewarp
}  // namespace vemo
