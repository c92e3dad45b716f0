// Per-frame remap of a 1936 x 1936 planar 4:2:0 fisheye frame into a 1920 x 1080 perspective
// view, nearest neighbour and bilinear, side by side with OpenCV's cv::remap (one thread) on the
// same three planes and the same maps: float maps for nearest, OpenCV's 16-bit fixed-point maps
// (cv::convertMaps) for bilinear. The chroma planes get the luma maps at the top-left pixel of
// each 2 x 2 block, halved, which is what the engine's block loops sample.
//
//   bin/remap_bench [--benchmark_repetitions=N ...]
//
// Prints Google Benchmark's table and then milliseconds per frame (real and CPU time) and our /
// OpenCV ratios.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar_420.h>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::ImagePlanar420;
using vemo::libdewarp::Vector2d;

namespace {

const int kSrcSize = 1936;
const int kDstWidth = 1920;
const int kDstHeight = 1080;

// Equidistant fisheye (radius = f * angle from the axis) with a 183 degree field of view over
// the 1936 pixel circle, seen through a 90 degree perspective camera panned 35 degrees and
// tilted 25 degrees off the lens axis. Returns source x and y per destination pixel.
void FisheyeToPerspective(std::vector<float>& mapX, std::vector<float>& mapY) {
  const double pi = 3.14159265358979323846;
  const double fisheyeF = (kSrcSize / 2.0) / (183.0 / 2.0 * pi / 180.0);
  const double perspectiveF = (kDstWidth / 2.0) / std::tan(45.0 * pi / 180.0);
  const double pan = 35.0 * pi / 180.0;
  const double tilt = 25.0 * pi / 180.0;
  const double cp = std::cos(pan), sp = std::sin(pan), ct = std::cos(tilt), st = std::sin(tilt);
  mapX.resize(static_cast<std::size_t>(kDstWidth) * kDstHeight);
  mapY.resize(mapX.size());
  for (int v = 0; v < kDstHeight; ++v) {
    for (int u = 0; u < kDstWidth; ++u) {
      // Ray in the view's frame: x right, y down, z forward.
      const double x = u - kDstWidth / 2.0 + 0.5;
      const double y = v - kDstHeight / 2.0 + 0.5;
      const double z = perspectiveF;
      // Tilt about x, then pan about y, into the lens frame (z along the lens axis).
      const double y1 = ct * y - st * z;
      const double z1 = st * y + ct * z;
      const double x2 = cp * x + sp * z1;
      const double z2 = -sp * x + cp * z1;
      const double theta = std::atan2(std::sqrt(x2 * x2 + y1 * y1), z2);
      const double phi = std::atan2(y1, x2);
      const double r = fisheyeF * theta;
      const std::size_t i = static_cast<std::size_t>(v) * kDstWidth + u;
      mapX[i] = static_cast<float>(kSrcSize / 2.0 + r * std::cos(phi));
      mapY[i] = static_cast<float>(kSrcSize / 2.0 + r * std::sin(phi));
    }
  }
}

struct Setup {
  std::vector<std::uint8_t> src;
  std::vector<std::uint8_t> dst;
  ImageMap map;
  // OpenCV maps: luma and chroma, float and fixed point.
  cv::Mat lumaX, lumaY, chromaX, chromaY;
  cv::Mat lumaFixed1, lumaFixed2, chromaFixed1, chromaFixed2;

  Setup()
      : src(kSrcSize * kSrcSize * 3 / 2), dst(kDstWidth * kDstHeight * 3 / 2), map(kDstWidth, kDstHeight) {
    std::uint32_t state = 1u;
    for (std::uint8_t& b : src) {
      state = state * 1664525u + 1013904223u;
      b = static_cast<std::uint8_t>(state >> 24);
    }
    std::vector<float> mx, my;
    FisheyeToPerspective(mx, my);
    std::copy(mx.begin(), mx.end(), map.GetMapX().GetTypePtr<float>());
    std::copy(my.begin(), my.end(), map.GetMapY().GetTypePtr<float>());
    map.SetInputSize(Vector2d(kSrcSize, kSrcSize));
    lumaX = cv::Mat(kDstHeight, kDstWidth, CV_32FC1, map.GetMapX().GetTypePtr<float>()).clone();
    lumaY = cv::Mat(kDstHeight, kDstWidth, CV_32FC1, map.GetMapY().GetTypePtr<float>()).clone();
    chromaX.create(kDstHeight / 2, kDstWidth / 2, CV_32FC1);
    chromaY.create(kDstHeight / 2, kDstWidth / 2, CV_32FC1);
    for (int r = 0; r < kDstHeight / 2; ++r) {
      for (int c = 0; c < kDstWidth / 2; ++c) {
        chromaX.at<float>(r, c) = lumaX.at<float>(2 * r, 2 * c) / 2.0f;
        chromaY.at<float>(r, c) = lumaY.at<float>(2 * r, 2 * c) / 2.0f;
      }
    }
    cv::convertMaps(lumaX, lumaY, lumaFixed1, lumaFixed2, CV_16SC2);
    cv::convertMaps(chromaX, chromaY, chromaFixed1, chromaFixed2, CV_16SC2);
  }

