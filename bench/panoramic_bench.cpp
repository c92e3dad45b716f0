// Panoramic processor: a 1920 x 1080 view and a 1920 x 1080 panorama from a 2048 x 1536 24-bit
// fisheye frame, map rebuilt on every frame against a cached map, per precision mode
// (argument: 0 nearest, 1 bilinear, 2 auto).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "ImageProcessor.h"

namespace {

const int kInW = 2048, kInH = 1536, kOutW = 1920, kOutH = 1080;

struct Fixture {
  explicit Fixture(int mode, bool cached)
      : input(static_cast<std::size_t>(kInW) * kInH * 3), view(static_cast<std::size_t>(kOutW) * kOutH * 3),
        panorama(static_cast<std::size_t>(kOutW) * kOutH * 3) {
    for (std::size_t k = 0; k < input.size(); ++k) {
      input[k] = static_cast<unsigned char>((k * 2654435761u) >> 24);
    }
    params.InputImageWidth = kInW;
    params.InputImageHeight = kInH;
    params.InputImageStride = kInW * 3;
    params.InputImageBitsPerPixel = 24;
    params.InputImageCenterX = kInW / 2;
    params.InputImageCenterY = kInH / 2;
    params.InputImageRadius = 760;
    params.OutputImageWidth = kOutW;
    params.OutputImageHeight = kOutH;
    params.OutputImageStride = kOutW * 3;
    params.UseOutputImageMapCache = cached;
    params.OutputImagePrecisionMode = static_cast<ImageProcessorPrecisionMode>(mode);
    params.OutputPanoramaImageWidth = kOutW;
    params.OutputPanoramaImageHeight = kOutH;
    params.OutputPanoramaImageStride = kOutW * 3;
    params.UseOutputPanoramaImageMapCache = cached;
    params.OutputPanoramaImagePrecisionMode = static_cast<ImageProcessorPrecisionMode>(mode);
    processor.SetParameters(params);
    processor._inputData.Borrow(input.data(), kInW, kInH, kInW * 3, 24);
    processor._outputData.Borrow(view.data(), kOutW, kOutH, kOutW * 3, 24);
    processor._outputPanoramaData.Borrow(panorama.data(), kOutW, kOutH, kOutW * 3, 24);
    processor.SetPanTiltZoom(20, 45, 1);
  }
  std::vector<unsigned char> input, view, panorama;
  ImageProcessorParams params;
  ImageProcessor processor;
};

void Count(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kOutW) * kOutH);
}

// The view moves on every frame: the map is built while rendering.
void BM_ViewRebuild(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)), true);
  double pan = 20;
  for (auto _ : state) {
    pan = pan == 20 ? 20.5 : 20;
    f.processor.SetPan(pan);
    f.processor.ProcessImage();
    benchmark::DoNotOptimize(f.view.data());
  }
  Count(state);
}

// The view rests: the cached map is replayed.
void BM_ViewCached(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)), true);
  f.processor.ProcessImage();
  for (auto _ : state) {
    f.processor.ProcessImage();
    benchmark::DoNotOptimize(f.view.data());
  }
  Count(state);
}

// No cache at all: every frame is computed from the geometry.
void BM_ViewUncached(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)), false);
  for (auto _ : state) {
    f.processor.ProcessImage();
    benchmark::DoNotOptimize(f.view.data());
  }
  Count(state);
}

// The panorama map is dropped before every frame (SetParameters, outside the timing).
void BM_PanoramaRebuild(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)), true);
  for (auto _ : state) {
    state.PauseTiming();
    f.processor.SetParameters(f.params);  // borrowed buffers of unchanged size are kept
    state.ResumeTiming();
    f.processor.ProcessPanoramaImage();
    benchmark::DoNotOptimize(f.panorama.data());
  }
  Count(state);
}

void BM_PanoramaCached(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)), true);
  f.processor.ProcessPanoramaImage();
  for (auto _ : state) {
    f.processor.ProcessPanoramaImage();
    benchmark::DoNotOptimize(f.panorama.data());
  }
  Count(state);
}

BENCHMARK(BM_ViewRebuild)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ViewCached)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ViewUncached)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PanoramaRebuild)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PanoramaCached)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
