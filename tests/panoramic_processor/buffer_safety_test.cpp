// The renderers read and write only inside the images' buffers (Height x Stride bytes), also
// when the images do not match the parameters. Buffers here are allocated to their exact size,
// so that the address sanitizer build reports any access past them; guard bytes check the same
// in every build.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "ImageProcessor.h"
#include "panoramic_reference.h"

namespace {

using namespace panoramic_test;
typedef std::vector<unsigned char> Bytes;

const unsigned char kGuard = 0xA5;

// A buffer of Size bytes followed by 64 guard bytes, checked after rendering.
struct GuardedBuffer {
  explicit GuardedBuffer(std::size_t size) : Size(size), Storage(size + 64, kGuard) {}
  unsigned char* Data() { return Storage.data(); }
  bool TailIntact() const {
    for (std::size_t k = Size; k < Storage.size(); ++k) {
      if (Storage[k] != kGuard) return false;
    }
    return true;
  }
  std::size_t Size;
  Bytes Storage;
};

// The host's panorama layout: width and height crossed over (width = output height, height =
// output width) with the stride of the output width, pointed at an output buffer of
// output width x output height pixels. Only the strip rows that lie inside the buffer are drawn.
TEST(BufferSafetyTest, CrossedPanoramaDrawsOnlyTheRowsInsideTheBuffer) {
  const int dstW = 10, dstH = 6, inW = 40, inH = 30;
  for (int guarded = 0; guarded < 2; ++guarded) {
    ImageProcessor processor;
    ImageProcessorParams p = OwnedParams(inW, inH, 24, 20, 15, 14, 0, 0, dstH, dstW);
    p.OutputPanoramaImageStride = dstW * 3;
    p.OutputPanoramaImageOwnData = false;
    p.UseOutputPanoramaImageMapCache = true;
    p.OutputPanoramaImagePrecisionMode = PrecisionModeAuto;
    processor.SetParameters(p);
    const Bytes frame = MakeFrame(inW, inH, 3, inW * 3);
    LoadFrame(processor._inputData, frame);

    const std::size_t bytes = dstW * 3 * dstH;
    std::unique_ptr<unsigned char[]> exact(new unsigned char[bytes]);
    GuardedBuffer fenced(bytes);
    unsigned char* buffer = guarded ? fenced.Data() : exact.get();
    std::memset(buffer, kGuard, bytes);
    processor._outputPanoramaData.Borrow(buffer, dstW, dstH, dstW * 3, 24);

    for (int call = 0; call < 2; ++call) {
      processor.ProcessPanoramaImage();
      for (int row = 0; row < dstH; ++row) {
        for (int column = 0; column < dstW; ++column) {
          const unsigned char* pixel = buffer + row * dstW * 3 + column * 3;
          if (column < dstH) {  // strip columns: the strip is dstH wide
            const Bytes expected = ExpectedPixel(frame, inW * 3, 3, p, PanoramaSample(p, column, row), call == 1);
            EXPECT_EQ(Bytes(pixel, pixel + 3), expected) << column << "," << row << " call " << call;
          } else {
            EXPECT_EQ(Bytes(pixel, pixel + 3), Bytes(3, kGuard)) << column << "," << row;
          }
        }
      }
      if (guarded) {
        EXPECT_TRUE(fenced.TailIntact());
      }
    }
  }
}

TEST(BufferSafetyTest, AnOutputStrideNarrowerThanTheViewDrawsOnlyWhatFits) {
  const int inW = 40, inH = 30;
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(inW, inH, 32, 20, 15, 14, 10, 6, 0, 0);
  p.OutputImageOwnData = false;
  processor.SetParameters(p);
  const Bytes frame = MakeFrame(inW, inH, 4, inW * 4);
  LoadFrame(processor._inputData, frame);
  GuardedBuffer fenced(6 * 4 * 4);  // 4 pixels per row of a 10-pixel-wide view
  std::memset(fenced.Data(), kGuard, fenced.Size);
  processor._outputData.Borrow(fenced.Data(), 4, 6, 16, 32);
  processor.SetPanTiltZoom(0, 0, 1);
  processor.ProcessImage();
  EXPECT_TRUE(fenced.TailIntact());
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 4; ++column) {
      const unsigned char* pixel = fenced.Data() + row * 16 + column * 4;
      EXPECT_EQ(Bytes(pixel, pixel + 4), ExpectedPixel(frame, inW * 4, 4, p, ViewSample(p, 0, 0, 1, column, row), false));
    }
  }
}

TEST(BufferSafetyTest, AnInputShorterThanTheParametersIsNotReadPastItsEnd) {
  const int inW = 40, inH = 30, rows = 12;
  for (int mode = PrecisionModeOff; mode <= PrecisionModeAuto; ++mode) {
    ImageProcessor processor;
    ImageProcessorParams p = OwnedParams(inW, inH, 24, 20, 15, 14, 10, 6, 12, 5);
    p.InputImageOwnData = false;
    p.OutputImagePrecisionMode = static_cast<ImageProcessorPrecisionMode>(mode);
    p.OutputPanoramaImagePrecisionMode = p.OutputImagePrecisionMode;
    p.UseOutputImageMapCache = true;
    p.UseOutputPanoramaImageMapCache = true;
    processor.SetParameters(p);
    const Bytes frame = MakeFrame(inW, inH, 3, inW * 3);
    std::unique_ptr<unsigned char[]> shortInput(new unsigned char[rows * inW * 3]);
    std::memcpy(shortInput.get(), frame.data(), rows * inW * 3);
    processor._inputData.Borrow(shortInput.get(), inW, rows, inW * 3, 24);
    for (int call = 0; call < 2; ++call) {
      processor.ProcessImage();
      processor.ProcessPanoramaImage();
    }
    // Pixels whose source lies in the missing rows are black; the others as usual.
    const bool bilinear = mode != PrecisionModeOff;
    for (int row = 0; row < 6; ++row) {
      for (int column = 0; column < 10; ++column) {
        Sample s = ViewSample(p, 0, 0, 1, column, row);
        if (s.HasSource && s.Y >= rows) s.HasSource = false;
        // On the last row that exists there is no row below to mix with.
        const bool mix = bilinear && s.HasSource && s.Y < rows - 1;
        EXPECT_EQ(PixelAt(processor._outputData, column, row, 3), ExpectedPixel(frame, inW * 3, 3, p, s, mix))
            << column << "," << row << " mode " << mode;
      }
    }
  }
}

