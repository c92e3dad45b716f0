// A video-management host as it meets the plug-in: it knows only the file name of the library,
// the four entry points and the binary layout of the interfaces, which it declares itself.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "../synthetic_fisheye.h"
#include "host_interfaces.h"

// The host's own declarations of the plug-in's interfaces, used unqualified as a host's code would.
using host::DewarpParams_t;
using host::IDewarper;
using host::IDewarpRegister;
namespace DewarperType = host::DewarperType;

namespace {

const char* const kLibrary = DEWARP_BINARY_DIR "/lib/libDewarpWrapper.so";
const int kFisheyeSide = 1936;

class HostSimulation : public ::testing::Test {
protected:
  void SetUp() override {
    library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    getRegister = reinterpret_cast<host::GetRegisterFunction>(dlsym(library, "GetRegister"));
    createDewarper = reinterpret_cast<host::CreateDewarperFunction>(dlsym(library, "CreateDewarper"));
    deleteDewarper = reinterpret_cast<host::DeleteDewarperFunction>(dlsym(library, "DeleteDewarper"));
    dewarperLoaded = reinterpret_cast<host::DewarperLoadedFunction>(dlsym(library, "DewarperLoaded"));
    ASSERT_NE(getRegister, nullptr);
    ASSERT_NE(createDewarper, nullptr);
    ASSERT_NE(deleteDewarper, nullptr);
    ASSERT_NE(dewarperLoaded, nullptr);
  }
  void TearDown() override {
    if (library != nullptr) {
      EXPECT_EQ(dlclose(library), 0);
    }
  }

  IDewarper* CreateKestrel(int position) {
    const DewarpParams_t params = {0, position, 0, kFisheyeSide / 2, kFisheyeSide / 2, kFisheyeSide / 2};
    return createDewarper(DewarperType::Kestrel, params);
  }

  void* library = nullptr;
  host::GetRegisterFunction getRegister = nullptr;
  host::CreateDewarperFunction createDewarper = nullptr;
  host::DeleteDewarperFunction deleteDewarper = nullptr;
  host::DewarperLoadedFunction dewarperLoaded = nullptr;
};

// Hands the dewarper one frame of the synthetic fisheye.
void FeedFisheye(IDewarper* dewarper) {
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = -1;
  ASSERT_TRUE(dewarper->GetImageInputBuffer(kFisheyeSide, kFisheyeSide, &buffer, &size, &format));
  ASSERT_NE(buffer, nullptr);
  EXPECT_EQ(format, 5);  // planar 4:2:0
  ASSERT_EQ(size, 1936u * 1936u + 1936u * 1936u / 2u);
  FillSyntheticFisheye(buffer, kFisheyeSide, kFisheyeSide);
}

struct Frame {
  bool ok = false;
  int width = 0;
  int height = 0;
  std::vector<unsigned char> luma;
};

Frame TakeFrame(IDewarper* dewarper, int width, int height) {
  Frame frame;
  frame.width = width;
  frame.height = height;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = -1;
  frame.ok = dewarper->GetImageOutputBuffer(&frame.width, &frame.height, &buffer, &size, &format);
  if (frame.ok && buffer != nullptr) {
    EXPECT_EQ(format, 5);
    EXPECT_EQ(size, static_cast<unsigned int>(frame.width) * 3u * static_cast<unsigned int>(frame.height) / 2u);
    frame.luma.assign(buffer, buffer + static_cast<std::size_t>(frame.width) * frame.height);
  }
  return frame;
}

// Share of luma samples that show the picture rather than the default colour outside it (16).
double PictureShare(const Frame& frame) {
  if (frame.luma.empty()) return 0.0;
  std::size_t inside = 0;
  for (unsigned char y : frame.luma) inside += y != 16;
  return static_cast<double>(inside) / frame.luma.size();
}

struct Position {
  float pan, tilt, zoom;
};

Position PositionOf(IDewarper* dewarper) {
  Position p = {NAN, NAN, NAN};
  dewarper->GetPosition(p.pan, p.tilt, p.zoom);
  return p;
}

}  // namespace

