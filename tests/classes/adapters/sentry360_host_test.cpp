// A host drives the Sentry360 kind of the loaded plug-in (lib/libDewarpWrapper.so, reached only
// through its entry points and virtual tables) with frames, in the view and in the panorama.
// Needs no maker library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "../host/host_interfaces.h"

namespace {

const char* const kPlugin = DEWARP_BINARY_DIR "/lib/libDewarpWrapper.so";
const double kPi = 3.141592653589793;

// Three-byte pixels: red = column mod 256, green = row mod 256, blue 77 inside the fisheye
// circle and 0 outside.
void FillFisheye(unsigned char* frame, int width, int height, int centreX, int centreY, int radius) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      unsigned char* p = frame + (static_cast<std::size_t>(y) * width + x) * 3;
      const long dx = x - centreX, dy = y - centreY;
      const bool inside = dx * dx + dy * dy < static_cast<long>(radius) * radius;
      p[0] = static_cast<unsigned char>(x & 0xFF);
      p[1] = static_cast<unsigned char>(y & 0xFF);
      p[2] = inside ? 77 : 0;
    }
  }
}

const unsigned char* PixelAt(const unsigned char* frame, int width, int x, int y) {
  return frame + (static_cast<std::size_t>(y) * width + x) * 3;
}

class Sentry360Host : public ::testing::Test {
protected:
  void SetUp() override {
    plugin = dlopen(kPlugin, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(plugin, nullptr) << dlerror();
    createDewarper = reinterpret_cast<host::CreateDewarperFunction>(dlsym(plugin, "CreateDewarper"));
    deleteDewarper = reinterpret_cast<host::DeleteDewarperFunction>(dlsym(plugin, "DeleteDewarper"));
    ASSERT_NE(createDewarper, nullptr);
    ASSERT_NE(deleteDewarper, nullptr);
  }
  void TearDown() override {
    if (plugin != nullptr) {
      EXPECT_EQ(dlclose(plugin), 0);
    }
  }

  host::IDewarper* Create(int position, int x, int y, int r) {
    const host::DewarpParams_t params = {0, position, 0, x, y, r};
    return createDewarper(host::DewarperType::Sentry360, params);
  }

  // One host frame: input buffer, the picture written into it, then the output.
  const unsigned char* Frame(host::IDewarper* dewarper, int width, int height, int& outWidth, int& outHeight,
                             int x, int y, int r) {
    unsigned char* input = nullptr;
    unsigned int size = 0;
    int format = -1;
    if (!dewarper->GetImageInputBuffer(width, height, &input, &size, &format)) return nullptr;
    EXPECT_EQ(format, 12);
    EXPECT_EQ(size, static_cast<unsigned int>(width * 3 * height));
    FillFisheye(input, width, height, x, y, r);
    unsigned char* output = nullptr;
    if (!dewarper->GetImageOutputBuffer(&outWidth, &outHeight, &output, &size, &format)) return nullptr;
    EXPECT_EQ(format, 12);
    EXPECT_EQ(size, static_cast<unsigned int>(outWidth * 3 * outHeight));
    return output;
  }

  void* plugin = nullptr;
  host::CreateDewarperFunction createDewarper = nullptr;
  host::DeleteDewarperFunction deleteDewarper = nullptr;
};

TEST_F(Sentry360Host, ViewFramesFollowTheHostsSteps) {
  const int cx = 640, cy = 480, r = 400;
  host::IDewarper* dewarper = Create(1, cx, cy, r);
  ASSERT_NE(dewarper, nullptr);
  EXPECT_EQ(dewarper->Mode(), host::DewarperType::Sentry360);
  ASSERT_TRUE(dewarper->Check());
  EXPECT_TRUE(dewarper->IsSubModeSupported(1));
  EXPECT_TRUE(dewarper->CanPan(1));

  // A frame before any Clear (zoom 0 held): rendered, the host survives; straight ahead the
  // centre of the view shows the fisheye centre whatever the zoom.
  int width = 400, height = 300;
  const unsigned char* out = Frame(dewarper, 1280, 960, width, height, cx, cy, r);
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(width, 400);
  ASSERT_EQ(height, 300);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[0], cx & 0xFF);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[1], cy & 0xFF);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[2], 77);
  float pan = -1, tilt = -1, zoom = -1;
  dewarper->GetPosition(pan, tilt, zoom);
  EXPECT_EQ(zoom, 0.0f);

  // The host's steps: home, 6 zoom steps of 0.05 from 0.7, 10 tilt steps of 0.2 degree down.
  dewarper->Clear();
  dewarper->Zoom(1, 5);
  dewarper->Tilt(-1, 9);
  dewarper->GetPosition(pan, tilt, zoom);
  EXPECT_FLOAT_EQ(zoom, 1.0f);
  EXPECT_FLOAT_EQ(tilt, 2.0f);

  // Pan 90, tilt 30 (a virtual tilt of 10 degrees): the centre ray meets the fisheye at
  // (2 R sin 10 deg sin 90 deg, -2 R sin 10 deg cos 90 deg) from the centre.
  dewarper->SetPosition(90.0f, 30.0f, 1.0f);
  width = 400;
  height = 300;
  out = Frame(dewarper, 1280, 960, width, height, cx, cy, r);
  ASSERT_NE(out, nullptr);
  const double st = std::sin(30.0 / 90.0 * 30.0 * kPi / 180.0);
  const int x = cx + static_cast<int>(2.0 * r * st * std::sin(kPi / 2));
  ASSERT_EQ(x, cx + 138);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[0], x & 0xFF);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[1], cy & 0xFF);
  EXPECT_EQ(PixelAt(out, 400, 200, 150)[2], 77);
  deleteDewarper(dewarper);
}