TEST(BufferSafetyTest, ASmallerInputAfterTheMapWasBuiltIsNotReadPastItsEnd) {
  const int inW = 40, inH = 30;
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(inW, inH, 24, 20, 15, 14, 10, 6, 12, 5);
  p.UseOutputImageMapCache = true;
  p.UseOutputPanoramaImageMapCache = true;
  p.OutputImagePrecisionMode = PrecisionModeAuto;
  p.OutputPanoramaImagePrecisionMode = PrecisionModeAuto;
  processor.SetParameters(p);
  LoadFrame(processor._inputData, MakeFrame(inW, inH, 3, inW * 3));
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  // A 5 x 5 picture replaces the input; the cached maps still point further out.
  ImageData tiny;
  tiny.Width = 5;
  tiny.Height = 5;
  tiny.Stride = 15;
  tiny.BitsPerPixel = 24;
  tiny.InitData();
  std::memset(tiny.Data, 9, 75);
  processor.InputImage(tiny);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  for (std::size_t k = 0; k < processor._outputData.ByteCount(); ++k) {
    EXPECT_EQ(processor._outputData.Data[k], 0) << k;  // no source pixel lies in the first 5 x 5
  }
}

TEST(BufferSafetyTest, MissingOutputBuffersAreNotWritten) {
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(40, 30, 24, 20, 15, 14, 10, 6, 12, 5);
  p.OutputImageOwnData = false;
  p.OutputPanoramaImageOwnData = false;
  p.UseOutputImageMapCache = true;
  p.UseOutputPanoramaImageMapCache = true;
  processor.SetParameters(p);
  ASSERT_EQ(processor._outputData.Data, nullptr);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  // The maps are still built: they depend only on the geometry.
  EXPECT_TRUE(processor.PrivateData().ViewMapValid);
  EXPECT_TRUE(processor.PrivateData().PanoramaMapValid);
}

TEST(BufferSafetyTest, PixelsOfLessThanAByteAreNotDrawn) {
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(40, 30, 24, 20, 15, 14, 10, 6, 12, 5);
  p.InputImageBitsPerPixel = 4;
  processor.SetParameters(p);
  std::memset(processor._outputData.Data, kGuard, processor._outputData.ByteCount());
  std::memset(processor._outputPanoramaData.Data, kGuard, processor._outputPanoramaData.ByteCount());
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  for (std::size_t k = 0; k < processor._outputData.ByteCount(); ++k) ASSERT_EQ(processor._outputData.Data[k], kGuard);
  for (std::size_t k = 0; k < processor._outputPanoramaData.ByteCount(); ++k) {
    ASSERT_EQ(processor._outputPanoramaData.Data[k], kGuard);
  }
}

TEST(BufferSafetyTest, NegativeAndZeroSizesDrawNothing) {
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(40, 30, 24, 20, 15, 14, -10, 6, 12, -5);
  processor.SetParameters(p);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  p = OwnedParams(40, 30, 24, 20, 15, 14, 0, 0, 0, 0);
  processor.SetParameters(p);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  EXPECT_EQ(processor.PrivateData().ColumnCount, 0u);
}

TEST(BufferSafetyTest, OtherPixelSizesAreCopiedWhole) {
  // 2-byte and 1-byte pixels go through the same rules with their own byte count.
  for (int bits : {8, 16}) {
    const int b = bits / 8, inW = 40, inH = 30;
    ImageProcessor processor;
    ImageProcessorParams p = OwnedParams(inW, inH, bits, 20, 15, 14, 10, 6, 12, 5);
    p.OutputImagePrecisionMode = PrecisionModeOn;
    processor.SetParameters(p);
    const Bytes frame = MakeFrame(inW, inH, b, inW * b);
    LoadFrame(processor._inputData, frame);
    processor.SetPanTiltZoom(15, 20, 1);
    processor.ProcessImage();
    processor.ProcessPanoramaImage();
    for (int row = 0; row < 6; ++row) {
      for (int column = 0; column < 10; ++column) {
        EXPECT_EQ(PixelAt(processor._outputData, column, row, b),
                  ExpectedPixel(frame, inW * b, b, p, ViewSample(p, 15, 20, 1, column, row), true));
      }
    }
    for (int row = 0; row < 5; ++row) {
      for (int column = 0; column < 12; ++column) {
        EXPECT_EQ(PixelAt(processor._outputPanoramaData, column, row, b),
                  ExpectedPixel(frame, inW * b, b, p, PanoramaSample(p, column, row), false));
      }
    }
  }
}

}  // namespace
