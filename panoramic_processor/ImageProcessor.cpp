#include "ImageProcessor.h"

#include <cstdint>
#include <new>

#include "ImageProcessorPixels.h"

namespace {

// Height x Stride as a plain number (never throws); 0 when either is not positive.
std::uint64_t RawByteCount(int height, int stride) {
  return height > 0 && stride > 0 ? static_cast<std::uint64_t>(height) * static_cast<std::uint64_t>(stride) : 0;
}

// Applies one image's part of new parameters. Owned data is freed when the image is no longer
// to own it, and allocated afresh when it is. A borrowed buffer is kept only while its byte
// count stays the same: a buffer pointed at for other sizes is dropped rather than overrun.
void ConfigureImage(ImageData& image, int width, int height, int stride, int bitsPerPixel, bool ownData) {
  const bool sameBytes = RawByteCount(image.Height, image.Stride) == RawByteCount(height, stride);
  if ((image.OwnsData && !ownData) || (!image.OwnsData && !sameBytes)) {
    image.DeleteData();
  }
  image.Width = width;
  image.Height = height;
  image.Stride = stride;
  image.BitsPerPixel = bitsPerPixel;
  if (ownData) {
    image.DeleteData();
    image.InitData();
  }
}

}  // namespace

ImageProcessor::ImageProcessor()
    : _privateData(new ImageProcessorPrivateData()), _pan(0), _tilt(0), _zoom(1) {}

ImageProcessor::~ImageProcessor() {
  delete _privateData;
}

void ImageProcessor::SetPan(double pan) {
  IMAGE_PROCESSOR_ASSERT(pan >= -180 && pan <= 180);
  _pan = pan;
}

void ImageProcessor::SetTilt(double tilt) {
  IMAGE_PROCESSOR_ASSERT(tilt >= -90 && tilt <= 90);
  _tilt = tilt;
}

void ImageProcessor::SetZoom(double zoom) {
  IMAGE_PROCESSOR_ASSERT(zoom > 0);
  _zoom = zoom;
}

void ImageProcessor::SetPanTilt(double pan, double tilt) {
  IMAGE_PROCESSOR_ASSERT(pan >= -180 && pan <= 180);
  IMAGE_PROCESSOR_ASSERT(tilt >= -90 && tilt <= 90);
  _pan = pan;
  _tilt = tilt;
}

void ImageProcessor::SetPanTiltZoom(double pan, double tilt, double zoom) {
  IMAGE_PROCESSOR_ASSERT(pan >= -180 && pan <= 180);
  IMAGE_PROCESSOR_ASSERT(tilt >= -90 && tilt <= 90);
  IMAGE_PROCESSOR_ASSERT(zoom > 0);
  _pan = pan;
  _tilt = tilt;
  _zoom = zoom;
}

void ImageProcessor::GetPanTiltZoom(double& pan, double& tilt, double& zoom) const {
  pan = _pan;
  tilt = _tilt;
  zoom = _zoom;
}

double ImageProcessor::GetPan() const {
  return _pan;
}

double ImageProcessor::GetTilt() const {
  return _tilt;
}

double ImageProcessor::GetZoom() const {
  return _zoom;
}

void ImageProcessor::SetParameters(const ImageProcessorParams& params) {
  try {
    ConfigureImage(_inputData, params.InputImageWidth, params.InputImageHeight,
                   params.InputImageStride, params.InputImageBitsPerPixel, params.InputImageOwnData);
    ConfigureImage(_outputData, params.OutputImageWidth, params.OutputImageHeight,
                   params.OutputImageStride, params.InputImageBitsPerPixel, params.OutputImageOwnData);
    ConfigureImage(_outputPanoramaData, params.OutputPanoramaImageWidth,
                   params.OutputPanoramaImageHeight, params.OutputPanoramaImageStride,
                   params.InputImageBitsPerPixel, params.OutputPanoramaImageOwnData);
  } catch (const std::bad_alloc&) {
    _params = params;
    _privateData->Clear();
    throw;
  }
  _params = params;
  _privateData->Allocate(params);
}

const ImageProcessorParams& ImageProcessor::GetParameters() const {
  return _params;
}

void ImageProcessor::InputImage(const ImageData& image) {
  _inputData.CopyFrom(image);
}

void ImageProcessor::OutputImage(ImageData& image) const {
  image.CopyFrom(_outputData);
}

void ImageProcessor::OutputPanoramaImage(ImageData& image) const {
  image.CopyFrom(_outputPanoramaData);
}

void ImageProcessor::ProcessImage() {
  InnerProcessImage();
}

void ImageProcessor::ProcessPanoramaImage() {
  InnerProcessPanoramaImage();
}

int ImageProcessor::GetAveragePixelValue(const unsigned char* data, int stride, int bytesPerPixel,
                                         int x, int y, int channel, float fx, float fy) {
  const unsigned char* p = data + static_cast<std::ptrdiff_t>(y) * stride +
                           static_cast<std::ptrdiff_t>(x) * bytesPerPixel + channel;
  return image_processor_pixels::AveragePixelValue(p, stride, bytesPerPixel, fx, fy);
}
