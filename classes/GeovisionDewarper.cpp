#include "GeovisionDewarper.h"

#include <algorithm>
#include <cstring>

#include "makers/MakerLibrary.h"
#include "makers/MakerValues.h"
#include "makers/geovision_api.h"

namespace {

// The factory and release functions of libGeoFESDK.so; the IFishEye methods are reached
// through the object's virtual table.
struct GeovisionCalls {
  static const char* const LibraryName;
  decltype(&IFishEye_Create) Create;
  decltype(&IFishEye_Release) Release;

  bool Bind(const MakerLibrary& library) {
    return library.Resolve("IFishEye_Create", Create) && library.Resolve("IFishEye_Release", Release);
  }
};
const char* const GeovisionCalls::LibraryName = "libGeoFESDK.so";

const GeovisionCalls* Library() { return MakerCalls<GeovisionCalls>::Get(); }

const int kNoCamera = -1;
const float kHomeZoom = 20.0f;
const float kMinZoom = 0.0f;
const float kMaxZoom = 800.0f;
const float kZoomPerStep = 4.0f;
const float kTenthsPerDegree = 10.0f;
const float kAspect = 16.0f / 9.0f;
const int kBytesPerPixel = 3;
// Host pixel-format code of one planar YUV 4:2:0 frame.
const int kPlanar420Format = 0;

}  // namespace

GeovisionDewarper::GeovisionDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Geovision>(params),
      m_fisheye(nullptr),
      m_camera(kNoCamera),
      m_inputBuff(),
      m_outputBuff() {
  m_Zoom = kHomeZoom;
}

GeovisionDewarper::~GeovisionDewarper() { Close(); }

void GeovisionDewarper::Close() {
  const GeovisionCalls* calls = Library();
  if (calls != nullptr && m_fisheye != nullptr) {
    if (m_camera != kNoCamera) {
      m_fisheye->GvFE_Close(m_camera);
    }
    calls->Release(m_fisheye);
  }
  m_camera = kNoCamera;
  m_fisheye = nullptr;
}

bool GeovisionDewarper::Check() {
  const GeovisionCalls* calls = Library();
  if (calls == nullptr) {
    return false;
  }
  if (m_fisheye == nullptr) {
    m_fisheye = calls->Create();
  }
  return m_fisheye != nullptr;
}

// Every configuration starts from a new library object on channel 0.
bool GeovisionDewarper::InitOptions() {
  if (m_camera != kNoCamera) {
    Close();
  }
  if (!Check()) {
    return false;
  }
  if (m_fisheye->GvFE_Initialize(0, m_width, m_height, m_dstWidth, m_dstHeight, kBytesPerPixel) != 0) {
    return false;
  }
  m_camera = 0;
  FE_ViewParams view;
  std::memset(&view, 0, sizeof view);
  view.ViewMode = m_subMode == 3 ? 4 : 8;
  view.CamPos = m_Params.Position == 2 ? 2 : (m_Params.Position == 0 ? 1 : 0);
  view.SetFrame = 0;
  // The library takes the centre's row coordinate first.
  view.FE_u = m_height / 2;
  view.FE_v = m_width / 2;
  view.FE_Lr = std::min(m_width, m_height) / 2;
  view.FE_Sr = view.FE_Lr;
  m_fisheye->GvFESetPosition(m_camera, &view);
  FE_EventParams event;
  std::memset(&event, 0, sizeof event);
  m_fisheye->GvFE_ParamsUpdated(m_camera, &event, &view);
  UpdatePosition();
  return true;
}

// Only the single PTZ view is steered; values go in whole tenths of a degree.
void GeovisionDewarper::UpdatePosition() {
  if (m_subMode != 1 || m_fisheye == nullptr || m_camera == kNoCamera || Library() == nullptr) {
    return;
  }
  m_fisheye->SetAbsolutePTZ(m_camera, TruncateToInteger<short>(m_Pan), TruncateToInteger<short>(m_Tilt),
                            TruncateToInteger<short>(m_Zoom), 1);
}

void GeovisionDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  Clear();
  m_subMode = subMode;
  m_needsInit = true;
}

bool GeovisionDewarper::IsSubModeSupported(int subMode) {
  return subMode == 1 || (subMode == 3 && m_Params.Position != 0);
}

bool GeovisionDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

bool GeovisionDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                             unsigned int* size, int* format) {
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  if (m_camera == kNoCamera) {
    return false;
  }
  return m_fisheye->GvFE_VideoInput(m_camera, m_input, m_output) == 0;
}

float GeovisionDewarper::AdjustAspectRatio(float first, float) { return m_subMode == 1 ? first : kAspect; }

void GeovisionDewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

float GeovisionDewarper::GetZoomScaleModifier() { return kZoomPerStep; }

float GeovisionDewarper::LimitZoomRange(float zoom) { return LimitZoomTo(zoom, kMinZoom, kMaxZoom); }

bool GeovisionDewarper::InvertPan() { return m_Params.Position == 2; }

bool GeovisionDewarper::InvertTilt() { return m_Params.Position != 2; }

// The base ranges in tenths of a degree (the span stays in degrees).
void GeovisionDewarper::GetPanRange(float& min, float& max, float& span, bool& wraps) {
  IDewarperBase::GetPanRange(min, max, span, wraps);
  min *= kTenthsPerDegree;
  max *= kTenthsPerDegree;
}

void GeovisionDewarper::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  IDewarperBase::GetTiltRange(min, max, span, wraps);
  min *= kTenthsPerDegree;
  max *= kTenthsPerDegree;
}

void GeovisionDewarper::GetFormatAndSize(int width, int height, unsigned int* size, int* format) {
  Planar420FormatAndSize(width, height, kPlanar420Format, size, format);
}
