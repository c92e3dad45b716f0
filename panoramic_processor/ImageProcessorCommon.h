// Common types of the panoramic image processor: images of packed whole-byte pixels, the
// processor's parameter record, its precision modes and an assertion that is never compiled out.
#ifndef PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_COMMON_H
#define PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_COMMON_H

#include <cstddef>

// Reports a failed assertion in the platform's usual form
// ("<program>: <file>:<line>: <function>: Assertion `<expression>' failed.") and aborts.
[[noreturn]] void ImageProcessorAssertionFailed(const char* expression, const char* file,
                                                unsigned int line, const char* function);

#define IMAGE_PROCESSOR_STRINGIFY_TEXT(text) #text
#define IMAGE_PROCESSOR_STRINGIFY(expression) IMAGE_PROCESSOR_STRINGIFY_TEXT(expression)

// Programming errors end the process in every build type (NDEBUG does not remove this check).
// The expression is macro-expanded before it is turned into text, as the classic assertion
// mechanism does, so "Data == NULL" reads "Data == __null" with g++.
#define IMAGE_PROCESSOR_ASSERT(expression)                                                   \
  ((expression) ? static_cast<void>(0)                                                       \
                : ImageProcessorAssertionFailed(IMAGE_PROCESSOR_STRINGIFY(expression),       \
                                                __FILE__, __LINE__, __PRETTY_FUNCTION__))

// An image: packed pixels of whole bytes, Stride bytes per row, Height rows.
struct ImageDataBase {
  int Width;
  int Height;
  int Stride;         // bytes per row
  int BitsPerPixel;
  unsigned char* Data;
  bool OwnsData;      // Data was allocated here and is freed here
};

// An image with its operations. A new image is all zero. An image either owns its buffer
// (allocated by InitData or CopyFrom) or borrows one that its user points it at.
class ImageData : public ImageDataBase {
public:
  ImageData();
  ~ImageData();
  ImageData(const ImageData&) = delete;             // an owned buffer has exactly one owner
  ImageData& operator=(const ImageData&) = delete;

  // Allocates Height x Stride zeroed bytes and owns them; the image must not hold data yet.
  void InitData();
  // Frees owned data only; always leaves Data null and OwnsData false.
  void DeleteData();
  // DeleteData, then InitData.
  void ReInitData();
  // Copies another image: when the byte counts (Stride x Height) differ the current data is
  // dropped; the four size fields are copied; an image without data allocates its own; then
  // Stride x Height bytes are copied.
  void CopyFrom(const ImageData& source);
  // Points the image at a caller's buffer (not owned), after freeing any owned data.
  void Borrow(unsigned char* data, int width, int height, int stride, int bitsPerPixel);

  // Height x Stride in bytes; 0 when either is not positive. Throws std::bad_alloc when the
  // count does not fit the address space.
  std::size_t ByteCount() const;
};

enum ImageProcessorPrecisionMode {
  PrecisionModeOff = 0,   // nearest pixel
  PrecisionModeOn = 1,    // bilinear
  PrecisionModeAuto = 2   // nearest while a map is built, bilinear when it is reused
};

struct ImageProcessorParamsBase {
  int InputImageWidth;
  int InputImageHeight;
  int InputImageStride;
  int InputImageBitsPerPixel;
  int InputImageCenterX;       // the fisheye circle in the input, in pixels
  int InputImageCenterY;
  int InputImageRadius;
  bool InputImageOwnData;

  int OutputImageWidth;
  int OutputImageHeight;
  int OutputImageStride;
  bool OutputImageOwnData;
  bool UseOutputImageMapCache;
  ImageProcessorPrecisionMode OutputImagePrecisionMode;
  bool OutputImageInvert;

  int OutputPanoramaImageWidth;
  int OutputPanoramaImageHeight;
  int OutputPanoramaImageStride;
  bool OutputPanoramaImageOwnData;
  bool UseOutputPanoramaImageMapCache;
  ImageProcessorPrecisionMode OutputPanoramaImagePrecisionMode;
  bool OutputPanoramaImageInvert;
};

// The processor's configuration; all zero after construction.
struct ImageProcessorParams : public ImageProcessorParamsBase {
  ImageProcessorParams();
};

class ImageProcessorBase {
};

// first x second x elementSize in bytes, as an element count (first x second); 0 when either
// factor is not positive. Throws std::bad_alloc when the bytes do not fit the address space.
std::size_t ImageProcessorElementCount(int first, int second, std::size_t elementSize);

#endif  // PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_COMMON_H
