#include "ImageProcessorCommon.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

void ImageProcessorAssertionFailed(const char* expression, const char* file, unsigned int line,
                                   const char* function) {
  std::fprintf(stderr, "%s: %s:%u: %s: Assertion `%s' failed.\n", program_invocation_short_name,
               file, line, function, expression);
  std::fflush(stderr);
  std::abort();
}

std::size_t ImageProcessorElementCount(int first, int second, std::size_t elementSize) {
  if (first <= 0 || second <= 0) {
    return 0;
  }
  const std::uint64_t count = static_cast<std::uint64_t>(first) * static_cast<std::uint64_t>(second);
  // The largest block a process can address: half the address space on i386 (the limit of a
  // pointer difference), the 47-bit user address space on x86-64.
  const std::uint64_t userAddressSpace = std::uint64_t(1) << 47;
  const std::uint64_t pointerLimit = static_cast<std::uint64_t>(PTRDIFF_MAX);
  const std::uint64_t limit = pointerLimit < userAddressSpace ? pointerLimit : userAddressSpace;
  if (elementSize != 0 && count > limit / elementSize) {
    throw std::bad_alloc();
  }
  return static_cast<std::size_t>(count);
}

ImageData::ImageData() {
  Width = 0;
  Height = 0;
  Stride = 0;
  BitsPerPixel = 0;
  Data = NULL;
  OwnsData = false;
}

ImageData::~ImageData() {
  DeleteData();
}

std::size_t ImageData::ByteCount() const {
  return ImageProcessorElementCount(Height, Stride, 1);
}

void ImageData::InitData() {
  IMAGE_PROCESSOR_ASSERT(Data == NULL);
  // Zeroed, so that nothing uninitialised is ever read from a fresh image.
  Data = new unsigned char[ByteCount()]();
  OwnsData = true;
}

void ImageData::DeleteData() {
  if (OwnsData) {
    delete[] Data;
  }
  Data = NULL;
  OwnsData = false;
}

void ImageData::ReInitData() {
  DeleteData();
  InitData();
}

void ImageData::CopyFrom(const ImageData& source) {
  if (&source == this) {
    return;
  }
  const std::size_t bytes = source.ByteCount();
  if (ByteCount() != bytes) {
    DeleteData();
  }
  Width = source.Width;
  Height = source.Height;
  Stride = source.Stride;
  BitsPerPixel = source.BitsPerPixel;
  if (Data == NULL) {
    InitData();
  }
  if (source.Data != NULL && bytes != 0) {
    std::memcpy(Data, source.Data, bytes);
  }
}

void ImageData::Borrow(unsigned char* data, int width, int height, int stride, int bitsPerPixel) {
  DeleteData();
  Width = width;
  Height = height;
  Stride = stride;
  BitsPerPixel = bitsPerPixel;
  Data = data;
}

ImageProcessorParams::ImageProcessorParams() {
  InputImageWidth = 0;
  InputImageHeight = 0;
  InputImageStride = 0;
  InputImageBitsPerPixel = 0;
  InputImageCenterX = 0;
  InputImageCenterY = 0;
  InputImageRadius = 0;
  InputImageOwnData = false;
  OutputImageWidth = 0;
  OutputImageHeight = 0;
  OutputImageStride = 0;
  OutputImageOwnData = false;
  UseOutputImageMapCache = false;
  OutputImagePrecisionMode = PrecisionModeOff;
  OutputImageInvert = false;
  OutputPanoramaImageWidth = 0;
  OutputPanoramaImageHeight = 0;
  OutputPanoramaImageStride = 0;
  OutputPanoramaImageOwnData = false;
  UseOutputPanoramaImageMapCache = false;
  OutputPanoramaImagePrecisionMode = PrecisionModeOff;
  OutputPanoramaImageInvert = false;
}
