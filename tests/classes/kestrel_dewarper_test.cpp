#include <gtest/gtest.h>

#include <libdewarp_vemo/dewarp.h>

#include <cstring>
#include <vector>

#include "KestrelDewarper.h"
#include "synthetic_fisheye.h"

namespace {

// Side of the square synthetic fisheye most tests feed; the model takes the input size.
constexpr int kSide = 480;

class KestrelProbe : public KestrelDewarper {
public:
  explicit KestrelProbe(int position) : KestrelDewarper(Params(position)) {}
  static DewarpParams_t Params(int position) {
    DewarpParams_t params = {0, position, 0, 0, 0, 0};
    return params;
  }
  using KestrelDewarper::m_channel;
  using KestrelDewarper::m_input;
  using KestrelDewarper::m_inputBuff;
  using KestrelDewarper::m_model;
  using KestrelDewarper::m_needsInit;
  using KestrelDewarper::m_output;
  using KestrelDewarper::m_outputBuff;
  using KestrelDewarper::m_Pan;
  using KestrelDewarper::m_subMode;
  using KestrelDewarper::m_Tilt;
  using KestrelDewarper::m_Zoom;
};

// A Kestrel dewarper as the registry hands it out: told its type.
struct Kestrel {
  explicit Kestrel(int position) : dewarper(position) { dewarper.SetDewarperType(DewarperType::Kestrel); }
  KestrelProbe dewarper;
};

// Gives the dewarper an input frame of the synthetic fisheye.
void FeedInput(KestrelProbe& dewarper, int width, int height) {
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  ASSERT_TRUE(dewarper.GetImageInputBuffer(width, height, &buffer, &size, &format));
  ASSERT_EQ(format, 5);
  ASSERT_EQ(size, static_cast<unsigned int>(width) * 3u * static_cast<unsigned int>(height) / 2u);
  FillSyntheticFisheye(buffer, width, height);
}

struct Output {
  bool ok = false;
  int width = 0;
  int height = 0;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
};

Output RequestOutput(KestrelProbe& dewarper, int width, int height) {
  Output out;
  out.width = width;
  out.height = height;
  out.ok = dewarper.GetImageOutputBuffer(&out.width, &out.height, &out.buffer, &out.size, &out.format);
  return out;
}

DEWARP_INTERNAL_CAMERA_MOUNT MountOfPosition(int position) {
  return position == 1 ? CEILING_MOUNT : position == 2 ? FLOOR_MOUNT : WALL_MOUNT;
}

// An engine channel of its own, opened as the adapter is expected to open one.
struct ReferenceChannel {
  ReferenceChannel(int position, int inWidth, int inHeight, DEWARP_VIEW view, DEWARP_PROJECTION projection) {
    DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
    model.ResolutionH = static_cast<unsigned int>(inWidth);
    model.ResolutionV = static_cast<unsigned int>(inHeight);
    DEWARP_CHANNEL_SETTINGS settings;
    settings.View = view;
    settings.Projection = projection;
    settings.AspectRatio = FREE_ASPECT_RATIO;
    settings.Interpolation = NEAREST_NEIGHBOUR_INTERPOLATION;
    channel = dewarp_internal_open(&model, MountOfPosition(position), &settings);
  }
  ~ReferenceChannel() { dewarp_close(channel); }
  DEWARP_PTZ_POSITION SetPtz(float pan, float tilt, float zoom) {
    DEWARP_PTZ_POSITION position = {pan, tilt, 0.0f, zoom};
    EXPECT_EQ(dewarp_set_ptz(channel, &position), 0);
    return position;
  }
  std::vector<unsigned char> Dewarp(const std::vector<unsigned char>& input, int inWidth, int inHeight,
                                    int outWidth, int outHeight) {
    std::vector<unsigned char> output(static_cast<std::size_t>(outWidth) * 3 * outHeight / 2, 0xee);
    DEWARP_IMAGE in = {{YUV420_PLANAR_IMAGE, static_cast<unsigned int>(inWidth),
                        static_cast<unsigned int>(inHeight), static_cast<unsigned int>(inWidth)},
                       const_cast<unsigned char*>(input.data())};
    DEWARP_IMAGE out = {{YUV420_PLANAR_IMAGE, static_cast<unsigned int>(outWidth),
                         static_cast<unsigned int>(outHeight), static_cast<unsigned int>(outWidth)},
                        output.data()};
    EXPECT_EQ(dewarp_image(channel, &in, &out), 0);
    return output;
  }
  DEWARP_CHANNEL channel;
};

std::vector<unsigned char> SyntheticFrame(int width, int height) {
  std::vector<unsigned char> frame(static_cast<std::size_t>(width) * 3 * height / 2);
  FillSyntheticFisheye(frame.data(), width, height);
  return frame;
}

bool SameBytes(const Output& out, const std::vector<unsigned char>& expected) {
  return out.buffer != nullptr && out.size == expected.size() &&
         std::memcmp(out.buffer, expected.data(), expected.size()) == 0;
}

// How many luma samples of a frame differ from the default colour of areas outside the picture.
int LumaSamplesNotDefault(const Output& out) {
  int count = 0;
  for (int i = 0; i < out.width * out.height; ++i) count += out.buffer[i] != 16;
  return count;
}

}  // namespace

