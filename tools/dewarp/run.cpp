#include "run.h"

#include "demo.h"
#include "engine_host.h"
#include "failure.h"
#include "image_io.h"
#include "output_file.h"
#include "plugin_host.h"
#include "progress.h"
#include "raw_processor.h"
#include "scene.h"
#include "y4m.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>

namespace dewarp_tool {

namespace {

// The input: one picture (a file or the sample) or a YUV4MPEG2 stream.
struct Input {
  std::string name;
  bool isVideo = false;
  RgbImage image;
  std::FILE* stream = nullptr;
  std::unique_ptr<Y4mReader> video;
  int width = 0;
  int height = 0;
  int rateNum = 25;
  int rateDen = 1;

  Input() = default;
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input() {
    if (stream && stream != stdin) {
      std::fclose(stream);
    }
  }
};

void OpenInput(const Options& options, Input& input) {
  if (options.sample) {
    input.name = "the sample";
    input.image = RenderSample(options.sampleSize, options.mount, options.fov);
  } else {
    input.name = options.input == "-" ? "standard input" : options.input;
    input.stream = options.input == "-" ? stdin : std::fopen(options.input.c_str(), "rb");
    if (!input.stream) {
      BadInput("cannot open " + options.input + ": " + std::strerror(errno));
    }
    // The kind of input is recognised from its first bytes, whatever its name.
    std::string prefix(9, '\0');
    prefix.resize(std::fread(&prefix[0], 1, prefix.size(), input.stream));
    if (std::ferror(input.stream)) {
      BadInput("cannot read " + input.name + ": " + std::strerror(errno));
    }
    if (prefix.empty()) {
      BadInput(input.name + ": empty input");
    }
    if (SniffKind(reinterpret_cast<const std::uint8_t*>(prefix.data()), prefix.size()) == FileKind::Y4m) {
      input.isVideo = true;
      input.video.reset(new Y4mReader(input.stream, input.name, prefix));
      const Y4mHeader& header = input.video->Header();
      input.width = header.width;
      input.height = header.height;
      input.rateNum = header.rateNum;
      input.rateDen = header.rateDen;
      return;
    }
    std::vector<std::uint8_t> bytes(prefix.begin(), prefix.end());
    ReadRest(input.stream, input.name, bytes);
    input.image = DecodeImage(bytes, input.name);
  }
  input.width = input.image.width;
  input.height = input.image.height;
  if (input.width % 2 || input.height % 2) {
    BadInput(input.name + ": odd picture size " + std::to_string(input.width) + "x" +
             std::to_string(input.height) + " (4:2:0 frames need an even width and height)");
  }
}

std::unique_ptr<FrameProcessor> MakeProcessor(const Options& options, const Input& input) {
  if (options.raw) {
    return std::unique_ptr<FrameProcessor>(new RawProcessor(input.width, input.height));
  }
  if (!options.kind.empty()) {
    return MakePluginHost(options, input.width, input.height);
  }
  return std::unique_ptr<FrameProcessor>(new EngineHost(options, input.width, input.height));
}

// "frame%04d.png" with frame 7 gives "frame0007.png"; the pattern takes one %d, optionally
// with a zero-padded width. Returns false when the name holds no such pattern.
bool NumberedName(const std::string& pattern, int number, std::string& name) {
  const std::size_t at = pattern.find('%');
  if (at == std::string::npos) {
    return false;
  }
  std::size_t i = at + 1;
  int width = 0;
  while (i < pattern.size() && pattern[i] >= '0' && pattern[i] <= '9' && width < 100) {
    width = width * 10 + (pattern[i++] - '0');
  }
  if (i >= pattern.size() || pattern[i] != 'd' || pattern.find('%', i) != std::string::npos) {
    BadInput("bad output name " + pattern + " (one %d or %04d numbers the frames)");
  }
  std::string digits = std::to_string(number);
  if (static_cast<int>(digits.size()) < width) {
    digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
  }
  name = pattern.substr(0, at) + digits + pattern.substr(i + 1);
  return true;
}

void WritePicture(const RgbImage& image, FileKind kind, const std::string& name, int quality) {
  OutputFile file(name);
  if (kind == FileKind::Png) {
    WritePng(image, file);
  } else {
    WriteJpeg(image, quality, file);
  }
  file.Commit();
}

int RunClick(const Options& options, Input& input) {
  if (!options.kind.empty()) {
    BadInput("--click asks the engine directly; it cannot be combined with --kind");
  }
  if (input.width > 4096 || input.height > 4096) {
    BadInput("--click works on inputs of up to 4096x4096 pixels");
  }
  EngineHost engine(options, input.width, input.height);
  int sourceX = options.clickX;
  int sourceY = options.clickY;
  const int width = options.raw ? input.width : engine.OutputWidth();
  const int height = options.raw ? input.height : engine.OutputHeight();
  if (options.clickX >= width || options.clickY >= height) {
    BadInput("--click " + std::to_string(options.clickX) + "," + std::to_string(options.clickY) +
             " lies outside the " + std::to_string(width) + "x" + std::to_string(height) +
             (options.raw ? " input" : " output"));
  }
  if (!options.raw && !engine.SourcePixel(options.clickX, options.clickY, sourceX, sourceY)) {
    BadInput("--click " + std::to_string(options.clickX) + "," + std::to_string(options.clickY) +
             " shows nothing of the fisheye picture");
  }
  const DEWARP_PTZ_POSITION p = engine.PtzForSourcePixel(sourceX, sourceY, options.maxZoom);
  if (!options.quiet) {
    std::fprintf(stderr, "dewarp: %s pixel %d,%d shows fisheye pixel %d,%d; PTZ position (pan,tilt,roll,zoom):\n",
                 options.raw ? "input" : "output", options.clickX, options.clickY, sourceX, sourceY);
  }
  std::printf("%.6g,%.6g,%.6g,%.6g\n", p.Pan, p.Tilt, p.Roll, p.Zoom);
  return kExitOk;
}

void Summary(const Options& options, const Input& input, const FrameProcessor& processor, int frames,
             double seconds) {
  if (options.quiet) {
    return;
  }
  std::string what = options.raw ? "unchanged" : !options.kind.empty() ? ("plug-in kind " + options.kind + ", sub-mode " + std::to_string(options.subMode))
                                                 : (std::string(ViewName(options.view)) + " view, " +
                                                    ProjectionName(options.projection) + " projection, " +
                                                    MountName(options.mount) + " mount");
  std::fprintf(stderr, "dewarp: %s %dx%d -> %s %dx%d (%s), %d frame%s in %.2f s\n", input.name.c_str(), input.width,
               input.height, options.output == "-" ? "standard output" : options.output.c_str(),
               processor.OutputWidth(), processor.OutputHeight(), what.c_str(), frames, frames == 1 ? "" : "s",
               seconds);
}

}  // namespace

int Run(const Options& options) {
  if (options.demo) {
    return RunDemo(options);
  }
  const DEWARP_LOG_LEVEL level = options.logLevel;
  RouteEngineLog(&level);

  const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  Input input;
  OpenInput(options, input);
  if (options.click) {
    return RunClick(options, input);
  }
  const FileKind outKind = KindFromName(options.output);
  if (outKind == FileKind::Unknown) {
    BadInput("cannot tell the output format from the name " + options.output +
             " (use .png, .jpg, .jpeg, .y4m, or - for YUV4MPEG2 on standard output)");
  }
  std::unique_ptr<FrameProcessor> processor = MakeProcessor(options, input);

  // A picture written as a picture without dewarping keeps its exact colours.
  if (options.raw && !input.isVideo && outKind != FileKind::Y4m) {
    WritePicture(input.image, outKind, options.output, options.quality);
    Summary(options, input, *processor, 1, SecondsSince(start));
    return kExitOk;
  }

  std::unique_ptr<OutputFile> videoFile;
  std::unique_ptr<Y4mWriter> writer;
  if (outKind == FileKind::Y4m) {
    videoFile.reset(new OutputFile(options.output));
    writer.reset(new Y4mWriter(*videoFile, processor->OutputWidth(), processor->OutputHeight(), input.rateNum,
                               input.rateDen));
  }
  Progress progress(options.quiet || !input.isVideo);
  YuvFrame in;
  YuvFrame out;
  bool firstOnlyNoted = false;
  for (;;) {
    if (options.maxFrames && progress.Frames() >= options.maxFrames) {
      break;
    }
    if (input.isVideo) {
      if (!input.video->ReadFrame(in)) {
        break;
      }
    } else if (progress.Frames() == 0) {
      in = ToYuv420(input.image);
    } else {
      break;
    }
    processor->Process(in, out);
    if (writer) {
      writer->WriteFrame(out);
    } else {
      std::string name;
      const bool numbered = NumberedName(options.output, progress.Frames() + 1, name);
      WritePicture(ToRgb(out), outKind, numbered ? name : options.output, options.quality);
      if (input.isVideo && !numbered) {
        progress.FrameDone();
        firstOnlyNoted = input.video->MoreFrames();
        break;
      }
    }
    progress.FrameDone();
  }
  if (progress.Frames() == 0) {
    BadInput(input.name + ": the video holds no frame");
  }
  if (videoFile) {
    videoFile->Commit();
  }
  const double seconds = progress.Finish();
  if (firstOnlyNoted && !options.quiet) {
    std::fprintf(stderr, "dewarp: wrote the first frame only; name the output like frame%%04d.png for every frame\n");
  }
  Summary(options, input, *processor, progress.Frames(), seconds);
  return kExitOk;
}

}  // namespace dewarp_tool
