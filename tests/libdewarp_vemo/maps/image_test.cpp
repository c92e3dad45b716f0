// Frame wrappers: the planar 4:2:0 layout, accessors, ownership and copies.
#include <libdewarp_vemo/image.h>
#include <libdewarp_vemo/image_planar.h>
#include <libdewarp_vemo/image_planar_420.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using vemo::libdewarp::Image;
using vemo::libdewarp::ImagePlanar;
using vemo::libdewarp::ImagePlanar420;

namespace {

DEWARP_IMAGE Describe(DEWARP_IMAGE_FORMAT format, std::vector<std::uint8_t>& buffer, std::uint32_t w,
                      std::uint32_t h, std::uint32_t s) {
  DEWARP_IMAGE image;
  image.Info.Format = format;
  image.Info.Width = w;
  image.Info.Height = h;
  image.Info.Stride = s;
  image.Data = buffer.data();
  return image;
}

std::string InvalidArgumentText(const std::function<void()>& f) {
  try {
    f();
  } catch (const std::invalid_argument& e) {
    return e.what();
  }
  return "<no exception>";
}

}  // namespace

TEST(ImageTest, VgaLayoutWithStrideEqualToWidth) {
  std::vector<std::uint8_t> buffer(460800);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 640, 480, 640, false);
  EXPECT_EQ(460800u, image.GetBufferSize());
  EXPECT_EQ(307200u, image.GetLumaBufferSize());
  EXPECT_EQ(153600u, image.GetChromaBufferSize());
  EXPECT_EQ(buffer.data(), image.GetImage());
  EXPECT_EQ(buffer.data() + 307200, image.GetUBuffer());
  EXPECT_EQ(buffer.data() + 384000, image.GetVBuffer());
  EXPECT_EQ(320u, image.GetBlocksPerWidth());
  EXPECT_EQ(2u, image.GetBlockWidth());
  EXPECT_EQ(2u, image.GetBlockHeight());
  EXPECT_EQ(buffer.data() + 384000 + 239 * 320 + 319, image.GetVChannel(639, 479));
}

TEST(ImageTest, WiderStrideMovesChromaPlanesByTheStride) {
  // 640 x 480 with stride 704: Y 704 x 480 = 337920 bytes, each chroma plane 84480.
  std::vector<std::uint8_t> buffer(506880);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 640, 480, 704, false);
  EXPECT_EQ(506880u, image.GetBufferSize());
  EXPECT_EQ(buffer.data() + 337920, image.GetUBuffer());
  EXPECT_EQ(buffer.data() + 422400, image.GetVBuffer());
  EXPECT_EQ(352u, image.GetBlocksPerWidth());
  EXPECT_EQ(buffer.data() + 704 * 3 + 5, image.GetYChannel(5, 3));
  EXPECT_EQ(buffer.data() + 337920 + 1 * 352 + 2, image.GetUChannel(5, 3));
  EXPECT_EQ(1 * 352u + 2u, image.CalculateOffset(5, 3));
}

TEST(ImageTest, OddSizesKeepTheStrideLayout) {
  // 5 x 3, stride 5: luma 15, chroma 15 >> 1 = 7 (U 15 / 4 = 3 bytes, V from there).
  std::vector<std::uint8_t> buffer(22);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 5, 3, 5, false);
  EXPECT_EQ(22u, image.GetBufferSize());
  EXPECT_EQ(buffer.data() + 15, image.GetUBuffer());
  EXPECT_EQ(buffer.data() + 18, image.GetVBuffer());
  EXPECT_EQ(2u, image.GetBlocksPerWidth());
}

TEST(ImageTest, FactoryRefusesOtherFormats) {
  std::vector<std::uint8_t> buffer(64);
  const DEWARP_IMAGE formats[] = {Describe(YUV422_PLANAR_IMAGE, buffer, 4, 4, 4),
                                  Describe(RGBA32_PACKED_IMAGE, buffer, 4, 4, 4),
                                  Describe(YUV422_PACKED_IMAGE, buffer, 4, 4, 4),
                                  Describe(YUV420_PACKED_IMAGE, buffer, 4, 4, 4)};
  for (const DEWARP_IMAGE& d : formats) {
    EXPECT_EQ(nullptr, Image::ImageClassFactory(d));
  }
}