  cv::Mat Plane(std::vector<std::uint8_t>& bytes, int w, int h, int plane) {
    const std::size_t luma = static_cast<std::size_t>(w) * h;
    if (plane == 0) {
      return cv::Mat(h, w, CV_8UC1, bytes.data());
    }
    std::uint8_t* start = bytes.data() + luma + (plane == 2 ? luma / 4 : 0);
    return cv::Mat(h / 2, w / 2, CV_8UC1, start);
  }
};

Setup& GetSetup() {
  static Setup setup;
  return setup;
}

void Ours(benchmark::State& state, DEWARP_INTERPOLATION mode) {
  Setup& s = GetSetup();
  ImagePlanar420 src(YUV420_PLANAR_IMAGE, s.src.data(), kSrcSize, kSrcSize, kSrcSize, false);
  ImagePlanar420 dst(YUV420_PLANAR_IMAGE, s.dst.data(), kDstWidth, kDstHeight, kDstWidth, false);
  s.map.Remap(src, dst, mode);  // builds and caches the merged table outside the timing
  for (auto _ : state) {
    s.map.Remap(src, dst, mode);
    benchmark::DoNotOptimize(s.dst.data());
    benchmark::ClobberMemory();
  }
}

void OpenCv(benchmark::State& state, bool bilinear) {
  Setup& s = GetSetup();
  cv::Mat in[3], out[3];
  for (int p = 0; p < 3; ++p) {
    in[p] = s.Plane(s.src, kSrcSize, kSrcSize, p);
    out[p] = s.Plane(s.dst, kDstWidth, kDstHeight, p);
  }
  const cv::Scalar border[3] = {cv::Scalar(16), cv::Scalar(128), cv::Scalar(128)};
  for (auto _ : state) {
    for (int p = 0; p < 3; ++p) {
      if (bilinear) {
        cv::remap(in[p], out[p], p == 0 ? s.lumaFixed1 : s.chromaFixed1, p == 0 ? s.lumaFixed2 : s.chromaFixed2,
                  cv::INTER_LINEAR, cv::BORDER_CONSTANT, border[p]);
      } else {
        cv::remap(in[p], out[p], p == 0 ? s.lumaX : s.chromaX, p == 0 ? s.lumaY : s.chromaY, cv::INTER_NEAREST,
                  cv::BORDER_CONSTANT, border[p]);
      }
    }
    benchmark::DoNotOptimize(s.dst.data());
    benchmark::ClobberMemory();
  }
}

void BM_Ours_Nearest(benchmark::State& state) { Ours(state, NEAREST_NEIGHBOUR_INTERPOLATION); }
void BM_OpenCV_Nearest(benchmark::State& state) { OpenCv(state, false); }
void BM_Ours_Bilinear(benchmark::State& state) { Ours(state, LINEAR_INTERPOLATION); }
// The SSE2 baseline alone (the kernels every x86 machine runs), for comparison with the widest.
void BM_Ours_Bilinear_Sse2(benchmark::State& state) {
  ImagePlanar420::SetKernelSet(ImagePlanar420::SSE2_KERNELS);
  Ours(state, LINEAR_INTERPOLATION);
  ImagePlanar420::SetKernelSet(ImagePlanar420::WIDEST_KERNELS);
}
void BM_OpenCV_Bilinear(benchmark::State& state) { OpenCv(state, true); }

BENCHMARK(BM_Ours_Nearest)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenCV_Nearest)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Ours_Bilinear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenCV_Bilinear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Ours_Bilinear_Sse2)->Unit(benchmark::kMillisecond);

// Keeps the mean real time of each benchmark (milliseconds) for the summary.
// Iteration runs are averaged; when only aggregates are reported, their mean is used.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
  SummaryReporter() : benchmark::ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
      if (run.run_type == Run::RT_Iteration || mean) {
        Sample& sample = m_samples[run.run_name.function_name + (mean ? "/mean" : "")];
        sample.real += run.GetAdjustedRealTime();
        sample.cpu += run.GetAdjustedCPUTime();
        sample.count += 1;
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Mean real (cpu false) or CPU (cpu true) milliseconds per frame.
  double Mean(const std::string& name, bool cpu) const {
    auto it = m_samples.find(name);
    if (it == m_samples.end() || it->second.count == 0) {
      it = m_samples.find(name + "/mean");
    }
    if (it == m_samples.end() || it->second.count == 0) {
      return 0.0;
    }
    return (cpu ? it->second.cpu : it->second.real) / it->second.count;
  }

private:
  struct Sample {
    double real = 0.0;
    double cpu = 0.0;
    int count = 0;
  };
  std::map<std::string, Sample> m_samples;
};

}  // namespace

int main(int argc, char** argv) {
  cv::setNumThreads(1);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  GetSetup();
  SummaryReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const char* modes[2] = {"Nearest", "Bilinear"};
  std::printf("\n1936x1936 -> 1920x1080 4:2:0, one thread (OpenCV threads: %d)\n", cv::getNumThreads());
  for (const bool cpu : {false, true}) {
    for (const char* mode : modes) {
      const double ours = reporter.Mean(std::string("BM_Ours_") + mode, cpu);
      const double peer = reporter.Mean(std::string("BM_OpenCV_") + mode, cpu);
      std::printf("%-8s %-4s  ours %8.3f ms/frame   OpenCV %8.3f ms/frame   ours/OpenCV %.2f\n", mode,
                  cpu ? "cpu" : "real", ours, peer, peer > 0.0 ? ours / peer : 0.0);
    }
  }
  const double sse2 = reporter.Mean("BM_Ours_Bilinear_Sse2", true);
  const double peer = reporter.Mean("BM_OpenCV_Bilinear", true);
  std::printf("Bilinear-SSE2 cpu  ours %8.3f ms/frame   OpenCV %8.3f ms/frame   ours/OpenCV %.2f\n", sse2, peer,
              peer > 0.0 ? sse2 / peer : 0.0);
  benchmark::Shutdown();
  return 0;
}
