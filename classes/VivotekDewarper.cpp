#include "VivotekDewarper.h"

#include <cstring>

#include "makers/MakerLibrary.h"
#include "makers/MakerValues.h"
#include "makers/vivotek_api.h"

namespace {

struct VivotekCalls {
  static const char* const LibraryName;
  decltype(&Fisheye_Initial) Initial;
  decltype(&Fisheye_SetOption) SetOption;
  decltype(&Fisheye_OneFrame) OneFrame;
  decltype(&Fisheye_Release) Release;

  bool Bind(const MakerLibrary& library) {
    return library.Resolve("Fisheye_Initial", Initial) && library.Resolve("Fisheye_SetOption", SetOption) &&
           library.Resolve("Fisheye_OneFrame", OneFrame) && library.Resolve("Fisheye_Release", Release);
  }
};
const char* const VivotekCalls::LibraryName = "libfisheyesw.so.1";

const VivotekCalls* Library() { return MakerCalls<VivotekCalls>::Get(); }

const float kHomeZoom = 70.0f;
const float kMinZoom = 70.0f;
const float kPanoramaAspect = 16.0f / 9.0f;
const float kViewAspect = 4.0f / 3.0f;
// Host pixel-format code of one planar YUV 4:2:0 frame.
const int kPlanar420Format = 5;

// Applies one field of the position, selected by its flag alone.
void SetOneOption(const VivotekCalls& calls, void* handle, FISHEYE_OPTION& option, unsigned int flag) {
  option.Mask = flag;
  calls.SetOption(handle, &option);
}

}  // namespace

VivotekDewarper::VivotekDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Vivotek>(params), m_Vivotek(nullptr) {}

VivotekDewarper::~VivotekDewarper() { Release(); }

void VivotekDewarper::Release() {
  const VivotekCalls* calls = Library();
  if (calls != nullptr && m_Vivotek != nullptr) {
    calls->Release(&m_Vivotek);
  }
  m_Vivotek = nullptr;
}

bool VivotekDewarper::Check() {
  const VivotekCalls* calls = Library();
  if (calls == nullptr) {
    return false;
  }
  if (m_Vivotek == nullptr) {
    void* handle = nullptr;
    if (calls->Initial(&handle, FISHEYE_INITIAL_CODE) != 0) {
      return false;
    }
    m_Vivotek = handle;
  }
  return m_Vivotek != nullptr;
}

// Does not create a handle: Check() has done so before any frame reaches here. Without one
// (or without the library) nothing is configured.
bool VivotekDewarper::InitOptions() {
  const VivotekCalls* calls = Library();
  if (calls == nullptr || m_Vivotek == nullptr) {
    ForgetInputSize();
    return false;
  }
  FISHEYE_OPTION option;
  std::memset(&option, 0, sizeof option);
  option.Mask = FISHEYE_OPTION_INITIAL;
  option.InputWidth = static_cast<unsigned int>(m_width);
  option.InputHeight = static_cast<unsigned int>(m_height);
  option.InputStride = static_cast<unsigned int>(m_width);
  option.InputBuffer = m_input;
  option.OutputWidth = static_cast<unsigned int>(m_dstWidth);
  option.OutputHeight = static_cast<unsigned int>(m_dstHeight);
  option.OutputStride = static_cast<unsigned int>(m_dstWidth);
  option.OutputBuffer = m_output;
  option.CenterX = static_cast<unsigned int>(m_width / 2);
  option.CenterY = static_cast<unsigned int>(m_height / 2);
  option.Radius = static_cast<unsigned int>(m_height / 2);
  option.Mounting = m_Params.Position;
  option.ViewType = m_subMode - 1;
  option.DisplayWidth = static_cast<unsigned int>(m_dstWidth);
  option.DisplayHeight = static_cast<unsigned int>(m_dstHeight);
  if (calls->SetOption(m_Vivotek, &option) != 0) {
    // A new input buffer, and with it a new configuration, is needed before the next frame.
    ForgetInputSize();
    return false;
  }
  UpdatePosition();
  return true;
}

// Zoom, tilt, then the pan (and for a mounted camera the host's scroll), each on its own call.
void VivotekDewarper::UpdatePosition() {
  const VivotekCalls* calls = Library();
  if (calls == nullptr || m_Vivotek == nullptr) {
    return;
  }
  FISHEYE_OPTION option;
  std::memset(&option, 0, sizeof option);
  option.Zoom = TruncateToInteger<int>(m_Zoom);
  option.Tilt = TruncateToInteger<int>(m_Tilt);
  option.Pan = TruncateToInteger<int>(m_Pan);
  option.Scroll = m_Params.Scroll;
  SetOneOption(*calls, m_Vivotek, option, FISHEYE_OPTION_ZOOM);
  SetOneOption(*calls, m_Vivotek, option, FISHEYE_OPTION_TILT);
  if (m_Params.Position != 0) {
    SetOneOption(*calls, m_Vivotek, option, FISHEYE_OPTION_PAN);
    SetOneOption(*calls, m_Vivotek, option, FISHEYE_OPTION_SCROLL);
  } else {
    SetOneOption(*calls, m_Vivotek, option, FISHEYE_OPTION_PAN_WALL);
  }
}

void VivotekDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  m_subMode = subMode;
  ForgetInputSize();
  Release();
}

bool VivotekDewarper::IsSubModeSupported(int subMode) {
  return subMode == 1 || subMode == 2 || (subMode == 3 && m_Params.Position != 0);
}

bool VivotekDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

bool VivotekDewarper::CanPan(int) { return m_subMode == 1 || m_Params.Position != 0; }

bool VivotekDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                           unsigned int* size, int* format) {
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  return Library()->OneFrame(m_Vivotek) == 0;
}

float VivotekDewarper::AdjustAspectRatio(float first, float) {
  if (m_subMode == 1) {
    return first;
  }
  return m_subMode == 2 ? kPanoramaAspect : kViewAspect;
}

void VivotekDewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

// At least 70, no upper bound (NaN counts as below).
float VivotekDewarper::LimitZoomRange(float zoom) { return zoom >= kMinZoom ? zoom : kMinZoom; }

void VivotekDewarper::GetFormatAndSize(int width, int height, unsigned int* size, int* format) {
  Planar420FormatAndSize(width, height, kPlanar420Format, size, format);
}
