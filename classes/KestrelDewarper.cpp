#include "KestrelDewarper.h"

#include <cstring>

namespace {

const float kHomeZoom = 1.0f;
const float kMinZoom = 1.0f;
const float kMaxZoom = 10.0f;
const float kZoomPerStep = 0.045f;

// Host pixel-format code of one planar YUV 4:2:0 frame.
const int kPlanar420Format = 5;

// Display aspects of the panoramic sub-modes, by mounting (Position not 0 / Position 0).
const float kMountedPanoramaAspect = 64.0f / 9.0f;
const float kMountedDualAspect = 16.0f / 9.0f;
const float kWallPanoramaAspect = 16.0f / 9.0f;
const float kWallDualAspect = 4.0f / 9.0f;

DEWARP_INTERNAL_CAMERA_MOUNT MountOf(int position) {
  switch (position) {
    case 1:
      return CEILING_MOUNT;
    case 2:
      return FLOOR_MOUNT;
    default:
      return WALL_MOUNT;
  }
}

DEWARP_CHANNEL_SETTINGS SettingsFor(int subMode) {
  DEWARP_CHANNEL_SETTINGS settings;
  settings.AspectRatio = FREE_ASPECT_RATIO;
  settings.Interpolation = NEAREST_NEIGHBOUR_INTERPOLATION;
  switch (subMode) {
    case 2:
      settings.View = SINGLE_PANORAMIC_VIEW;
      settings.Projection = CYLINDRICAL_PROJECTION;
      break;
    case 3:
      settings.View = DUAL_PANORAMIC_VIEW;
      settings.Projection = CYLINDRICAL_PROJECTION;
      break;
    default:
      settings.View = SINGLE_PTZ_VIEW;
      settings.Projection = RECTILINEAR_PROJECTION;
      break;
  }
  return settings;
}

DEWARP_IMAGE Planar420Image(int width, int height, unsigned char* data) {
  DEWARP_IMAGE image;
  image.Info.Format = YUV420_PLANAR_IMAGE;
  image.Info.Width = static_cast<unsigned int>(width);
  image.Info.Height = static_cast<unsigned int>(height);
  image.Info.Stride = static_cast<unsigned int>(width);
  image.Data = data;
  return image;
}

}  // namespace

KestrelDewarper::KestrelDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Kestrel>(params), m_channel(nullptr) {
  std::memset(&m_model, 0, sizeof(m_model));
  std::memset(&m_inputBuff, 0, sizeof(m_inputBuff));
  std::memset(&m_outputBuff, 0, sizeof(m_outputBuff));
  m_Zoom = kHomeZoom;
}

KestrelDewarper::~KestrelDewarper() { CloseChannel(); }

void KestrelDewarper::CloseChannel() {
  dewarp_close(m_channel);
  m_channel = nullptr;
}

bool KestrelDewarper::Check() { return true; }

bool KestrelDewarper::IsSubModeSupported(int subMode) { return subMode >= 1 && subMode <= 3; }

bool KestrelDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

float KestrelDewarper::GetZoomScaleModifier() { return kZoomPerStep; }

float KestrelDewarper::LimitZoomRange(float zoom) {
  if (zoom < kMinZoom) return kMinZoom;
  if (zoom > kMaxZoom) return kMaxZoom;
  return zoom;
}

void KestrelDewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

void KestrelDewarper::GetFormatAndSize(int width, int height, unsigned int* size, int* format) {
  Planar420FormatAndSize(width, height, kPlanar420Format, size, format);
}

// The single PTZ view keeps the host's aspect (the first argument); the panoramic views have a
// fixed display aspect by mounting. Any other sub-mode opens the single PTZ view and answers so.
float KestrelDewarper::AdjustAspectRatio(float first, float) {
  const bool mounted = m_Params.Position != 0;
  switch (m_subMode) {
    case 2:
      return mounted ? kMountedPanoramaAspect : kWallPanoramaAspect;
    case 3:
      return mounted ? kMountedDualAspect : kWallDualAspect;
    default:
      return first;
  }
}

