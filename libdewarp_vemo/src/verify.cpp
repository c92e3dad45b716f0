#include <libdewarp_vemo/verify.h>

#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/log.h>

#include <cerrno>

namespace vemo {
namespace libdewarp {

namespace {

// Enumerations cross the interface as plain 32-bit integers; a value is valid when it lies in
// [0, last].
template <class Enumeration>
void VerifyEnumeration(const CodeLocation& location, Enumeration value, Enumeration last, const char* message) {
  const int number = static_cast<int>(value);
  if (number < 0 || number > static_cast<int>(last)) {
    Error::SetLastError(EINVAL);
    throw Error(location, EINVAL, "%s", message);
  }
}

void Refuse(const CodeLocation& location, int code, const char* message) {
  Error::SetLastError(code);
  throw Error(location, code, "%s", message);
}

}  // namespace

void Verify(const CodeLocation& location, DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  VerifyEnumeration(location, mount, INVERTED_WALL_MOUNT, "Invalid camera mount");
}

// The camera type reports the mount's message; callers know this text.
void Verify(const CodeLocation& location, DEWARP_INTERNAL_CAMERA_TYPE type) {
  VerifyEnumeration(location, type, CIRCULAR_FISHEYE_CAMERA, "Invalid camera mount");
}

void Verify(const CodeLocation& location, DEWARP_IMAGE_FORMAT format) {
  VerifyEnumeration(location, format, YUV420_PLANAR_IMAGE, "Invalid image format");
}

void Verify(const CodeLocation& location, DEWARP_ASPECT_RATIO aspectRatio) {
  VerifyEnumeration(location, aspectRatio, FREE_ASPECT_RATIO, "Invalid aspect ratio");
}

void Verify(const CodeLocation& location, DEWARP_VIEW view) {
  VerifyEnumeration(location, view, QUAD_PTZ_VIEW, "Invalid view");
}

void Verify(const CodeLocation& location, DEWARP_PROJECTION projection) {
  VerifyEnumeration(location, projection, EQUIRECTANGULAR_PANNINI_PROJECTION, "Invalid projection");
}

void Verify(const CodeLocation& location, DEWARP_INTERPOLATION interpolation) {
  VerifyEnumeration(location, interpolation, CUBIC_INTERPOLATION, "Invalid interpolation");
}

void Verify(const CodeLocation&, DEWARP_LOG_LEVEL level) {
  const int number = static_cast<int>(level);
  if (number < static_cast<int>(LOG_ERROR) || number > static_cast<int>(LOG_TRACE)) {
    DEWARP_LOG_WARN("Invalid log level\n");
  }
}

void Verify(const CodeLocation& location, const void* pointer, std::size_t, const char* name) {
  if (!pointer) {
    Error::SetLastError(EFAULT);
    throw Error(location, EFAULT, "Invalid pointer to %s", name ? name : "");
  }
}

void Verify(const CodeLocation& location, const DEWARP_INTERNAL_CAMERA_MODEL& model) {
  Verify(location, model.Type);
}

// PTZ values are clamped by the view, never rejected.
void Verify(const CodeLocation&, const DEWARP_PTZ_POSITION&) {}

void Verify(const CodeLocation& location, const DEWARP_LOG_SETTINGS& settings) {
  Verify(location, settings.Level);
}

void Verify(const CodeLocation& location, const DEWARP_CHANNEL_SETTINGS& settings) {
  Verify(location, settings.AspectRatio);
  Verify(location, settings.Interpolation);
  Verify(location, settings.Projection);
  Verify(location, settings.View);
}

void Verify(const CodeLocation& location, const DEWARP_IMAGE_INFO& info) {
  Verify(location, info.Format);
  if (info.Width == 0) {
    Refuse(location, EINVAL, "Zero width image");
  }
  if (info.Height == 0) {
    Refuse(location, EINVAL, "Zero height image");
  }
  if (info.Stride == 0) {
    Refuse(location, EINVAL, "Zero stride image");
  }
  // The stride is compared with the width in pixels, whatever the format.
  if (info.Stride < info.Width) {
    Refuse(location, EINVAL, "Stride less that width");
  }
}

void Verify(const CodeLocation& location, const DEWARP_IMAGE& image) {
  Verify(location, image.Info);
  Verify(location, image.Data, SizeOf(image), "image data");
}

void Verify(const CodeLocation& location, float value, float lower, float upper, const char* name) {
  const char* text = name ? name : "";
  if (FloatingPoint::is_less(value, lower)) {
    Error::SetLastError(EDOM);
    throw Error(location, EDOM, "Invalid %s, must be %f or greater", text, static_cast<double>(lower));
  }
  if (FloatingPoint::is_greater(value, upper)) {
    Error::SetLastError(EDOM);
    throw Error(location, EDOM, "Invalid %s, must be less than %f", text, static_cast<double>(upper));
  }
}

std::size_t SizeOf(const DEWARP_IMAGE&) { return 0; }

}  // namespace libdewarp
}  // namespace vemo
