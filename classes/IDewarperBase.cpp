#include "IDewarperBase.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <new>

namespace {

// One step moves this fraction of a degree over a range of its nominal span.
const float kStepDegrees = 0.2f;

// Host pixel-format code of three bytes per pixel, the default frame layout.
const int kThreeBytesPerPixelFormat = 12;

}  // namespace

IDewarperBase::IDewarperBase(const DewarpParams_t& params)
    : m_Params(params),
      m_width(0),
      m_height(0),
      m_dstWidth(0),
      m_dstHeight(0),
      m_subMode(1),
      m_needsInit(true),
      m_Pan(0.0f),
      m_Tilt(0.0f),
      m_Zoom(0.0f),
      m_input(nullptr),
      m_output(nullptr) {}

IDewarperBase::~IDewarperBase() {
  delete[] m_input;
  delete[] m_output;
}

int IDewarperBase::SubMode() { return m_subMode; }

void IDewarperBase::SetSubMode(int) {}

bool IDewarperBase::IsSubModeSupported(int) { return false; }

bool IDewarperBase::IsNormalPTZSupported(int) { return false; }

// Only the interactive single view (sub-mode 1) can be steered; the argument is not consulted.
bool IDewarperBase::CanPan(int) { return m_subMode == 1; }

bool IDewarperBase::CanTilt(int) { return m_subMode == 1; }

bool IDewarperBase::CanZoom(int) { return m_subMode == 1; }

int IDewarperBase::StepCount(int direction, int speed) {
  // Computed wide and clamped symmetrically so that no speed the host sends can overflow, and
  // the count can still be negated.
  const long long steps = static_cast<long long>(speed) + 1;
  const long long signedSteps = direction > 0 ? steps : (direction < 0 ? -steps : 0);
  return static_cast<int>(std::clamp<long long>(signedSteps, -INT_MAX, INT_MAX));
}

float IDewarperBase::StepChange(int steps, float min, float max, float span, bool invert) {
  const float change = static_cast<float>(steps) * (max - min) / (span / kStepDegrees);
  return invert ? -change : change;
}

void IDewarperBase::Pan(int direction, int speed) {
  const int steps = StepCount(direction, speed);
  float min = 0.0f, max = 0.0f, span = 0.0f;
  bool wraps = false;
  GetPanRange(min, max, span, wraps);
  m_Pan = m_Pan + StepChange(steps, min, max, span, InvertPan());
  SetPosition(m_Pan, m_Tilt, m_Zoom);
}

// A positive tilt request moves the view up, which lowers the tilt angle: the steps take the
// opposite sign of the direction.
void IDewarperBase::Tilt(int direction, int speed) {
  const int steps = -StepCount(direction, speed);
  float min = 0.0f, max = 0.0f, span = 0.0f;
  bool wraps = false;
  GetTiltRange(min, max, span, wraps);
  m_Tilt = m_Tilt + StepChange(steps, min, max, span, InvertTilt());
  SetPosition(m_Pan, m_Tilt, m_Zoom);
}

void IDewarperBase::Zoom(int direction, int speed) {
  const int steps = StepCount(direction, speed);
  const float zoom = GetZoomScaleModifier() * static_cast<float>(steps) + m_Zoom;
  SetPosition(m_Pan, m_Tilt, zoom);
}

// While initialisation is pending the position is only stored; InitOptions applies it.
void IDewarperBase::SetPosition(float pan, float tilt, float zoom) {
  m_Pan = LimitPanRange(pan);
  m_Tilt = LimitTiltRange(tilt);
  m_Zoom = LimitZoomRange(zoom);
  if (!m_needsInit) {
    UpdatePosition();
  }
}

void IDewarperBase::GetPosition(float& pan, float& tilt, float& zoom) {
  pan = m_Pan;
  tilt = m_Tilt;
  zoom = m_Zoom;
}

