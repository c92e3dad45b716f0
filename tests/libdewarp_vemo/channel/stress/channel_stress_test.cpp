// The supported concurrent use of one channel: one thread dewarps frames while several others
// steer and query it (PTZ, layout, projection, aspect ratio, interpolation, mount, clicked points,
// native resolution). Bounded by an iteration count and a time cap; run under ThreadSanitizer it
// shows that this pattern has no data race.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include <libdewarp_vemo/dewarp.h>

namespace {

const unsigned int kSide = 160;  // a small 183-degree fisheye picture
const int kFrames = 60;          // frames the decoding thread dewarps
const int kControlIterations = 150;
const std::chrono::seconds kTimeCap(60);

struct Shared {
  DEWARP_CHANNEL channel = nullptr;
  std::atomic<bool> stop{false};
  std::atomic<long> calls{0};
  std::atomic<long> failures{0};
  std::chrono::steady_clock::time_point deadline;
  bool TimeUp() const { return stop.load() || std::chrono::steady_clock::now() > deadline; }
};

void Count(Shared& s, int result) {
  s.calls.fetch_add(1);
  if (result != 0) s.failures.fetch_add(1);
}

void Decoder(Shared& s, int& frames) {
  std::vector<std::uint8_t> in(kSide * kSide * 3 / 2, 180);
  const unsigned int sizes[][2] = {{64, 48}, {32, 24}, {50, 30}};
  for (frames = 0; frames < kFrames && !s.TimeUp(); ++frames) {
    const unsigned int w = sizes[frames % 3][0], h = sizes[frames % 3][1];
    std::vector<std::uint8_t> out(w * h * 3 / 2, 0);
    DEWARP_IMAGE warped = {{YUV420_PLANAR_IMAGE, kSide, kSide, kSide}, in.data()};
    DEWARP_IMAGE dewarped = {{YUV420_PLANAR_IMAGE, w, h, w}, out.data()};
    Count(s, dewarp_image(s.channel, &warped, &dewarped));
  }
}

void Steering(Shared& s, int seed) {
  for (int i = 0; i < kControlIterations && !s.TimeUp(); ++i) {
    const int k = i + seed;
    DEWARP_PTZ_POSITION p = {static_cast<float>(k * 13 % 360 - 180), static_cast<float>(k * 7 % 90 - 60), 0.0f,
                             1.0f + static_cast<float>(k % 4)};
    Count(s, dewarp_set_ptz(s.channel, (k % 9 == 0) ? nullptr : &p));
    Count(s, dewarp_get_ptz(s.channel, &p));
    DEWARP_PTZ_RANGE range;
    Count(s, dewarp_get_ptz_range(s.channel, &range));
    Count(s, dewarp_calc_ptz_position(s.channel, k % kSide, (k * 3) % kSide, 3.0f, &p));
    DEWARP_RESOLUTION r;
    Count(s, dewarp_get_native_resolution(s.channel, &r));
  }
}

void Layout(Shared& s, int seed) {
  for (int i = 0; i < kControlIterations / 3 && !s.TimeUp(); ++i) {
    const int k = i + seed;
    Count(s, dewarp_set_view(s.channel, static_cast<DEWARP_VIEW>(k % 6)));
    Count(s, dewarp_set_projection(s.channel, static_cast<DEWARP_VIEW>((k / 2) % 6),
                                   static_cast<DEWARP_PROJECTION>(k % 9)));
    Count(s, dewarp_set_aspect_ratio(s.channel, static_cast<DEWARP_ASPECT_RATIO>(k % 3)));
    Count(s, dewarp_set_interpolation(s.channel, static_cast<DEWARP_INTERPOLATION>(k % 2)));
    if (k % 5 == 0) Count(s, dewarp_internal_set_mount(s.channel, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(k % 4)));
    const DEWARP_INTERNAL_CAMERA_MOUNT mount = dewarp_internal_get_mount(s.channel);
    s.calls.fetch_add(1);
    if (mount < CEILING_MOUNT || mount > INVERTED_WALL_MOUNT) s.failures.fetch_add(1);
    DEWARP_INTERNAL_CAMERA_MODEL model;
    Count(s, dewarp_internal_get_model(s.channel, &model));
  }
}

TEST(ChannelStress, OneDecoderAndSeveralControllers) {
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  model.ResolutionH = kSide;
  model.ResolutionV = kSide;
  Shared s;
  s.channel = dewarp_internal_open(&model, CEILING_MOUNT, nullptr);
  ASSERT_NE(s.channel, nullptr);
  s.deadline = std::chrono::steady_clock::now() + kTimeCap;
  int frames = 0;
  std::vector<std::thread> threads;
  threads.emplace_back(Decoder, std::ref(s), std::ref(frames));
  threads.emplace_back(Steering, std::ref(s), 0);
  threads.emplace_back(Steering, std::ref(s), 17);
  threads.emplace_back(Layout, std::ref(s), 3);
  for (std::thread& t : threads) t.join();
  dewarp_close(s.channel);
  std::printf("channel stress: %d frames, %ld calls in all, %ld failed\n", frames, s.calls.load(),
              s.failures.load());
  EXPECT_GT(frames, 0);
  // Every call of this pattern is valid: none may fail.
  EXPECT_EQ(s.failures.load(), 0);
}

}  // namespace