TEST(KestrelDewarper, ConstructionAndFixedAnswers) {
  KestrelProbe dewarper(1);
  EXPECT_EQ(dewarper.Mode(), DewarperType::Kestrel);
  EXPECT_EQ(dewarper.m_channel, nullptr);
  EXPECT_EQ(dewarper.m_Zoom, 1.0f);
  EXPECT_EQ(dewarper.m_Pan, 0.0f);
  EXPECT_EQ(dewarper.m_Tilt, 0.0f);
  EXPECT_EQ(dewarper.m_model.ResolutionH, 0u);
  EXPECT_EQ(dewarper.m_model.FovD, 0.0f);
  EXPECT_EQ(dewarper.m_inputBuff.data, nullptr);
  EXPECT_EQ(dewarper.m_outputBuff.width, 0);
  EXPECT_TRUE(dewarper.Check());
  EXPECT_FALSE(dewarper.IsSubModeSupported(0));
  EXPECT_TRUE(dewarper.IsSubModeSupported(1));
  EXPECT_TRUE(dewarper.IsSubModeSupported(2));
  EXPECT_TRUE(dewarper.IsSubModeSupported(3));
  EXPECT_FALSE(dewarper.IsSubModeSupported(4));
  EXPECT_FALSE(dewarper.IsNormalPTZSupported(1));
  EXPECT_TRUE(dewarper.IsNormalPTZSupported(2));
  EXPECT_TRUE(dewarper.IsNormalPTZSupported(3));
  EXPECT_FALSE(dewarper.IsNormalPTZSupported(4));
  EXPECT_EQ(dewarper.GetZoomScaleModifier(), 0.045f);
  EXPECT_EQ(dewarper.LimitZoomRange(0.5f), 1.0f);
  EXPECT_EQ(dewarper.LimitZoomRange(10.5f), 10.0f);
  EXPECT_EQ(dewarper.LimitZoomRange(4.25f), 4.25f);
  EXPECT_FALSE(dewarper.GetNeedsRotation());
}

TEST(KestrelDewarper, ClearGoesHome) {
  KestrelProbe dewarper(1);
  dewarper.SetPosition(100.0f, 30.0f, 5.0f);
  dewarper.Clear();
  float pan = -1, tilt = -1, zoom = -1;
  dewarper.GetPosition(pan, tilt, zoom);
  EXPECT_EQ(pan, 0.0f);
  EXPECT_EQ(tilt, 0.0f);
  EXPECT_EQ(zoom, 1.0f);
}

TEST(KestrelDewarper, FramesArePlanar420) {
  KestrelProbe dewarper(1);
  unsigned int size = 0;
  int format = 0;
  dewarper.GetFormatAndSize(1936, 1936, &size, &format);
  EXPECT_EQ(format, 5);
  EXPECT_EQ(size, 5622144u);  // 1936 * 1936 luma and half as much chroma
  dewarper.GetFormatAndSize(3, 3, &size, &format);
  EXPECT_EQ(size, 13u);  // 27 / 2 in integers
  dewarper.GetOutputFormatAndSize(960, 540, &size, &format);
  EXPECT_EQ(size, 777600u);
}