float IDewarperBase::LimitZoomTo(float zoom, float min, float max) {
  if (!(zoom >= min)) {
    return min;
  }
  return zoom > max ? max : zoom;
}

void IDewarperBase::Planar420FormatAndSize(int width, int height, int formatCode, unsigned int* size,
                                           int* format) {
  if (format != nullptr) *format = formatCode;
  if (size != nullptr) *size = static_cast<unsigned int>(width) * 3u * static_cast<unsigned int>(height) / 2u;
}

bool IDewarperBase::IsSubModeChange(int& subMode) const {
  if (subMode == 0) {
    subMode = 1;
  }
  return subMode != m_subMode;
}

void IDewarperBase::ResetPosition(float pan, float tilt, float zoom) {
  m_Pan = pan;
  m_Tilt = tilt;
  m_Zoom = zoom;
}

bool IDewarperBase::RowBytesFitInInt(int bytesPerPixel) const {
  return m_width <= INT_MAX / bytesPerPixel && m_dstWidth <= INT_MAX / bytesPerPixel;
}

void IDewarperBase::ForgetInputSize() {
  m_width = 0;
  m_height = 0;
}

bool IDewarperBase::IsFrameSizeUsable(long long width, long long height) {
  if (width <= 0 || height <= 0 || width > INT_MAX || height > INT_MAX) {
    return false;
  }
  return static_cast<unsigned long long>(width) * 3u * static_cast<unsigned long long>(height) <= UINT_MAX;
}

bool IDewarperBase::ProvideFrame(unsigned char*& frame, int& recordedWidth, int& recordedHeight, int width,
                                 int height, unsigned int bytes) {
  if (frame != nullptr && recordedWidth == width && recordedHeight == height) {
    return true;
  }
  m_needsInit = true;
  delete[] frame;
  frame = nullptr;
  recordedWidth = 0;
  recordedHeight = 0;
  // A frame the process cannot hold is refused rather than thrown into the host.
  frame = new (std::nothrow) unsigned char[bytes];
  if (frame == nullptr) {
    return false;
  }
  recordedWidth = width;
  recordedHeight = height;
  return true;
}

// Sizes the host cannot have meant (not positive, or too many bytes to count) are refused
// before anything is allocated; null out-parameters are simply not written.
bool IDewarperBase::GetImageInputBuffer(int width, int height, unsigned char** buffer, unsigned int* size,
                                        int* format) {
  if (!Check() || !IsFrameSizeUsable(width, height)) {
    return false;
  }
  unsigned int bytes = 0;
  int frameFormat = 0;
  GetInputFormatAndSize(width, height, &bytes, &frameFormat);
  if (!ProvideFrame(m_input, m_width, m_height, width, height, bytes)) {
    return false;
  }
  if (buffer != nullptr) *buffer = m_input;
  if (size != nullptr) *size = bytes;
  if (format != nullptr) *format = frameFormat;
  return true;
}

// The output width is rounded up to a multiple of 8 and the height to an even number; both are
// written back. A pending initialisation runs here, once the output size is known.
bool IDewarperBase::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                                         int* format) {
  if (!Check() || width == nullptr || height == nullptr || *width <= 0 || *height <= 0) {
    return false;
  }
  const long long roundedWidth = (static_cast<long long>(*width) + 7) / 8 * 8;
  const long long roundedHeight = (static_cast<long long>(*height) + 1) / 2 * 2;
  if (!IsFrameSizeUsable(roundedWidth, roundedHeight)) {
    return false;
  }
  *width = static_cast<int>(roundedWidth);
  *height = static_cast<int>(roundedHeight);
  unsigned int bytes = 0;
  int frameFormat = 0;
  GetOutputFormatAndSize(*width, *height, &bytes, &frameFormat);
  if (!ProvideFrame(m_output, m_dstWidth, m_dstHeight, *width, *height, bytes)) {
    return false;
  }
  if (buffer != nullptr) *buffer = m_output;
  if (size != nullptr) *size = bytes;
  if (format != nullptr) *format = frameFormat;
  if (m_needsInit) {
    m_needsInit = false;
    return InitOptions();
  }
  return true;
}

