// The engine end to end through its C interface, on the built-in camera's 1936 x 1936 planar 4:2:0
// frame and a 1920 x 1080 output, one thread. Times are process CPU time (the machine is shared),
// printed as one line of key=value pairs for bench/run-peers.
//
//   bin/engine_bench reaim [count]     PTZ re-aim: dewarp_set_ptz to a new position, then
//                                      dewarp_image until the frame is written (median, min, max)
//   bin/engine_bench first <kind>      first frame of a never-seen view in this process
//                                      (kind 0-5 as DEWARP_VIEW), and the memory the channel added
//                                      (kept_mb of it: released tables the process keeps for reuse)
//   bin/engine_bench channels <count>  resident and address-space growth per single PTZ channel
//                                      over `count` channels, each after its first frame
//   bin/engine_bench frame <mode>      steady frame time through dewarp_image (0 nearest, 1 bilinear)
//   bin/engine_bench pages             what one 1920 x 1080 pair of float tables (16.6 MB) costs to
//                                      write in fresh memory (mapped and populated, then written)
//                                      and again in the same, now warm, memory: the floor under
//                                      every first frame
#include <libdewarp_vemo/dewarp.h>

#include "../libdewarp_vemo/src/table_memory.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include <sys/mman.h>

namespace {

const unsigned kSrcSize = 1936;
const unsigned kDstWidth = 1920;
const unsigned kDstHeight = 1080;

double CpuMilliseconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return t.tv_sec * 1e3 + t.tv_nsec * 1e-6;
}

// Resident and virtual size of this process in bytes (from /proc/self/statm).
void Memory(double& resident, double& virtualSize) {
  resident = virtualSize = 0.0;
  FILE* f = std::fopen("/proc/self/statm", "r");
  if (!f) {
    return;
  }
  unsigned long pages = 0, rss = 0;
  if (std::fscanf(f, "%lu %lu", &pages, &rss) == 2) {
    const double page = 4096.0;
    virtualSize = pages * page;
    resident = rss * page;
  }
  std::fclose(f);
}

struct Frames {
  std::vector<std::uint8_t> src;
  std::vector<std::uint8_t> dst;
  DEWARP_IMAGE in;
  DEWARP_IMAGE out;

  Frames() : src(kSrcSize * kSrcSize * 3 / 2), dst(kDstWidth * kDstHeight * 3 / 2) {
    std::uint32_t state = 1u;
    for (std::uint8_t& b : src) {
      state = state * 1664525u + 1013904223u;
      b = static_cast<std::uint8_t>(state >> 24);
    }
    in.Info.Format = YUV420_PLANAR_IMAGE;
    in.Info.Width = in.Info.Stride = kSrcSize;
    in.Info.Height = kSrcSize;
    in.Data = src.data();
    out.Info.Format = YUV420_PLANAR_IMAGE;
    out.Info.Width = out.Info.Stride = kDstWidth;
    out.Info.Height = kDstHeight;
    out.Data = dst.data();
  }
};

DEWARP_CHANNEL Open(DEWARP_VIEW view, DEWARP_INTERPOLATION interpolation) {
  DEWARP_CHANNEL_SETTINGS settings;
  settings.View = view;
  // Each kind with a projection it keeps on a ceiling camera.
  const bool ptz = view == SINGLE_PTZ_VIEW || view == DUAL_PTZ_VIEW || view == QUAD_PTZ_VIEW;
  settings.Projection = ptz ? RECTILINEAR_PROJECTION : CYLINDRICAL_PROJECTION;
  settings.AspectRatio = ptz ? CROP_TO_ASPECT_RATIO : SCALE_TO_ASPECT_RATIO;
  settings.Interpolation = interpolation;
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  return dewarp_internal_open(&model, CEILING_MOUNT, &settings);
}

int Fail(const char* what) {
  std::printf("error=%s errno=%d\n", what, errno);
  return 1;
}

int Reaim(int count) {
  Frames frames;
  DEWARP_CHANNEL channel = Open(SINGLE_PTZ_VIEW, LINEAR_INTERPOLATION);
  if (!channel) {
    return Fail("open");
  }
  DEWARP_PTZ_POSITION position = {35.0f, 25.0f, 0.0f, 1.0f};
  if (dewarp_set_ptz(channel, &position) != 0 || dewarp_image(channel, &frames.in, &frames.out) != 0) {
    return Fail("first-frame");
  }
  std::vector<double> times;
  for (int i = 0; i < count; ++i) {
    // Alternate between two aims so that every call is a real change of position.
    DEWARP_PTZ_POSITION next = {i % 2 ? 35.0f : 45.0f, i % 2 ? 25.0f : 30.0f, 0.0f, 1.0f};
    const double start = CpuMilliseconds();
    if (dewarp_set_ptz(channel, &next) != 0 || dewarp_image(channel, &frames.in, &frames.out) != 0) {
      return Fail("reaim");
    }
    times.push_back(CpuMilliseconds() - start);
  }
  std::vector<double> sorted = times;
  std::sort(sorted.begin(), sorted.end());
  std::printf("reaim_median_ms=%.3f reaim_min_ms=%.3f reaim_max_ms=%.3f count=%d\n", sorted[sorted.size() / 2],
              sorted.front(), sorted.back(), count);
  dewarp_close(channel);
  return 0;
}