TEST(KestrelDewarper, AspectRatioBySubModeAndMounting) {
  for (int position : {0, 1, 2}) {
    KestrelProbe dewarper(position);
    EXPECT_EQ(dewarper.AdjustAspectRatio(1.5f, 2.0f), 1.5f) << position;
    const bool mounted = position != 0;
    dewarper.SetSubMode(2);
    EXPECT_FLOAT_EQ(dewarper.AdjustAspectRatio(1.5f, 2.0f), mounted ? 7.111111f : 1.7777778f) << position;
    dewarper.SetSubMode(3);
    EXPECT_FLOAT_EQ(dewarper.AdjustAspectRatio(1.5f, 2.0f), mounted ? 1.7777778f : 0.44444445f) << position;
  }
}

TEST(KestrelDewarper, CameraModelIsTheBuiltInOne) {
  KestrelProbe dewarper(1);
  dewarper.SetDewarperType(DewarperType::Kestrel);
  EXPECT_EQ(dewarper.m_model.Type, CIRCULAR_FISHEYE_CAMERA);
  EXPECT_EQ(dewarper.m_model.FovD, 183.0f);
  EXPECT_EQ(dewarper.m_model.FovH, 183.0f);
  EXPECT_EQ(dewarper.m_model.FovV, 183.0f);
  EXPECT_EQ(dewarper.m_model.ResolutionH, 1936u);
  EXPECT_EQ(dewarper.m_model.ResolutionV, 1936u);
}

TEST(KestrelDewarper, AxisLensHasItsOwnFieldsOfView) {
  KestrelProbe dewarper(1);
  dewarper.SetDewarperType(DewarperType::Axis);
  EXPECT_EQ(dewarper.m_model.Type, CIRCULAR_FISHEYE_CAMERA);
  EXPECT_EQ(dewarper.m_model.FovH, 225.0f);
  EXPECT_EQ(dewarper.m_model.FovV, 174.0f);
  EXPECT_EQ(dewarper.m_model.FovD, 284.0f);
  EXPECT_EQ(dewarper.m_model.ResolutionH, 1936u);
  EXPECT_EQ(dewarper.m_model.ResolutionV, 1936u);
}

TEST(KestrelDewarper, SubModeZeroCountsAsOne) {
  Kestrel k(1);
  k.dewarper.m_needsInit = false;
  k.dewarper.SetPosition(10.0f, 20.0f, 3.0f);
  k.dewarper.SetSubMode(0);
  EXPECT_EQ(k.dewarper.SubMode(), 1);
  EXPECT_FALSE(k.dewarper.m_needsInit);
  EXPECT_EQ(k.dewarper.m_Pan, 10.0f);
  EXPECT_EQ(k.dewarper.m_Zoom, 3.0f);
}

TEST(KestrelDewarper, SinglePtzOutputIsAtMostHalfTheInput) {
  Kestrel k(1);
  FeedInput(k.dewarper, 1920, 1080);
  const int requests[][4] = {{1920, 1080, 960, 540}, {800, 600, 720, 540}, {640, 480, 640, 480},
                             {4000, 100, 960, 24}, {100, 4000, 16, 540}};
  for (const auto& r : requests) {
    const Output out = RequestOutput(k.dewarper, r[0], r[1]);
    EXPECT_TRUE(out.ok) << r[0] << "x" << r[1];
    EXPECT_EQ(out.width, r[2]) << r[0] << "x" << r[1];
    EXPECT_EQ(out.height, r[3]) << r[0] << "x" << r[1];
    EXPECT_EQ(out.format, 5);
    EXPECT_EQ(out.size, static_cast<unsigned int>(r[2] * 3 * r[3] / 2));
  }
}