TEST_F(HostSimulation, RegistryDescribesTheKinds) {
  IDewarpRegister* registry = getRegister();
  ASSERT_NE(registry, nullptr);
  EXPECT_EQ(getRegister(), registry);
  EXPECT_EQ(registry->GetModeCount(), 11);
  EXPECT_STREQ(registry->GetName(DewarperType::Kestrel), "Kestrel");
  EXPECT_STREQ(registry->GetName(DewarperType::Oncam), "");
  EXPECT_STREQ(registry->GetName(DewarperType::Axis), "");
  EXPECT_STREQ(registry->GetName(-3), "");
  EXPECT_TRUE(registry->IsLoaded(DewarperType::Kestrel));
  EXPECT_FALSE(registry->IsLoaded(DewarperType::Oncam));
  EXPECT_TRUE(registry->IsCameraSpecific(DewarperType::Kestrel));
  EXPECT_FALSE(registry->IsCameraSpecific(DewarperType::Count));
  bool lens = true, xyr = true, position = false;
  registry->GetSupportedFeatures(DewarperType::Kestrel, lens, xyr, position);
  EXPECT_FALSE(lens);
  EXPECT_FALSE(xyr);
  EXPECT_TRUE(position);
  EXPECT_EQ(registry->GetModeByName("Kestrel"), DewarperType::Kestrel);
  EXPECT_EQ(registry->GetModeByName("KESTREL"), DewarperType::NoDewarper);
  EXPECT_EQ(registry->GetModeByName(nullptr), DewarperType::NoDewarper);
  char text[4] = "abc";
  EXPECT_EQ(registry->GetLens(DewarperType::Kestrel, 0, text, sizeof(text)), 0);
  EXPECT_EQ(registry->GetLens(DewarperType::Sentry360, 0, text, 1), 0);
  EXPECT_EQ(registry->GetLens(DewarperType::Kestrel, 0, nullptr, 0), 0);
  EXPECT_EQ(registry->GetLens(DewarperType::ImmerVision, -1, nullptr, 64), 0);
  EXPECT_STREQ(text, "abc");
}

TEST_F(HostSimulation, RegistryMatchesCameras) {
  IDewarpRegister* registry = getRegister();
  EXPECT_EQ(registry->GetModeByCamera("Kestrel Systems", "Mk2 Fisheye", "rtsp://10.1.1.1/live"), DewarperType::Kestrel);
  EXPECT_EQ(registry->GetModeByCamera("Vivotek", "IP8161", ""), DewarperType::NoDewarper);
  EXPECT_EQ(registry->GetModeByCamera("RTSP", "", "rtsp://10.1.1.1/h264"), DewarperType::Sentry360);
  EXPECT_EQ(registry->GetModeByCamera("RTSP", "", "rtsp://10.1.1.1/h264/"), DewarperType::NoDewarper);
  EXPECT_EQ(registry->GetModeByCamera("Samsung Techwin", "SNF-8010", ""), DewarperType::Samsung);
  EXPECT_EQ(registry->GetModeByCamera("samsung techwin", "SNF-8010", ""), DewarperType::NoDewarper);
  EXPECT_EQ(registry->GetModeByCamera("Inaxsys", "IN-D5MHE", ""), DewarperType::NoDewarper);
  EXPECT_EQ(registry->GetModeByCamera(nullptr, nullptr, nullptr), DewarperType::NoDewarper);
}

TEST_F(HostSimulation, EntryPointsCreateOnlyRegisteredKinds) {
  EXPECT_TRUE(dewarperLoaded(DewarperType::Kestrel));
  EXPECT_FALSE(dewarperLoaded(DewarperType::Oncam));
  EXPECT_FALSE(dewarperLoaded(DewarperType::NoDewarper));
  EXPECT_FALSE(dewarperLoaded(12345));
  const DewarpParams_t params = {0, 1, 0, 0, 0, 0};
  EXPECT_EQ(createDewarper(DewarperType::Oncam, params), nullptr);
  EXPECT_EQ(createDewarper(DewarperType::Axis, params), nullptr);
  EXPECT_EQ(createDewarper(-1, params), nullptr);
  deleteDewarper(nullptr);
}