// The Axis lens shares the engine's camera type and resolution but sees a wider field.
void KestrelDewarper::SetDewarperType(DewarperType::DewarperTypes type) {
  m_model = GetNorvikKestrelMk2Camera();
  if (type == DewarperType::Axis) {
    m_model.FovH = 225.0f;
    m_model.FovV = 174.0f;
    m_model.FovD = 284.0f;
  }
}

void KestrelDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  CloseChannel();
  Clear();
  m_subMode = subMode;
  m_needsInit = true;
}

bool KestrelDewarper::InitOptions() {
  if (!Check()) {
    return false;
  }
  if (m_channel != nullptr && m_model.ResolutionH == static_cast<unsigned int>(m_width) &&
      m_model.ResolutionV == static_cast<unsigned int>(m_height)) {
    UpdatePosition();
    return true;
  }
  CloseChannel();
  const DEWARP_CHANNEL_SETTINGS settings = SettingsFor(m_subMode);
  m_model.ResolutionH = static_cast<unsigned int>(m_width);
  m_model.ResolutionV = static_cast<unsigned int>(m_height);
  m_channel = dewarp_internal_open(&m_model, MountOf(m_Params.Position), &settings);
  // A channel that did not open shows up as a failed frame; the position is still pushed.
  UpdatePosition();
  return true;
}

// Panoramic views have no position. The engine may correct the position to its limits; tilt and
// zoom are always taken back, the pan only for a wall mounting (Position 0).
void KestrelDewarper::UpdatePosition() {
  if (m_subMode != 1) {
    return;
  }
  DEWARP_PTZ_POSITION position;
  position.Pan = m_Pan;
  position.Tilt = m_Tilt;
  position.Roll = 0.0f;
  position.Zoom = m_Zoom;
  dewarp_set_ptz(m_channel, &position);
  m_Tilt = position.Tilt;
  m_Zoom = position.Zoom;
  if (m_Params.Position == 0) {
    m_Pan = position.Pan;
  }
}

// The tilt limits are the engine's once a channel exists; the span stays the nominal one. Should
// the engine not answer, the nominal limits stay.
void KestrelDewarper::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  IDewarperBase::GetTiltRange(min, max, span, wraps);
  if (m_channel != nullptr) {
    DEWARP_PTZ_RANGE range;
    std::memset(&range, 0, sizeof(range));
    if (dewarp_get_ptz_range(m_channel, &range) == 0) {
      min = range.TiltLo;
      max = range.TiltHi;
    }
  }
  wraps = false;
}

float KestrelDewarper::LimitTiltRange(float value) {
  if (m_channel == nullptr) {
    return value;
  }
  return IDewarperBase::LimitTiltRange(value);
}

void KestrelDewarper::LimitOutputToHalfInput(int& width, int& height) const {
  const long long halfW = m_width / 2;
  const long long halfH = m_height / 2;
  if (width <= halfW && height <= halfH) {
    return;
  }
  const long long w = width;
  const long long h = height;
  if (static_cast<double>(w) / static_cast<double>(h) > static_cast<double>(halfW) / static_cast<double>(halfH)) {
    height = static_cast<int>(h * halfW / w);
    width = static_cast<int>(halfW);
  } else {
    width = static_cast<int>(w * halfH / h);
    height = static_cast<int>(halfH);
  }
}

bool KestrelDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                                           int* format) {
  if (width == nullptr || height == nullptr || *width <= 0 || *height <= 0) {
    return false;
  }
  if (m_subMode == 1) {
    LimitOutputToHalfInput(*width, *height);
  }
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  const DEWARP_IMAGE input = Planar420Image(m_width, m_height, m_input);
  DEWARP_IMAGE output = Planar420Image(*width, *height, m_output);
  return dewarp_image(m_channel, &input, &output) == 0;
}