TEST_F(Sentry360Host, PanoramaFramesAreHalfTheInput) {
  const int cx = 640, cy = 480, r = 400;
  host::IDewarper* dewarper = Create(1, cx, cy, r);
  ASSERT_NE(dewarper, nullptr);
  dewarper->SetSubMode(2);
  EXPECT_EQ(dewarper->SubMode(), 2);
  EXPECT_FALSE(dewarper->CanPan(2));
  EXPECT_FLOAT_EQ(dewarper->AdjustAspectRatio(1.0f, 1.5f), 16.0f / 9.0f);
  for (int i = 0; i < 3; ++i) {
    int width = 1920, height = 1080;
    const unsigned char* out = Frame(dewarper, 1280, 960, width, height, cx, cy, r);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(width, 640);
    EXPECT_EQ(height, 480);
    if (i == 0) {
      // First row, first column: the rim of the ring at angle 0 (nearest pixel on the first frame).
      const double rho = std::sin((0.75 + 0.1) * kPi / 2) * r - 1;
      const int x = cx + static_cast<int>(rho);
      ASSERT_EQ(x, cx + 387);
      EXPECT_EQ(PixelAt(out, 640, 0, 0)[0], x & 0xFF);
      EXPECT_EQ(PixelAt(out, 640, 0, 0)[1], cy & 0xFF);
      EXPECT_EQ(PixelAt(out, 640, 0, 0)[2], 77);
    }
  }
  deleteDewarper(dewarper);
}

// A portrait input gives an output taller than wide: the crossed strip is as tall as the output
// is wide, and the rows below it are left to the host's buffer as they were.
TEST_F(Sentry360Host, APortraitPanoramaStaysInsideTheOutput) {
  const int cx = 480, cy = 640, r = 400;
  host::IDewarper* dewarper = Create(2, cx, cy, r);
  ASSERT_NE(dewarper, nullptr);
  dewarper->SetSubMode(2);
  int width = 100, height = 100;
  unsigned char* out = const_cast<unsigned char*>(Frame(dewarper, 960, 1280, width, height, cx, cy, r));
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(width, 480);
  ASSERT_EQ(height, 640);
  std::memset(out, 0x11, static_cast<std::size_t>(width) * 3 * height);
  out = const_cast<unsigned char*>(Frame(dewarper, 960, 1280, width, height, cx, cy, r));
  ASSERT_NE(out, nullptr);
  EXPECT_NE(PixelAt(out, 480, 479, 479)[2], 0x11);  // blue: 77 inside the circle, 0 outside
  EXPECT_EQ(PixelAt(out, 480, 0, 480)[0], 0x11);
  EXPECT_EQ(PixelAt(out, 480, 479, 639)[2], 0x11);
  deleteDewarper(dewarper);
}

}  // namespace
