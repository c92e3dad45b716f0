#include "ImmervisionDewarper.h"

#include <cstdio>
#include <new>

#include "makers/MakerLibrary.h"
#include "makers/MakerObject.h"

namespace {

// The calls of libIMV1.so. Member functions are resolved by their exported C++ names and called
// with the object's address as first argument (the way g++ passes `this` on i386 and x86-64).
struct ImmervisionCalls {
  static const char* const LibraryName;
  void (*Construct)(IMV_CameraInterface*);
  void (*Destruct)(IMV_CameraInterface*);
  int (*SetVideoParams)(IMV_CameraInterface*, IMV_Buffer*, IMV_Buffer*, unsigned long, unsigned long,
                        unsigned long);
  int (*SetLens)(IMV_CameraInterface*, char*);
  int (*SetZoomLimits)(IMV_CameraInterface*, float, float);
  int (*SetPosition)(IMV_CameraInterface*, float*, float*, float*, unsigned long, unsigned long);
  int (*Update)(IMV_CameraInterface*);
  const char* (*GetErrorString)(IMV_CameraInterface*, int);
  char** (*StaticGetLensDescription)();
  int (*StaticGetLensDescriptionCount)();

  bool Bind(const MakerLibrary& library) {
    return library.Resolve("_ZN19IMV_CameraInterfaceC1Ev", Construct) &&
           library.Resolve("_ZN19IMV_CameraInterfaceD1Ev", Destruct) &&
           library.Resolve("_ZN19IMV_CameraInterface14SetVideoParamsEP10IMV_BufferS1_mmm", SetVideoParams) &&
           library.Resolve("_ZN19IMV_CameraInterface7SetLensEPc", SetLens) &&
           library.Resolve("_ZN19IMV_CameraInterface13SetZoomLimitsEff", SetZoomLimits) &&
           library.Resolve("_ZN19IMV_CameraInterface11SetPositionEPfS0_S0_mm", SetPosition) &&
           library.Resolve("_ZN19IMV_CameraInterface6UpdateEv", Update) &&
           library.Resolve("_ZN19IMV_CameraInterface14GetErrorStringEi", GetErrorString) &&
           library.Resolve("_ZN19IMV_CameraInterface24StaticGetLensDescriptionEv", StaticGetLensDescription) &&
           library.Resolve("_ZN19IMV_CameraInterface29StaticGetLensDescriptionCountEv",
                           StaticGetLensDescriptionCount);
  }
};
const char* const ImmervisionCalls::LibraryName = "libIMV1.so";

const ImmervisionCalls* Library() { return MakerCalls<ImmervisionCalls>::Get(); }

const unsigned long kColorFormat = 4;
const float kHomeZoom = 180.0f;
const float kMinZoom = 23.0f;
const float kMaxZoom = 180.0f;
const float kZoomPerStep = -0.785f;
const char* const kLensNameFormat = "RPL Number %s";

// A frame of the input's size at its origin.
void DescribeFrame(IMV_Buffer& record, int width, int height, unsigned char* data) {
  record.width = static_cast<unsigned long>(width);
  record.height = static_cast<unsigned long>(height);
  record.offsetX = 0;
  record.offsetY = 0;
  record.frameWidth = static_cast<unsigned long>(width);
  record.frameHeight = static_cast<unsigned long>(height);
  record.data = data;
}

}  // namespace

ImmervisionDewarper::ImmervisionDewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::ImmerVision>(params),
      m_failed(false),
      m_IMV1(nullptr),
      m_IMV1_input(nullptr),
      m_IMV1_output(nullptr) {}

ImmervisionDewarper::~ImmervisionDewarper() {
  const ImmervisionCalls* calls = Library();
  if (calls != nullptr) {
    DestroyMakerObject(*calls, m_IMV1);
  }
  delete m_IMV1_input;
  delete m_IMV1_output;
}