TEST(ImageTest, FactoryWrapsTheCallersBufferAsPlanar420) {
  std::vector<std::uint8_t> buffer(24, 0x5A);
  const DEWARP_IMAGE d = Describe(YUV420_PLANAR_IMAGE, buffer, 3, 4, 4);
  std::unique_ptr<Image> image(Image::ImageClassFactory(d));
  ASSERT_NE(nullptr, image.get());
  EXPECT_NE(nullptr, dynamic_cast<ImagePlanar420*>(image.get()));
  EXPECT_EQ(buffer.data(), image->GetImage());
  EXPECT_EQ(3u, image->GetWidth());
  EXPECT_EQ(4u, image->GetHeight());
  EXPECT_EQ(4u, image->GetStride());
  EXPECT_FALSE(image->GetOwnBuffer());
  EXPECT_TRUE(image->IsValid());
  image.reset();
  // The host's buffer is neither freed nor changed.
  EXPECT_EQ(std::vector<std::uint8_t>(24, 0x5A), buffer);
}

TEST(ImageTest, SetImageWithAnotherFormatThrowsAndKeepsTheState) {
  std::vector<std::uint8_t> buffer(24);
  std::vector<std::uint8_t> other(96);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  EXPECT_EQ("Incompatible format", InvalidArgumentText([&] {
              image.SetImage(YUV422_PLANAR_IMAGE, other.data(), 8, 8, 8, false);
            }));
  EXPECT_EQ(YUV420_PLANAR_IMAGE, image.GetFormat());
  EXPECT_EQ(buffer.data(), image.GetImage());
  EXPECT_EQ(4u, image.GetWidth());
  image.SetImage(YUV420_PLANAR_IMAGE, other.data(), 8, 8, 8, false);
  EXPECT_EQ(other.data(), image.GetImage());
  EXPECT_EQ(other.data() + 64, image.GetUBuffer());
  EXPECT_EQ(other.data() + 80, image.GetVBuffer());
  EXPECT_EQ(4u, image.GetBlocksPerWidth());
}

TEST(ImageTest, PixelOutsideGivesDefaultAndAccessorsThrow) {
  std::vector<std::uint8_t> buffer(24, 0);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  Image::PixelChannels p;
  p.Init(7, 7);
  EXPECT_FALSE(image.GetPixel(4, 0, p));
  EXPECT_EQ(16, p.channels[0]);
  EXPECT_EQ(128, p.channels[1]);
  EXPECT_EQ(128, p.channels[2]);
  EXPECT_EQ(3u, p.currentChannel);
  EXPECT_EQ(3u, p.channelCount);
  EXPECT_EQ(1u, p.channelSize);
  EXPECT_FALSE(image.GetPixel(0, 4, p));
  EXPECT_EQ("invalid x, y", InvalidArgumentText([&] { image.GetYChannel(4, 0); }));
  EXPECT_EQ("invalid x, y", InvalidArgumentText([&] { image.GetUChannel(0, 4); }));
  EXPECT_EQ("invalid x, y", InvalidArgumentText([&] { image.GetVChannel(4, 4); }));
  EXPECT_EQ("invalid x, y", InvalidArgumentText([&] { image.SetYChannel(4, 0, 1); }));
  EXPECT_EQ("invalid x, y", InvalidArgumentText([&] { image.SetPixel(0, 4, p); }));
  EXPECT_EQ(std::vector<std::uint8_t>(24, 0), buffer);
}

TEST(ImageTest, BlockOfFourPixelsSharesOneChromaSample) {
  // 6 x 4, stride 6: U at 24, V at 30, chroma pitch 3.
  std::vector<std::uint8_t> buffer(36, 0);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 6, 4, 6, false);
  const unsigned k = 2, m = 1;
  std::uint8_t* u = image.GetUChannel(2 * k, 2 * m);
  std::uint8_t* v = image.GetVChannel(2 * k, 2 * m);
  EXPECT_EQ(buffer.data() + 24 + 1 * 3 + 2, u);
  EXPECT_EQ(buffer.data() + 30 + 1 * 3 + 2, v);
  EXPECT_EQ(u, image.GetUChannel(2 * k + 1, 2 * m));
  EXPECT_EQ(u, image.GetUChannel(2 * k, 2 * m + 1));
  EXPECT_EQ(u, image.GetUChannel(2 * k + 1, 2 * m + 1));
  EXPECT_EQ(v, image.GetVChannel(2 * k + 1, 2 * m + 1));
  image.SetUChannel(2 * k + 1, 2 * m + 1, 77);
  image.SetVChannel(2 * k, 2 * m, 99);
  Image::PixelChannels p;
  ASSERT_TRUE(image.GetPixel(2 * k + 1, 2 * m, p));
  EXPECT_EQ(77, p.channels[1]);
  EXPECT_EQ(99, p.channels[2]);
  EXPECT_EQ(3u, p.currentChannel);
}