TEST_F(HostSimulation, KestrelAnswersTheHostsQuestions) {
  IDewarper* dewarper = CreateKestrel(1);
  ASSERT_NE(dewarper, nullptr);
  EXPECT_EQ(dewarper->Mode(), DewarperType::Kestrel);
  EXPECT_TRUE(dewarper->Check());
  EXPECT_EQ(dewarper->SubMode(), 1);
  const DewarpParams_t& params = dewarper->Parameters();
  EXPECT_EQ(params.Position, 1);
  EXPECT_EQ(params.X, 968);
  EXPECT_EQ(params.R, 968);
  EXPECT_FALSE(dewarper->IsSubModeSupported(0));
  EXPECT_TRUE(dewarper->IsSubModeSupported(1));
  EXPECT_TRUE(dewarper->IsSubModeSupported(2));
  EXPECT_TRUE(dewarper->IsSubModeSupported(3));
  EXPECT_FALSE(dewarper->IsNormalPTZSupported(1));
  EXPECT_TRUE(dewarper->IsNormalPTZSupported(2));
  EXPECT_TRUE(dewarper->IsNormalPTZSupported(3));
  EXPECT_TRUE(dewarper->CanPan(1));
  EXPECT_TRUE(dewarper->CanTilt(1));
  EXPECT_TRUE(dewarper->CanZoom(1));
  EXPECT_FALSE(dewarper->GetNeedsRotation());
  EXPECT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 1.5f);
  char text[2] = "x";
  EXPECT_EQ(dewarper->GetLens(0, text, sizeof(text)), 0);
  EXPECT_EQ(dewarper->GetLens(0, nullptr, 0), 0);
  EXPECT_STREQ(text, "x");
  const Position home = PositionOf(dewarper);
  EXPECT_EQ(home.pan, 0.0f);
  EXPECT_EQ(home.tilt, 0.0f);
  EXPECT_EQ(home.zoom, 1.0f);
  deleteDewarper(dewarper);
}

TEST_F(HostSimulation, KestrelSinglePtzViewFollowsTheSteps) {
  IDewarper* dewarper = CreateKestrel(1);
  ASSERT_NE(dewarper, nullptr);
  FeedFisheye(dewarper);

  // At most half the input in each direction: 1001 x 601 keeps its aspect at 968 wide,
  // 601 * 968 / 1001 = 581 high, rounded up to an even 582.
  Frame first = TakeFrame(dewarper, 1001, 601);
  ASSERT_TRUE(first.ok);
  EXPECT_EQ(first.width, 968);
  EXPECT_EQ(first.height, 582);
  first = TakeFrame(dewarper, 640, 480);
  ASSERT_TRUE(first.ok);
  EXPECT_EQ(first.width, 640);
  EXPECT_EQ(first.height, 480);
  EXPECT_GT(PictureShare(first), 0.5);

  // A ceiling camera's pan runs round the circle in fifths of a degree per step.
  dewarper->Pan(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).pan, 0.2f);
  dewarper->Pan(-1, 4);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).pan, 359.2f);
  dewarper->Pan(0, 9);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).pan, 359.2f);

  // A positive tilt request lowers the tilt; the opposite request brings it back.
  const float tilt = PositionOf(dewarper).tilt;
  dewarper->Tilt(1, 0);
  const float lowered = PositionOf(dewarper).tilt;
  EXPECT_LT(lowered, tilt);
  dewarper->Tilt(-1, 0);
  EXPECT_NEAR(PositionOf(dewarper).tilt, tilt, 1e-3);

  dewarper->Zoom(1, 0);
  EXPECT_NEAR(PositionOf(dewarper).zoom, 1.045f, 1e-5);
  dewarper->Zoom(1, 1000);
  EXPECT_EQ(PositionOf(dewarper).zoom, 10.0f);
  dewarper->Zoom(-1, 1000);
  EXPECT_EQ(PositionOf(dewarper).zoom, 1.0f);

  // Position limits: the pan wraps, the zoom stays within 1 to 10.
  dewarper->SetPosition(370.0f, 0.0f, 50.0f);
  Position p = PositionOf(dewarper);
  EXPECT_FLOAT_EQ(p.pan, 10.0f);
  EXPECT_EQ(p.zoom, 10.0f);
  dewarper->SetPosition(-30.0f, 0.0f, 0.25f);
  p = PositionOf(dewarper);
  EXPECT_FLOAT_EQ(p.pan, 330.0f);
  EXPECT_EQ(p.zoom, 1.0f);
  dewarper->Tilt(-1, 100000);
  dewarper->Tilt(1, 100000);
  p = PositionOf(dewarper);
  EXPECT_TRUE(std::isfinite(p.tilt));
  EXPECT_GE(p.tilt, -180.0f);
  EXPECT_LE(p.tilt, 180.0f);

  // The view moves with the position.
  dewarper->SetPosition(0.0f, -30.0f, 1.0f);
  const Frame there = TakeFrame(dewarper, 640, 480);
  dewarper->SetPosition(180.0f, -30.0f, 1.0f);
  const Frame back = TakeFrame(dewarper, 640, 480);
  ASSERT_TRUE(there.ok);
  ASSERT_TRUE(back.ok);
  EXPECT_NE(there.luma, back.luma);
  EXPECT_GT(PictureShare(there), 0.5);
  deleteDewarper(dewarper);
}