bool IDewarperBase::GetNeedsRotation() { return false; }

float IDewarperBase::AdjustAspectRatio(float, float second) { return second; }

const DewarpParams_t& IDewarperBase::Parameters() const { return m_Params; }

int IDewarperBase::GetLens(int, char*, size_t) { return 0; }

void IDewarperBase::SetDewarperType(DewarperType::DewarperTypes) {}

bool IDewarperBase::InitOptions() { return Check(); }

float IDewarperBase::GetZoomScaleModifier() { return 1.0f; }

float IDewarperBase::LimitZoomRange(float zoom) { return zoom; }

bool IDewarperBase::InvertPan() { return false; }

bool IDewarperBase::InvertTilt() { return false; }

// Degrees. A mounted camera (Position not 0) looks all around; a wall camera sees a half space.
void IDewarperBase::GetPanRange(float& min, float& max, float& span, bool& wraps) {
  if (m_Params.Position != 0) {
    min = 0.0f;
    max = 360.0f;
    span = 360.0f;
    wraps = true;
  } else {
    min = -90.0f;
    max = 90.0f;
    span = 180.0f;
    wraps = false;
  }
}

void IDewarperBase::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  wraps = false;
  if (m_Params.Position == 0) {
    min = -90.0f;
    max = 90.0f;
    span = 180.0f;
  } else if (m_Params.Position == 2) {
    min = -90.0f;
    max = 0.0f;
    span = 90.0f;
  } else {
    min = 0.0f;
    max = 90.0f;
    span = 90.0f;
  }
}

float IDewarperBase::LimitToRange(float value, float min, float max, bool wraps) {
  if (wraps) {
    const float range = max - min;
    if (value < min) {
      // Lift the value above min by whole ranges: k is the quotient of the truncated distance by
      // the truncated range. Distances and ranges an int cannot count are left to the remainder.
      const double distance = std::trunc(static_cast<double>(min) - static_cast<double>(value));
      const double whole = std::trunc(static_cast<double>(range));
      if (whole >= 1.0 && distance <= INT_MAX && whole <= INT_MAX) {
        const int k = static_cast<int>(distance) / static_cast<int>(whole);
        value += static_cast<float>(k + 1) * range;
      }
    }
    if (range > 0.0f) {
      value = min + static_cast<float>(std::fmod(static_cast<double>(value - min), static_cast<double>(range)));
    }
  }
  value = std::max(value, min);
  if (!(max > value)) {
    value = max;
  }
  return value;
}

float IDewarperBase::LimitPanRange(float value) {
  float min = 0.0f, max = 0.0f, span = 0.0f;
  bool wraps = false;
  GetPanRange(min, max, span, wraps);
  return LimitToRange(value, min, max, wraps);
}

float IDewarperBase::LimitTiltRange(float value) {
  float min = 0.0f, max = 0.0f, span = 0.0f;
  bool wraps = false;
  GetTiltRange(min, max, span, wraps);
  return LimitToRange(value, min, max, wraps);
}

// Three bytes per pixel, computed in unsigned arithmetic (the callers only pass usable sizes).
void IDewarperBase::GetFormatAndSize(int width, int height, unsigned int* size, int* format) {
  if (format != nullptr) *format = kThreeBytesPerPixelFormat;
  if (size != nullptr) *size = static_cast<unsigned int>(width) * 3u * static_cast<unsigned int>(height);
}

void IDewarperBase::GetInputFormatAndSize(int width, int height, unsigned int* size, int* format) {
  GetFormatAndSize(width, height, size, format);
}

void IDewarperBase::GetOutputFormatAndSize(int width, int height, unsigned int* size, int* format) {
  GetFormatAndSize(width, height, size, format);
}