TEST(KestrelDewarper, PanoramicOutputIsNotLimitedByTheInput) {
  Kestrel k(1);
  k.dewarper.SetSubMode(2);
  FeedInput(k.dewarper, 480, 270);
  const Output out = RequestOutput(k.dewarper, 480, 270);
  EXPECT_TRUE(out.ok);
  EXPECT_EQ(out.width, 480);
  EXPECT_EQ(out.height, 270);
  const Output larger = RequestOutput(k.dewarper, 1001, 541);
  EXPECT_TRUE(larger.ok);
  EXPECT_EQ(larger.width, 1008);
  EXPECT_EQ(larger.height, 542);
}

TEST(KestrelDewarper, SinglePtzFrameIsTheEnginesRectilinearPtzView) {
  for (int position : {0, 1, 2}) {
    Kestrel k(position);
    FeedInput(k.dewarper, kSide, kSide);
    Output out = RequestOutput(k.dewarper, 200, 150);
    ASSERT_TRUE(out.ok) << position;
    k.dewarper.SetPosition(30.0f, 40.0f, 2.0f);
    out = RequestOutput(k.dewarper, 200, 150);
    ASSERT_TRUE(out.ok) << position;

    const std::vector<unsigned char> input = SyntheticFrame(kSide, kSide);
    ReferenceChannel reference(position, kSide, kSide, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION);
    reference.SetPtz(0.0f, 0.0f, 1.0f);
    reference.SetPtz(30.0f, 40.0f, 2.0f);
    EXPECT_TRUE(SameBytes(out, reference.Dewarp(input, kSide, kSide, 200, 150))) << position;
    EXPECT_GT(LumaSamplesNotDefault(out), 200 * 150 / 2) << position;  // the view sees the picture
  }
}

TEST(KestrelDewarper, SwitchingToPanoramaGoesHomeAndReopensAPanoramicChannel) {
  Kestrel k(1);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 640, 480).ok);
  ASSERT_NE(k.dewarper.m_channel, nullptr);
  k.dewarper.SetPosition(100.0f, 30.0f, 4.0f);

  k.dewarper.SetSubMode(2);
  EXPECT_EQ(k.dewarper.m_channel, nullptr);  // closed at once
  EXPECT_TRUE(k.dewarper.m_needsInit);
  EXPECT_EQ(k.dewarper.SubMode(), 2);
  float pan = -1, tilt = -1, zoom = -1;
  k.dewarper.GetPosition(pan, tilt, zoom);
  EXPECT_EQ(pan, 0.0f);
  EXPECT_EQ(tilt, 0.0f);
  EXPECT_EQ(zoom, 1.0f);
  EXPECT_FALSE(k.dewarper.CanPan(2));

  const Output out = RequestOutput(k.dewarper, 640, 180);
  ASSERT_TRUE(out.ok);
  ASSERT_NE(k.dewarper.m_channel, nullptr);
  EXPECT_FALSE(k.dewarper.m_needsInit);
  EXPECT_EQ(out.width, 640);
  EXPECT_EQ(out.height, 180);
  ReferenceChannel reference(1, kSide, kSide, SINGLE_PANORAMIC_VIEW, CYLINDRICAL_PROJECTION);
  EXPECT_TRUE(SameBytes(out, reference.Dewarp(SyntheticFrame(kSide, kSide), kSide, kSide, 640, 180)));
  ReferenceChannel other(1, kSide, kSide, DUAL_PANORAMIC_VIEW, CYLINDRICAL_PROJECTION);
  EXPECT_FALSE(SameBytes(out, other.Dewarp(SyntheticFrame(kSide, kSide), kSide, kSide, 640, 180)));
}

TEST(KestrelDewarper, SubModeThreeIsTheDualPanorama) {
  Kestrel k(2);
  k.dewarper.SetSubMode(3);
  FeedInput(k.dewarper, kSide, kSide);
  const Output out = RequestOutput(k.dewarper, 640, 360);
  ASSERT_TRUE(out.ok);
  ReferenceChannel reference(2, kSide, kSide, DUAL_PANORAMIC_VIEW, CYLINDRICAL_PROJECTION);
  EXPECT_TRUE(SameBytes(out, reference.Dewarp(SyntheticFrame(kSide, kSide), kSide, kSide, 640, 360)));
  EXPECT_GT(LumaSamplesNotDefault(out), 640 * 360 / 2);
}