int First(int kind) {
  Frames frames;
  double rss0, vm0, rss1, vm1;
  Memory(rss0, vm0);
  const double start = CpuMilliseconds();
  DEWARP_CHANNEL channel = Open(static_cast<DEWARP_VIEW>(kind), LINEAR_INTERPOLATION);
  if (!channel) {
    return Fail("open");
  }
  if (dewarp_image(channel, &frames.in, &frames.out) != 0) {
    return Fail("first-frame");
  }
  const double elapsed = CpuMilliseconds() - start;
  Memory(rss1, vm1);
  std::printf("kind=%d first_frame_ms=%.3f rss_added_mb=%.1f vm_added_mb=%.1f kept_mb=%.1f\n", kind, elapsed,
              (rss1 - rss0) / 1048576.0, (vm1 - vm0) / 1048576.0,
              vemo::libdewarp::table_memory::SpareBytes() / 1048576.0);
  dewarp_close(channel);
  return 0;
}

int Channels(int count) {
  Frames frames;
  std::vector<DEWARP_CHANNEL> channels;
  double rss0, vm0;
  Memory(rss0, vm0);
  double firstRss = 0.0, firstVm = 0.0;
  for (int i = 0; i < count; ++i) {
    DEWARP_CHANNEL channel = Open(SINGLE_PTZ_VIEW, LINEAR_INTERPOLATION);
    if (!channel || dewarp_image(channel, &frames.in, &frames.out) != 0) {
      return Fail("channel");
    }
    channels.push_back(channel);
    if (i == 0) {
      Memory(firstRss, firstVm);
    }
  }
  double rss1, vm1;
  Memory(rss1, vm1);
  const double mb = 1048576.0;
  // The first channel may build shared, cached maps; the later ones show what each adds.
  const double laterRss = count > 1 ? (rss1 - firstRss) / (count - 1) : rss1 - rss0;
  const double laterVm = count > 1 ? (vm1 - firstVm) / (count - 1) : vm1 - vm0;
  std::printf("first_rss_mb=%.1f first_vm_mb=%.1f each_rss_mb=%.1f each_vm_mb=%.1f count=%d\n",
              (firstRss - rss0) / mb, (firstVm - vm0) / mb, laterRss / mb, laterVm / mb, count);
  for (DEWARP_CHANNEL channel : channels) {
    dewarp_close(channel);
  }
  return 0;
}

int Frame(int mode) {
  Frames frames;
  DEWARP_CHANNEL channel = Open(SINGLE_PTZ_VIEW, mode ? LINEAR_INTERPOLATION : NEAREST_NEIGHBOUR_INTERPOLATION);
  DEWARP_PTZ_POSITION position = {35.0f, 25.0f, 0.0f, 1.0f};
  if (!channel || dewarp_set_ptz(channel, &position) != 0 || dewarp_image(channel, &frames.in, &frames.out) != 0) {
    return Fail("frame");
  }
  const int count = 50;
  const double start = CpuMilliseconds();
  for (int i = 0; i < count; ++i) {
    if (dewarp_image(channel, &frames.in, &frames.out) != 0) {
      return Fail("frame");
    }
  }
  std::printf("mode=%d frame_ms=%.3f\n", mode, (CpuMilliseconds() - start) / count);
  dewarp_close(channel);
  return 0;
}

int Pages() {
  const std::size_t bytes = std::size_t(kDstWidth) * kDstHeight * 2 * sizeof(float);
  std::vector<double> fresh, warm;
  for (int i = 0; i < 5; ++i) {
    const double start = CpuMilliseconds();
    void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (pages == MAP_FAILED) {
      return Fail("mmap");
    }
    std::memset(pages, i + 1, bytes);
    const double middle = CpuMilliseconds();
    std::memset(pages, i + 2, bytes);
    warm.push_back(CpuMilliseconds() - middle);
    fresh.push_back(middle - start);
    munmap(pages, bytes);
  }
  std::sort(fresh.begin(), fresh.end());
  std::sort(warm.begin(), warm.end());
  std::printf("pages_mb=%.1f fresh_ms=%.3f warm_ms=%.3f\n", bytes / 1e6, fresh[2], warm[2]);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const char* what = argc > 1 ? argv[1] : "";
  const int arg = argc > 2 ? std::atoi(argv[2]) : 0;
  if (std::strcmp(what, "reaim") == 0) {
    return Reaim(arg > 0 ? arg : 21);
  }
  if (std::strcmp(what, "first") == 0 && arg >= 0 && arg <= 5) {
    return First(arg);
  }
  if (std::strcmp(what, "channels") == 0) {
    return Channels(arg > 0 ? arg : 4);
  }
  if (std::strcmp(what, "frame") == 0) {
    return Frame(arg);
  }
  if (std::strcmp(what, "pages") == 0) {
    return Pages();
  }
  std::fprintf(stderr, "usage: %s reaim [count] | first <kind 0-5> | channels [count] | frame <0|1> | pages\n", argv[0]);
  return 2;
}