bool ImmervisionDewarper::Check() {
  const ImmervisionCalls* calls = Library();
  if (calls == nullptr) {
    return false;
  }
  if (m_IMV1 == nullptr) {
    IMV_Buffer* input = new (std::nothrow) IMV_Buffer();
    IMV_Buffer* output = new (std::nothrow) IMV_Buffer();
    IMV_CameraInterface* camera =
        input != nullptr && output != nullptr ? ConstructMakerObject<IMV_CameraInterface>(*calls) : nullptr;
    if (camera == nullptr) {
      delete input;
      delete output;
      return false;
    }
    m_IMV1 = camera;
    m_IMV1_input = input;
    m_IMV1_output = output;
  }
  return true;
}

bool ImmervisionDewarper::Succeeded(int result) {
  if (result == 0) {
    return true;
  }
  Library()->GetErrorString(m_IMV1, result);
  m_failed = true;
  return false;
}

bool ImmervisionDewarper::InitOptions() {
  if (!Check()) {
    return false;
  }
  const ImmervisionCalls& calls = *Library();
  // Both records describe a frame of the input's size.
  DescribeFrame(*m_IMV1_input, m_width, m_height, m_input);
  DescribeFrame(*m_IMV1_output, m_width, m_height, m_output);
  const unsigned long view = m_subMode == 1 ? 0 : 2;
  if (!Succeeded(calls.SetVideoParams(m_IMV1, m_IMV1_input, m_IMV1_output, kColorFormat, view,
                                      static_cast<unsigned long>(m_Params.Position)))) {
    return false;
  }
  const int count = calls.StaticGetLensDescriptionCount();
  if (m_Params.Lens >= 0 && m_Params.Lens < count) {
    char** lenses = calls.StaticGetLensDescription();
    if (lenses != nullptr && !Succeeded(calls.SetLens(m_IMV1, lenses[2 * m_Params.Lens]))) {
      return false;
    }
  }
  if (!Succeeded(calls.SetZoomLimits(m_IMV1, kMinZoom, kMaxZoom))) {
    return false;
  }
  UpdatePosition();
  return true;
}

// The library may correct the position in place; the corrected values are kept.
void ImmervisionDewarper::UpdatePosition() {
  if (!Check()) {
    return;
  }
  const int result = Library()->SetPosition(m_IMV1, &m_Pan, &m_Tilt, &m_Zoom, 0, 1);
  if (result != 0) {
    Library()->GetErrorString(m_IMV1, result);
  }
}

void ImmervisionDewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  m_subMode = subMode;
  m_needsInit = true;
  if (subMode != 1) {
    Clear();
    m_Pan = static_cast<float>(m_Params.Scroll);
  }
}

bool ImmervisionDewarper::IsSubModeSupported(int subMode) {
  return subMode == 1 || (subMode == 2 && m_Params.Position == 0) || (subMode == 3 && m_Params.Position != 0);
}

bool ImmervisionDewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

// Like the base, the current sub-mode decides, not the argument.
bool ImmervisionDewarper::CanPan(int) { return !m_failed && (m_subMode == 1 || m_Params.Position != 0); }

bool ImmervisionDewarper::CanTilt(int) { return !m_failed && m_subMode == 1; }

bool ImmervisionDewarper::CanZoom(int) { return !m_failed && m_subMode == 1; }

// The output always has the input's size, whatever the host asks.
bool ImmervisionDewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                               unsigned int* size, int* format) {
  if (width != nullptr && height != nullptr) {
    *width = m_width;
    *height = m_height;
  }
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  return Succeeded(Library()->Update(m_IMV1));
}

void ImmervisionDewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

// "RPL Number <name>" of the lens at `index`, cut to `size` bytes; the text's length, or 0 for
// an index outside the table (the buffer is then left as it is).
int ImmervisionDewarper::GetLens(int index, char* buffer, size_t size) {
  const ImmervisionCalls* calls = Library();
  if (calls == nullptr || index < 0 || index >= calls->StaticGetLensDescriptionCount()) {
    return 0;
  }
  char** lenses = calls->StaticGetLensDescription();
  if (lenses == nullptr) {
    return 0;
  }
  const char* name = lenses[2 * index];
  return std::snprintf(buffer, buffer != nullptr ? size : 0, kLensNameFormat, name != nullptr ? name : "");
}

float ImmervisionDewarper::GetZoomScaleModifier() { return kZoomPerStep; }

float ImmervisionDewarper::LimitZoomRange(float zoom) { return LimitZoomTo(zoom, kMinZoom, kMaxZoom); }