TEST(ImageTest, SetPixelWritesTheThreePlanes) {
  std::vector<std::uint8_t> buffer(24, 0);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  Image::PixelChannels p;
  p.Init(1, 3);
  p.Add(10);
  p.Add(20);
  p.Add(30);
  image.SetPixel(3, 2, p);
  EXPECT_EQ(10, buffer[2 * 4 + 3]);
  EXPECT_EQ(20, buffer[16 + 1 * 2 + 1]);
  EXPECT_EQ(30, buffer[20 + 1 * 2 + 1]);
  Image::PixelChannels q;
  image.GetDefaultPixel(q);
  EXPECT_EQ(16, q[0]);
  EXPECT_EQ(128, q[1]);
  EXPECT_EQ(128, q[2]);
  EXPECT_EQ(3u, q.currentChannel);
}

TEST(ImageTest, PixelChannelsWalk) {
  Image::PixelChannels p;
  p.Init(1, 3);
  EXPECT_EQ(0u, p.currentChannel);
  p.Add(1);
  p.Add(2);
  p.Add(3);
  p.Add(4);
  p.Add(5);  // ignored: all four slots are full
  EXPECT_EQ(4u, p.currentChannel);
  EXPECT_EQ(1, p.Begin());
  EXPECT_EQ(2, p.Next());
  EXPECT_EQ(3, p.Next());
  EXPECT_EQ(3, p.Get());
  EXPECT_EQ(4, p[3]);
  p.Reset();
  EXPECT_EQ(0u, p.currentChannel);
  EXPECT_EQ(0, p[0]);
}

TEST(ImageTest, CreateBlankOwnsAFreshPlainPlanarBuffer) {
  std::vector<std::uint8_t> buffer(30);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 5, 4, 5, false);
  std::unique_ptr<Image> blank(image.CreateBlank());
  ASSERT_NE(nullptr, blank.get());
  EXPECT_EQ(nullptr, dynamic_cast<ImagePlanar420*>(blank.get()));
  EXPECT_NE(nullptr, dynamic_cast<ImagePlanar*>(blank.get()));
  EXPECT_TRUE(blank->GetOwnBuffer());
  EXPECT_NE(nullptr, blank->GetImage());
  EXPECT_NE(buffer.data(), blank->GetImage());
  EXPECT_EQ(5u, blank->GetWidth());
  EXPECT_EQ(4u, blank->GetHeight());
  EXPECT_EQ(5u, blank->GetStride());
  EXPECT_EQ(30u, blank->GetBufferSize());
  // Writing the whole buffer stays inside it; destroying it frees it (the sanitizer tree
  // reports a leak or an overflow otherwise).
  std::fill(blank->GetImage(), blank->GetImage() + blank->GetBufferSize(), 0x11);
}

TEST(ImageTest, CreateCopyAndCopyConstructionAreDeep) {
  std::vector<std::uint8_t> buffer(24);
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    buffer[i] = static_cast<std::uint8_t>(i);
  }
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  std::unique_ptr<Image> copy(image.CreateCopy());
  EXPECT_EQ(nullptr, dynamic_cast<ImagePlanar420*>(copy.get()));
  EXPECT_TRUE(copy->GetOwnBuffer());
  EXPECT_NE(buffer.data(), copy->GetImage());
  EXPECT_EQ(buffer, std::vector<std::uint8_t>(copy->GetImage(), copy->GetImage() + 24));
  ImagePlanar420 second(image);
  EXPECT_TRUE(second.GetOwnBuffer());
  EXPECT_NE(buffer.data(), second.GetImage());
  EXPECT_EQ(second.GetImage() + 16, second.GetUBuffer());
  buffer[0] = 200;
  EXPECT_EQ(0, second.GetImage()[0]);
  EXPECT_EQ(0, copy->GetImage()[0]);
}

TEST(ImageTest, NullBufferMakesTheImageAllocateItsOwn) {
  ImagePlanar image(YUV420_PLANAR_IMAGE, nullptr, 6, 2, 8, false);
  EXPECT_TRUE(image.GetOwnBuffer());
  ASSERT_NE(nullptr, image.GetImage());
  EXPECT_EQ(24u, image.GetBufferSize());
  EXPECT_EQ(image.GetImage() + 16, image.GetUBuffer());
  EXPECT_EQ(image.GetImage() + 20, image.GetVBuffer());
}