TEST(KestrelDewarper, MountFollowsThePositionParameter) {
  const int positions[][2] = {{1, CEILING_MOUNT}, {2, FLOOR_MOUNT}, {0, WALL_MOUNT}, {3, WALL_MOUNT}, {-1, WALL_MOUNT}};
  for (const auto& p : positions) {
    Kestrel k(p[0]);
    FeedInput(k.dewarper, kSide, kSide);
    ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
    EXPECT_EQ(dewarp_internal_get_mount(k.dewarper.m_channel), p[1]) << p[0];
  }
}

TEST(KestrelDewarper, ChannelIsKeptForTheSameInputAndReopenedForANewOne) {
  Kestrel k(1);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
  const DEWARP_CHANNEL first = k.dewarper.m_channel;
  ASSERT_NE(first, nullptr);
  ASSERT_TRUE(RequestOutput(k.dewarper, 160, 120).ok);  // new output size: initialised again
  EXPECT_EQ(k.dewarper.m_channel, first);

  FeedInput(k.dewarper, 320, 240);
  ASSERT_TRUE(RequestOutput(k.dewarper, 160, 120).ok);
  DEWARP_INTERNAL_CAMERA_MODEL model;
  ASSERT_EQ(dewarp_internal_get_model(k.dewarper.m_channel, &model), 0);
  EXPECT_EQ(model.ResolutionH, 320u);
  EXPECT_EQ(model.ResolutionV, 240u);
  EXPECT_EQ(k.dewarper.m_model.ResolutionH, 320u);
  EXPECT_EQ(k.dewarper.m_model.ResolutionV, 240u);
}

// The engine may correct a position; on a ceiling mounting its pan is not taken back.
TEST(KestrelDewarper, CeilingPanCorrectedByTheEngineIsNotTakenBack) {
  ReferenceChannel reference(1, kSide, kSide, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION);
  reference.SetPtz(0.0f, 0.0f, 1.0f);
  const DEWARP_PTZ_POSITION corrected = reference.SetPtz(270.0f, 45.0f, 1.0f);
  ASSERT_NE(corrected.Pan, 270.0f);  // the engine does correct this pan

  Kestrel k(1);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
  k.dewarper.SetPosition(270.0f, 45.0f, 1.0f);
  EXPECT_EQ(k.dewarper.m_Pan, 270.0f);
  EXPECT_EQ(k.dewarper.m_Tilt, corrected.Tilt);
  EXPECT_EQ(k.dewarper.m_Zoom, corrected.Zoom);
  DEWARP_PTZ_POSITION engine;
  ASSERT_EQ(dewarp_get_ptz(k.dewarper.m_channel, &engine), 0);
  EXPECT_EQ(engine.Pan, corrected.Pan);  // pushed at once
}

TEST(KestrelDewarper, WallPanCorrectedByTheEngineIsTakenBack) {
  ReferenceChannel reference(0, kSide, kSide, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION);
  reference.SetPtz(0.0f, 0.0f, 1.0f);
  const DEWARP_PTZ_POSITION corrected = reference.SetPtz(90.0f, 45.0f, 1.0f);
  ASSERT_NE(corrected.Pan, 90.0f);  // the engine does correct this pan

  Kestrel k(0);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
  k.dewarper.SetPosition(90.0f, 45.0f, 1.0f);
  EXPECT_EQ(k.dewarper.m_Pan, corrected.Pan);
  EXPECT_EQ(k.dewarper.m_Tilt, corrected.Tilt);
  EXPECT_EQ(k.dewarper.m_Zoom, corrected.Zoom);
}

