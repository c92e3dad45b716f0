#include "Sentry360Dewarper.h"

#include <new>

#include <ImageProcessor.h>

namespace {

const float kHomeZoom = 0.7f;
const float kMinZoom = 0.7f;
const float kZoomPerStep = 0.05f;
const float kPanoramaAspect = 16.0f / 9.0f;
const int kBitsPerPixel = 24;
const int kBytesPerPixel = 3;

// The processor refuses (ending the process) a pan outside [-180, 180], a tilt outside
// [-90, 90] and a zoom that is not above 0. The dewarper's own ranges keep inside those, except
// for the zoom a new dewarper holds before its first Clear (0) and values no range can limit
// (NaN): those reach the processor as the nearest value it accepts, the zoom as its lower limit.
double ProcessorPan(float pan) {
  return pan >= -180.0f && pan <= 180.0f ? pan : (pan > 180.0f ? 180.0 : -180.0);
}

double ProcessorTilt(float tilt) {
  return tilt >= -90.0f && tilt <= 90.0f ? tilt : (tilt > 90.0f ? 90.0 : -90.0);
}

double ProcessorZoom(float zoom) {
  return zoom >= kMinZoom ? zoom : kMinZoom;
}

}  // namespace

Sentry360Dewarper::Sentry360Dewarper(const DewarpParams_t& params)
    : IDewarperBaseT<DewarperType::Sentry360>(params), m_360sdk(nullptr) {}

Sentry360Dewarper::~Sentry360Dewarper() { delete m_360sdk; }

bool Sentry360Dewarper::Check() {
  if (m_360sdk == nullptr) {
    m_360sdk = new (std::nothrow) ImageProcessor();
  }
  return m_360sdk != nullptr;
}

void Sentry360Dewarper::SetSubMode(int subMode) {
  if (!IsSubModeChange(subMode)) {
    return;
  }
  m_subMode = subMode;
  ForgetInputSize();
  Clear();
}

bool Sentry360Dewarper::IsSubModeSupported(int subMode) { return subMode == 1 || subMode == 2; }

bool Sentry360Dewarper::IsNormalPTZSupported(int subMode) { return subMode == 2 || subMode == 3; }

// In the panorama the output is half the input in each direction, whatever the host asks.
bool Sentry360Dewarper::GetImageOutputBuffer(int* width, int* height, unsigned char** buffer,
                                             unsigned int* size, int* format) {
  if (m_subMode == 2 && width != nullptr && height != nullptr) {
    *width = m_width / 2;
    *height = m_height / 2;
  }
  if (!IDewarperBase::GetImageOutputBuffer(width, height, buffer, size, format)) {
    return false;
  }
  if (m_subMode == 2) {
    m_360sdk->ProcessPanoramaImage();
  } else {
    m_360sdk->ProcessImage();
  }
  return true;
}

float Sentry360Dewarper::AdjustAspectRatio(float, float second) {
  return m_subMode == 2 ? kPanoramaAspect : second;
}

void Sentry360Dewarper::Clear() { ResetPosition(0.0f, 0.0f, kHomeZoom); }

bool Sentry360Dewarper::InitOptions() {
  if (!Check()) {
    return false;
  }
  // The processor counts bytes per row in an int.
  if (!RowBytesFitInInt(kBytesPerPixel)) {
    Unconfigure();
    return false;
  }
  const bool invert = m_Params.Position == 2;
  ImageProcessorParams params;
  params.InputImageWidth = m_width;
  params.InputImageHeight = m_height;
  params.InputImageStride = m_width * kBytesPerPixel;
  params.InputImageBitsPerPixel = kBitsPerPixel;
  params.InputImageCenterX = m_Params.X;
  params.InputImageCenterY = m_Params.Y;
  params.InputImageRadius = m_Params.R;
  params.InputImageOwnData = false;
  params.OutputImageWidth = m_dstWidth;
  params.OutputImageHeight = m_dstHeight;
  params.OutputImageStride = m_dstWidth * kBytesPerPixel;
  params.OutputImageOwnData = false;
  params.UseOutputImageMapCache = true;
  params.OutputImagePrecisionMode = PrecisionModeAuto;
  params.OutputImageInvert = invert;
  // The panorama strip is configured with width and height crossed over (its stride stays that
  // of the output buffer). The processor writes only inside the buffer it is pointed at, so of a
  // strip taller than the output only the rows inside the output buffer are rendered.
  params.OutputPanoramaImageWidth = m_dstHeight;
  params.OutputPanoramaImageHeight = m_dstWidth;
  params.OutputPanoramaImageStride = m_dstWidth * kBytesPerPixel;
  params.OutputPanoramaImageOwnData = false;
  params.UseOutputPanoramaImageMapCache = true;
  params.OutputPanoramaImagePrecisionMode = PrecisionModeAuto;
  params.OutputPanoramaImageInvert = invert;
  try {
    m_360sdk->SetParameters(params);
  } catch (const std::bad_alloc&) {
    // Sizes the process cannot hold tables for.
    Unconfigure();
    return false;
  }
  // Pointed after SetParameters, which would otherwise drop borrowed buffers of another size.
  m_360sdk->_inputData.Borrow(m_input, m_width, m_height, m_width * kBytesPerPixel, kBitsPerPixel);
  m_360sdk->_outputData.Borrow(m_output, m_dstWidth, m_dstHeight, m_dstWidth * kBytesPerPixel,
                               kBitsPerPixel);
  m_360sdk->_outputPanoramaData.Borrow(m_output, m_dstWidth, m_dstHeight, m_dstWidth * kBytesPerPixel,
                                       kBitsPerPixel);
  UpdatePosition();
  return true;
}

// Nothing may be rendered until a configuration succeeds: the images point at no buffer (never
// at buffers the dewarper may free meanwhile) and the next frame tries to configure again.
void Sentry360Dewarper::Unconfigure() {
  m_360sdk->_inputData.Borrow(nullptr, 0, 0, 0, kBitsPerPixel);
  m_360sdk->_outputData.Borrow(nullptr, 0, 0, 0, kBitsPerPixel);
  m_360sdk->_outputPanoramaData.Borrow(nullptr, 0, 0, 0, kBitsPerPixel);
  m_needsInit = true;
}

void Sentry360Dewarper::UpdatePosition() {
  if (Check()) {
    m_360sdk->SetPanTiltZoom(ProcessorPan(m_Pan), ProcessorTilt(m_Tilt), ProcessorZoom(m_Zoom));
  }
}

float Sentry360Dewarper::GetZoomScaleModifier() { return kZoomPerStep; }

// At least the lower limit; no upper bound. A NaN zoom counts as below the limit.
float Sentry360Dewarper::LimitZoomRange(float zoom) { return zoom >= kMinZoom ? zoom : kMinZoom; }

bool Sentry360Dewarper::InvertPan() { return m_Params.Position == 2; }

bool Sentry360Dewarper::InvertTilt() { return m_Params.Position == 2; }

// Degrees, centred on the home direction: all around for a mounted camera, the half space in
// front of a wall camera.
void Sentry360Dewarper::GetPanRange(float& min, float& max, float& span, bool& wraps) {
  wraps = m_Params.Position != 0;
  min = wraps ? -180.0f : -90.0f;
  max = wraps ? 180.0f : 90.0f;
  span = wraps ? 360.0f : 180.0f;
}

void Sentry360Dewarper::GetTiltRange(float& min, float& max, float& span, bool& wraps) {
  wraps = false;
  min = m_Params.Position == 0 ? -90.0f : 0.0f;
  max = 90.0f;
  span = m_Params.Position == 0 ? 180.0f : 90.0f;
}