TEST(ImageTest, AssignmentIsADeepCopyAndSelfAssignmentWarns) {
  vemo::test::LogCapture cap(LOG_WARNING);
  std::vector<std::uint8_t> a(24, 1);
  std::vector<std::uint8_t> b(54, 2);
  ImagePlanar420 first(YUV420_PLANAR_IMAGE, a.data(), 4, 4, 4, false);
  ImagePlanar420 second(YUV420_PLANAR_IMAGE, b.data(), 6, 6, 6, false);
  second = first;
  EXPECT_TRUE(second.GetOwnBuffer());
  EXPECT_NE(a.data(), second.GetImage());
  EXPECT_EQ(4u, second.GetWidth());
  EXPECT_EQ(second.GetImage() + 16, second.GetUBuffer());
  EXPECT_EQ(1, second.GetImage()[23]);
  EXPECT_EQ(std::vector<std::uint8_t>(54, 2), b);
  ImagePlanar& alias = second;
  second = alias;
  EXPECT_TRUE(cap.contains("Self assignment of ImagePlanar object"));
  EXPECT_EQ(4u, second.GetWidth());
  // Assigning through the base class copies too, and the planes follow the new buffer.
  Image& base = second;
  ImagePlanar420 third(YUV420_PLANAR_IMAGE, b.data(), 6, 6, 6, false);
  base = third;
  EXPECT_EQ(6u, second.GetWidth());
  EXPECT_EQ(second.GetImage() + 36, second.GetUBuffer());
  EXPECT_EQ(2, *second.GetVChannel(5, 5));
  Image& self = base;
  base = self;
  EXPECT_TRUE(cap.contains("Self assignment of Image object"));
}

TEST(ImageTest, CopyImageFromItsOwnBufferReadsLiveMemory) {
  ImagePlanar image(YUV420_PLANAR_IMAGE, nullptr, 4, 4, 4, true);
  std::fill(image.GetImage(), image.GetImage() + 24, 9);
  image.CopyImage(YUV420_PLANAR_IMAGE, image.GetImage(), 4, 4, 4);
  EXPECT_EQ(9, image.GetImage()[23]);
  EXPECT_TRUE(image.GetOwnBuffer());
}

TEST(ImageTest, CopiedDescriptionNeverOwnsAndReleaseGivesUpOwnership) {
  ImagePlanar owner(YUV420_PLANAR_IMAGE, nullptr, 2, 2, 2, true);
  ImagePlanar copy(owner);
  EXPECT_NE(owner.GetImage(), copy.GetImage());
  std::uint8_t* released = owner.ReleaseOwnership();
  EXPECT_FALSE(owner.GetOwnBuffer());
  EXPECT_EQ(released, owner.GetImage());
  owner.ClearImage();
  EXPECT_EQ(released, owner.GetImage());  // not owned: left alone
  delete[] released;
}

TEST(ImageTest, ValidityAndFormatCompatibility) {
  std::vector<std::uint8_t> buffer(24);
  ImagePlanar420 image(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  EXPECT_TRUE(image.IsValid());
  EXPECT_TRUE(image.IsFormatCompatible(YUV420_PLANAR_IMAGE));
  EXPECT_FALSE(image.IsFormatCompatible(YUV422_PLANAR_IMAGE));
  EXPECT_FALSE(image.IsFormatCompatible(RGBA32_PACKED_IMAGE));
  EXPECT_EQ(3u, image.GetChannelCount());
  EXPECT_EQ(1u, image.GetPixelSize());
  ImagePlanar420 narrow(YUV420_PLANAR_IMAGE, buffer.data(), 4, 4, 3, false);
  EXPECT_FALSE(narrow.IsValid());
}

TEST(ImageTest, OtherFormatsHaveNoBlocks) {
  std::vector<std::uint8_t> buffer(64);
  ImagePlanar image(YUV422_PLANAR_IMAGE, buffer.data(), 4, 4, 4, false);
  EXPECT_EQ(0u, image.GetBlockWidth());
  EXPECT_EQ(0u, image.GetBlockHeight());
  EXPECT_EQ(0u, image.GetBlocksPerWidth());
  EXPECT_EQ(0u, image.CalculateOffset(3, 3));
  EXPECT_EQ(32u, image.GetBufferSize());  // chroma not halved: 16 + 16
}