TEST_F(HostSimulation, KestrelPanoramicSubModes) {
  IDewarper* dewarper = CreateKestrel(1);
  ASSERT_NE(dewarper, nullptr);
  FeedFisheye(dewarper);
  ASSERT_TRUE(TakeFrame(dewarper, 640, 480).ok);
  dewarper->SetPosition(45.0f, -20.0f, 3.0f);

  dewarper->SetSubMode(2);
  EXPECT_EQ(dewarper->SubMode(), 2);
  Position p = PositionOf(dewarper);
  EXPECT_EQ(p.pan, 0.0f);
  EXPECT_EQ(p.tilt, 0.0f);
  EXPECT_EQ(p.zoom, 1.0f);
  EXPECT_FALSE(dewarper->CanPan(2));
  EXPECT_FLOAT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 64.0f / 9.0f);
  // Not limited by the input: wider than half the fisheye.
  const Frame panorama = TakeFrame(dewarper, 1001, 201);
  ASSERT_TRUE(panorama.ok);
  EXPECT_EQ(panorama.width, 1008);
  EXPECT_EQ(panorama.height, 202);
  EXPECT_GT(PictureShare(panorama), 0.5);

  dewarper->SetSubMode(3);
  EXPECT_EQ(dewarper->SubMode(), 3);
  EXPECT_FLOAT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 16.0f / 9.0f);
  const Frame dual = TakeFrame(dewarper, 640, 360);
  ASSERT_TRUE(dual.ok);
  EXPECT_EQ(dual.width, 640);
  EXPECT_EQ(dual.height, 360);
  EXPECT_GT(PictureShare(dual), 0.5);

  // A second frame reuses the buffers and gives the same picture for the same input.
  const Frame again = TakeFrame(dewarper, 640, 360);
  ASSERT_TRUE(again.ok);
  EXPECT_EQ(again.luma, dual.luma);

  dewarper->SetSubMode(0);  // counts as 1
  EXPECT_EQ(dewarper->SubMode(), 1);
  const Frame single = TakeFrame(dewarper, 640, 480);
  ASSERT_TRUE(single.ok);
  EXPECT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 1.5f);
  deleteDewarper(dewarper);
}

TEST_F(HostSimulation, KestrelOnAWallIsClampedNotWrapped) {
  IDewarper* dewarper = CreateKestrel(0);
  ASSERT_NE(dewarper, nullptr);
  FeedFisheye(dewarper);
  ASSERT_TRUE(TakeFrame(dewarper, 480, 270).ok);
  dewarper->SetPosition(120.0f, -100.0f, 2.0f);
  const Position p = PositionOf(dewarper);
  EXPECT_LE(p.pan, 90.0f);
  EXPECT_GE(p.pan, 0.0f);
  EXPECT_GT(p.tilt, -100.0f);
  EXPECT_LE(p.tilt, 0.0f);
  EXPECT_EQ(p.zoom, 2.0f);
  dewarper->SetSubMode(2);
  EXPECT_FLOAT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 16.0f / 9.0f);
  dewarper->SetSubMode(3);
  EXPECT_FLOAT_EQ(dewarper->AdjustAspectRatio(1.5f, 2.0f), 4.0f / 9.0f);
  deleteDewarper(dewarper);
}

TEST_F(HostSimulation, KestrelSurvivesHostMistakes) {
  IDewarper* dewarper = CreateKestrel(2);
  ASSERT_NE(dewarper, nullptr);
  int width = 640, height = 480;
  // No input yet: nothing to dewarp.
  EXPECT_FALSE(dewarper->GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper->GetImageInputBuffer(0, 1936, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper->GetImageInputBuffer(1936, -1, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper->GetImageInputBuffer(65536, 65536, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper->GetImageOutputBuffer(nullptr, nullptr, nullptr, nullptr, nullptr));
  width = -640;
  EXPECT_FALSE(dewarper->GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  dewarper->SetSubMode(-4);
  dewarper->SetSubMode(77);
  dewarper->Pan(1, 2147483647);
  dewarper->Tilt(-1, -2147483647 - 1);
  dewarper->Zoom(1, 2147483647);
  dewarper->SetPosition(NAN, INFINITY, -INFINITY);
  const Position p = PositionOf(dewarper);
  EXPECT_TRUE(std::isfinite(p.pan));
  EXPECT_TRUE(std::isfinite(p.zoom));
  dewarper->Clear();
  dewarper->SetSubMode(1);
  EXPECT_TRUE(dewarper->GetImageInputBuffer(1936, 1936, nullptr, nullptr, nullptr));
  width = 640;
  height = 480;
  EXPECT_TRUE(dewarper->GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  deleteDewarper(dewarper);
}
