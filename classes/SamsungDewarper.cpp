#include "SamsungDewarper.h"

#include <cstring>

#include "makers/MakerLibrary.h"
#include "makers/MakerObject.h"

namespace {

// The calls of libDewarpingLib.so. Member functions are resolved by their exported C++ names and
// called with the object's address as first argument (the way g++ passes `this` on i386 and
// x86-64).
struct SamsungCalls {
  static const char* const LibraryName;
  void (*Construct)(CDewarping*);
  void (*Destruct)(CDewarping*);
  int (*SetCameraPosition)(CDewarping*, int);
  int (*SetViewType)(CDewarping*, int);
  int (*GetZoomLimits)(CDewarping*, float&, float&);
  int (*SetInputParams)(CDewarping*, BUFFER*);
  int (*SetOutputParams)(CDewarping*, BUFFER*);
  int (*SetPtzPosition)(CDewarping*, int, int, DEWARPING_PTZ*);
  int (*Update)(CDewarping*);

  bool Bind(const MakerLibrary& library) {
    return library.Resolve("_ZN10CDewarpingC1Ev", Construct) &&
           library.Resolve("_ZN10CDewarpingD1Ev", Destruct) &&
           library.Resolve("_ZN10CDewarping17SetCameraPositionEi", SetCameraPosition) &&
           library.Resolve("_ZN10CDewarping11SetViewTypeEi", SetViewType) &&
           library.Resolve("_ZN10CDewarping13GetZoomLimitsERfS0_", GetZoomLimits) &&
           library.Resolve("_ZN10CDewarping14SetInputParamsEP6BUFFER", SetInputParams) &&
           library.Resolve("_ZN10CDewarping15SetOutputParamsEP6BUFFER", SetOutputParams) &&
           library.Resolve("_ZN10CDewarping14SetPtzPositionEiiP13DEWARPING_PTZ", SetPtzPosition) &&
           library.Resolve("_ZN10CDewarping6UpdateEv", Update);
  }
};
const char* const SamsungCalls::LibraryName = "libDewarpingLib.so";

const SamsungCalls* Library() { return MakerCalls<SamsungCalls>::Get(); }

const int kBytesPerPixel = 3;
const int kColorFormat = 0;

// Output sizes the library renders, largest first; the first narrower than the input is used.
const struct {
  int Width;
  int Height;
} kOutputSizes[] = {{1600, 1200}, {1280, 960}, {1024, 768}, {800, 600}, {640, 480}, {320, 240}};

void DescribeFrame(BUFFER& record, unsigned char* data, int width, int height) {
  record.ch = kBytesPerPixel;
  record.colorFormat = kColorFormat;
  record.data = data;
  record.width = width;
  record.height = height;
}

}  // namespace

SamsungDewarper::SamsungDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Samsung>(params),
      m_dewarper(nullptr),
      m_inputBuff(),
      m_outputBuff(),
      m_MinZoom(0.0f),
      m_MaxZoom(10.0f) {}

SamsungDewarper::~SamsungDewarper() {
  const SamsungCalls* calls = Library();
  if (calls != nullptr) {
    DestroyMakerObject(*calls, m_dewarper);
  }
}

DewarperType::DewarperTypes SamsungDewarper::Mode() { return DewarperType::Samsung; }

bool SamsungDewarper::Check() {
  const SamsungCalls* calls = Library();
  if (calls == nullptr) {
    return false;
  }
  if (m_dewarper == nullptr) {
    m_dewarper = ConstructMakerObject<CDewarping>(*calls);
  }
  return m_dewarper != nullptr;
}

int SamsungDewarper::ViewType() const {
  switch (m_subMode) {
    case 2:
      return 1;
    case 3:
      return 2;
    default:
      return 4;
  }
}

int SamsungDewarper::CameraPosition() const {
  switch (m_Params.Position) {
    case 1:
      return 0;
    case 2:
      return 1;
    default:
      return 2;
  }
}

bool SamsungDewarper::InitOptions() {
  if (!Check()) {
    return false;
  }
  const SamsungCalls& calls = *Library();
  calls.SetCameraPosition(m_dewarper, CameraPosition());
  calls.SetViewType(m_dewarper, ViewType());
  calls.GetZoomLimits(m_dewarper, m_MinZoom, m_MaxZoom);
  DescribeFrame(m_inputBuff, m_input, m_width, m_height);
  calls.SetInputParams(m_dewarper, &m_inputBuff);
  DescribeFrame(m_outputBuff, m_output, m_dstWidth, m_dstHeight);
  std::memset(m_output, 0,
              static_cast<std::size_t>(m_dstHeight) * static_cast<std::size_t>(m_dstWidth) * kBytesPerPixel);
  calls.SetOutputParams(m_dewarper, &m_outputBuff);
  UpdatePosition();
  return true;
}

void SamsungDewarper::UpdatePosition() {
  if (m_dewarper == nullptr || Library() == nullptr) {
    return;
  }
  DEWARPING_PTZ position;
  position.pan = m_Pan;
  position.tilt = m_Tilt;
  position.zoom = m_Zoom;
  position.reserved = 0.0;
  Library()->SetPtzPosition(m_dewarper, ViewType(), 0, &position);
}

void SamsungDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  Clear();
  m_subMode = subMode;
  m_needsInit = true;
}

bool SamsungDewarper::IsSubModeSupported(int subMode) {
  return subMode == 1 || (subMode == 3 && m_Params.Position != 0);
}

bool SamsungDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

bool SamsungDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                           unsigned int* size, int* format) {
  bool chosen = false;
  for (const auto& candidate : kOutputSizes) {
    if (candidate.Width < m_width) {
      if (width != nullptr) *width = candidate.Width;
      if (height != nullptr) *height = candidate.Height;
      chosen = true;
      break;
    }
  }
  if (!chosen || !IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  return Library()->Update(m_dewarper) == 1;
}

void SamsungDewarper::Clear() { ResetPosition(0.5f, 0.5f, 1.0f); }

float SamsungDewarper::GetZoomScaleModifier() { return (m_MaxZoom - m_MinZoom) / 200.0f; }

float SamsungDewarper::LimitZoomRange(float zoom) { return LimitZoomTo(zoom, m_MinZoom, m_MaxZoom); }

// Normalised: 0 to 1 always; span and wrapping as the base has them for the mounting.
void SamsungDewarper::GetPanRange(float& min, float& max, float& span, bool& wraps) {
  IDewarperBase::GetPanRange(min, max, span, wraps);
  min = 0.0f;
  max = 1.0f;
}

void SamsungDewarper::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  IDewarperBase::GetTiltRange(min, max, span, wraps);
  min = 0.0f;
  max = 1.0f;
}
