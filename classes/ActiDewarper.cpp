#include "ActiDewarper.h"

#include "makers/MakerLibrary.h"
#include "makers/MakerValues.h"
#include "makers/acti_api.h"

namespace {

struct ActiCalls {
  static const char* const LibraryName;
  decltype(&FishEye_OpenInterface) OpenInterface;
  decltype(&FishEye_Initial) Initial;
  decltype(&FishEye_Transform) Transform;
  decltype(&FishEye_Release) Release;
  decltype(&FishEye_CloseInterface) CloseInterface;

  bool Bind(const MakerLibrary& library) {
    return library.Resolve("FishEye_OpenInterface", OpenInterface) && library.Resolve("FishEye_Initial", Initial) &&
           library.Resolve("FishEye_Transform", Transform) && library.Resolve("FishEye_Release", Release) &&
           library.Resolve("FishEye_CloseInterface", CloseInterface);
  }
};
const char* const ActiCalls::LibraryName = "libFisheyeSDK.so";

const ActiCalls* Library() { return MakerCalls<ActiCalls>::Get(); }

const float kHomeZoom = 256.0f;
const float kMinZoom = 32.0f;
const float kMaxZoom = 1024.0f;
const float kZoomPerStep = -4.96f;
const float kPanoramaAspect = 16.0f / 9.0f;
const float kViewAspect = 4.0f / 3.0f;
const int kBytesPerPixel = 3;
const long long kMaxOutputWidth = 1920;
const long long kMaxOutputHeight = 1080;

EN_FISHEYE_MODE ModeOf(int subMode) {
  switch (subMode) {
    case 2:
      return FISHEYE_MODE_PANORAMA;
    case 3:
      return FISHEYE_MODE_DUAL_PANORAMA;
    default:
      return FISHEYE_MODE_PTZ;
  }
}

int MountOf(int position) {
  switch (position) {
    case 1:
      return FISHEYE_MOUNT_CEILING;
    case 2:
      return FISHEYE_MOUNT_FLOOR;
    default:
      return FISHEYE_MOUNT_WALL;
  }
}

// Shrinks a request larger than 1920 x 1080 to fit, keeping its aspect: a request wider than
// 16:9 is brought to the full width, any other to the full height.
void LimitOutputSize(int& width, int& height) {
  const long long w = width;
  const long long h = height;
  if (w <= 0 || h <= 0 || (w <= kMaxOutputWidth && h <= kMaxOutputHeight)) {
    return;
  }
  if (w * 9 > h * 16) {
    height = static_cast<int>(h * kMaxOutputWidth / w);
    width = static_cast<int>(kMaxOutputWidth);
  } else {
    width = static_cast<int>(w * kMaxOutputHeight / h);
    height = static_cast<int>(kMaxOutputHeight);
  }
}

}  // namespace

ActiDewarper::ActiDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Acti>(params), m_interface(nullptr) {}

ActiDewarper::~ActiDewarper() { CloseInterface(); }

void ActiDewarper::CloseInterface() {
  const ActiCalls* calls = Library();
  if (calls != nullptr && m_interface != nullptr) {
    calls->Release(m_interface);
    calls->CloseInterface(m_interface);
  }
  m_interface = nullptr;
}

bool ActiDewarper::Check() {
  const ActiCalls* calls = Library();
  if (calls == nullptr) {
    return false;
  }
  if (m_interface == nullptr) {
    m_interface = calls->OpenInterface();
    if (m_interface != nullptr && calls->Initial(m_interface, FISHEYE_CHANNEL_COUNT, true) != 0) {
      CloseInterface();
    }
  }
  return m_interface != nullptr;
}

// The position travels with every frame.
void ActiDewarper::UpdatePosition() {}

void ActiDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  Clear();
  m_subMode = subMode;
  if (subMode == 3) {
    // The host's scroll angle, in the pan range's units.
    float min = 0.0f, max = 0.0f, span = 0.0f;
    bool wraps = false;
    GetPanRange(min, max, span, wraps);
    m_Pan = LimitPanRange(static_cast<float>(m_Params.Scroll) * (max - min) / span);
  }
  m_needsInit = true;
}

bool ActiDewarper::IsSubModeSupported(int subMode) {
  return subMode == 1 || subMode == 2 || (subMode == 3 && m_Params.Position != 0);
}

bool ActiDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

bool ActiDewarper::CanPan(int) { return m_subMode == 1 || m_subMode == 3; }

bool ActiDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                        unsigned int* size, int* format) {
  if (width != nullptr && height != nullptr) {
    LimitOutputSize(*width, *height);
  }
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  return Transform();
}

bool ActiDewarper::Transform() {
  // The library counts bytes per row in an int.
  if (!RowBytesFitInInt(kBytesPerPixel)) {
    return false;
  }
  ST_FISHEYE_IMGINFO image;
  image.Width = m_width;
  image.Height = m_height;
  image.Stride = m_width * kBytesPerPixel;
  image.Data = m_input;
  ST_FISHEYE_PARAMETER parameters;
  parameters.Mount = MountOf(m_Params.Position);
  parameters.Pan = TruncateToInteger<int>(m_Pan);
  parameters.Tilt = TruncateToInteger<int>(m_Tilt);
  parameters.Zoom = TruncateToInteger<int>(m_Zoom);
  ST_FISHEYE_OUT out;
  out.Width = m_dstWidth;
  out.Height = m_dstHeight;
  out.Stride = m_dstWidth * kBytesPerPixel;
  out.Data = m_output;
  return Library()->Transform(m_interface, ModeOf(m_subMode), &image, &parameters, &out) == 0;
}

bool ActiDewarper::GetNeedsRotation() { return m_Params.Position == 2; }

float ActiDewarper::AdjustAspectRatio(float first, float) {
  if (m_subMode == 1) {
    return first;
  }
  return m_subMode == 2 ? kPanoramaAspect : kViewAspect;
}

void ActiDewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

float ActiDewarper::GetZoomScaleModifier() { return kZoomPerStep; }

float ActiDewarper::LimitZoomRange(float zoom) { return LimitZoomTo(zoom, kMinZoom, kMaxZoom); }

bool ActiDewarper::InvertPan() { return m_Params.Position == 2; }

bool ActiDewarper::InvertTilt() { return m_Params.Position == 2; }

// Library units: a full turn is 65536 and a right angle 16384.
void ActiDewarper::GetPanRange(float& min, float& max, float& span, bool& wraps) {
  wraps = m_Params.Position != 0;
  min = wraps ? 0.0f : -16384.0f;
  max = wraps ? 65536.0f : 16384.0f;
  span = wraps ? 360.0f : 180.0f;
}

void ActiDewarper::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  wraps = false;
  min = m_Params.Position != 0 ? 0.0f : -16384.0f;
  max = 16384.0f;
  span = m_Params.Position != 0 ? 90.0f : 180.0f;
}