TEST(KestrelDewarper, TiltRangeIsTheEnginesOnceAChannelExists) {
  Kestrel k(1);
  float min = 0, max = 0, span = 0;
  bool wraps = true;
  k.dewarper.GetTiltRange(min, max, span, wraps);
  EXPECT_EQ(min, 0.0f);
  EXPECT_EQ(max, 90.0f);
  EXPECT_EQ(span, 90.0f);
  EXPECT_FALSE(wraps);
  k.dewarper.SetPosition(0.0f, 500.0f, 1.0f);  // no channel: the tilt is not limited
  EXPECT_EQ(k.dewarper.m_Tilt, 500.0f);

  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
  DEWARP_PTZ_RANGE range;
  ASSERT_EQ(dewarp_get_ptz_range(k.dewarper.m_channel, &range), 0);
  wraps = true;
  k.dewarper.GetTiltRange(min, max, span, wraps);
  EXPECT_EQ(min, range.TiltLo);
  EXPECT_EQ(max, range.TiltHi);
  EXPECT_EQ(span, 90.0f);
  EXPECT_FALSE(wraps);
  EXPECT_EQ(k.dewarper.LimitTiltRange(range.TiltHi + 50.0f), range.TiltHi);
  EXPECT_EQ(k.dewarper.LimitTiltRange(range.TiltLo - 50.0f), range.TiltLo);
  // Pan keeps the nominal range of the mounting.
  float panMin = 0, panMax = 0;
  k.dewarper.GetPanRange(panMin, panMax, span, wraps);
  EXPECT_EQ(panMin, 0.0f);
  EXPECT_EQ(panMax, 360.0f);
}

TEST(KestrelDewarper, ZoomStepsWithinOneToTen) {
  Kestrel k(2);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 320, 240).ok);
  k.dewarper.Zoom(1, 0);
  EXPECT_FLOAT_EQ(k.dewarper.m_Zoom, 1.045f);
  k.dewarper.Zoom(-1, 5);
  EXPECT_EQ(k.dewarper.m_Zoom, 1.0f);
  k.dewarper.Zoom(1, 1000);
  EXPECT_EQ(k.dewarper.m_Zoom, 10.0f);
  DEWARP_PTZ_POSITION engine;
  ASSERT_EQ(dewarp_get_ptz(k.dewarper.m_channel, &engine), 0);
  EXPECT_EQ(engine.Zoom, 10.0f);
}

TEST(KestrelDewarper, PanoramicSubModesPushNoPosition) {
  Kestrel k(1);
  k.dewarper.SetSubMode(2);
  FeedInput(k.dewarper, kSide, kSide);
  ASSERT_TRUE(RequestOutput(k.dewarper, 640, 360).ok);
  DEWARP_PTZ_POSITION before;
  ASSERT_EQ(dewarp_get_ptz(k.dewarper.m_channel, &before), 0);
  k.dewarper.SetPosition(40.0f, 0.0f, 3.0f);
  DEWARP_PTZ_POSITION after;
  ASSERT_EQ(dewarp_get_ptz(k.dewarper.m_channel, &after), 0);
  EXPECT_EQ(after.Pan, before.Pan);
  EXPECT_EQ(after.Zoom, before.Zoom);
  EXPECT_EQ(k.dewarper.m_Pan, 40.0f);
  EXPECT_EQ(k.dewarper.m_Zoom, 3.0f);
}

TEST(KestrelDewarper, NoFrameWithoutAnInput) {
  Kestrel k(1);
  k.dewarper.SetSubMode(2);
  const Output out = RequestOutput(k.dewarper, 640, 360);
  EXPECT_FALSE(out.ok);
  Kestrel single(1);
  EXPECT_FALSE(RequestOutput(single.dewarper, 640, 360).ok);
}

TEST(KestrelDewarper, HostMistakesAreRefused) {
  Kestrel k(1);
  FeedInput(k.dewarper, kSide, kSide);
  EXPECT_FALSE(k.dewarper.GetImageOutputBuffer(nullptr, nullptr, nullptr, nullptr, nullptr));
  int width = 0, height = 480;
  EXPECT_FALSE(k.dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  width = 640;
  height = -2;
  EXPECT_FALSE(k.dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  EXPECT_EQ(k.dewarper.m_output, nullptr);
  EXPECT_FALSE(k.dewarper.GetImageInputBuffer(0, 0, nullptr, nullptr, nullptr));
  EXPECT_FALSE(k.dewarper.GetImageInputBuffer(1 << 20, 1 << 20, nullptr, nullptr, nullptr));
  width = 640;
  height = 480;
  EXPECT_TRUE(k.dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
}
