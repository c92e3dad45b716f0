#include "options.h"

#include "failure.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace dewarp_tool {

namespace {

template <class T>
struct Named {
  const char* name;
  T value;
};

const Named<DEWARP_VIEW> kViews[] = {
    {"panoramic", SINGLE_PANORAMIC_VIEW}, {"dual-panoramic", DUAL_PANORAMIC_VIEW},
    {"quad-panoramic", QUAD_PANORAMIC_VIEW}, {"ptz", SINGLE_PTZ_VIEW},
    {"dual-ptz", DUAL_PTZ_VIEW}, {"quad-ptz", QUAD_PTZ_VIEW},
    {"single-panoramic", SINGLE_PANORAMIC_VIEW}, {"single-ptz", SINGLE_PTZ_VIEW}};

const Named<DEWARP_PROJECTION> kProjections[] = {
    {"rectilinear", RECTILINEAR_PROJECTION}, {"cylindrical", CYLINDRICAL_PROJECTION},
    {"equirectangular", EQUIRECTANGULAR_PROJECTION}, {"mercator", MERCATOR_PROJECTION},
    {"lambert", LAMBERT_CYLINDRICAL_PROJECTION}, {"miller", MILLER_CYLINDRICAL_PROJECTION},
    {"pannini", PANNINI_PROJECTION}, {"architectural", ARCHITECTURAL_PROJECTION},
    {"equirectangular-pannini", EQUIRECTANGULAR_PANNINI_PROJECTION}};

const Named<DEWARP_INTERNAL_CAMERA_MOUNT> kMounts[] = {
    {"ceiling", CEILING_MOUNT}, {"floor", FLOOR_MOUNT}, {"wall", WALL_MOUNT},
    {"inverted-wall", INVERTED_WALL_MOUNT}};

const Named<DEWARP_INTERPOLATION> kInterpolations[] = {
    {"nearest", NEAREST_NEIGHBOUR_INTERPOLATION}, {"bilinear", LINEAR_INTERPOLATION},
    {"linear", LINEAR_INTERPOLATION}};

const Named<DEWARP_ASPECT_RATIO> kAspects[] = {
    {"scale", SCALE_TO_ASPECT_RATIO}, {"crop", CROP_TO_ASPECT_RATIO}, {"free", FREE_ASPECT_RATIO}};

const Named<DEWARP_LOG_LEVEL> kLogLevels[] = {
    {"error", LOG_ERROR}, {"warning", LOG_WARNING}, {"info", LOG_INFO}, {"debug", LOG_DEBUG},
    {"trace", LOG_TRACE}};

template <class T, std::size_t N>
std::string Choices(const Named<T> (&table)[N]) {
  std::string text;
  for (std::size_t i = 0; i < N; ++i) {
    text += (i ? ", " : "") + std::string(table[i].name);
  }
  return text;
}

template <class T, std::size_t N>
T Lookup(const Named<T> (&table)[N], const std::string& option, const std::string& value) {
  for (const Named<T>& entry : table) {
    if (value == entry.name) {
      return entry.value;
    }
  }
  BadInput("unknown " + option + " value '" + value + "' (choose one of: " + Choices(table) + ")");
}

template <class T, std::size_t N>
const char* NameOf(const Named<T> (&table)[N], T value) {
  for (const Named<T>& entry : table) {
    if (entry.value == value) {
      return entry.name;
    }
  }
  return "?";
}

bool ParseFloat(const std::string& text, float& value) {
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(v)) {
    return false;
  }
  value = static_cast<float>(v);
  return true;
}

bool ParseInt(const std::string& text, int& value) {
  char* end = nullptr;
  const long v = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || v < -1000000 || v > 1000000) {
    return false;
  }
  value = static_cast<int>(v);
  return true;
}

// "A<sep>B<sep>..." into exactly `count` numbers.
std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t at = text.find(separator, start);
    parts.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
    if (at == std::string::npos) {
      return parts;
    }
    start = at + 1;
  }
}

float FloatValue(const std::string& option, const std::string& text) {
  float value = 0.0f;
  if (!ParseFloat(text, value)) {
    BadInput("bad " + option + " value '" + text + "' (a number is needed)");
  }
  return value;
}

int IntValue(const std::string& option, const std::string& text, int lowest, int highest) {
  int value = 0;
  if (!ParseInt(text, value) || value < lowest || value > highest) {
    BadInput("bad " + option + " value '" + text + "' (a whole number from " + std::to_string(lowest) +
             " to " + std::to_string(highest) + " is needed)");
  }
  return value;
}

void ParseSize(const std::string& text, Options& options) {
  const std::vector<std::string> parts = Split(text, 'x');
  int w = 0;
  int h = 0;
  if (parts.size() != 2 || !ParseInt(parts[0], w) || !ParseInt(parts[1], h) || w < 2 || h < 2 ||
      w > 16384 || h > 16384) {
    BadInput("bad --size value '" + text + "' (WIDTHxHEIGHT, for example 1280x720)");
  }
  if (w % 2 || h % 2) {
    BadInput("odd --size " + text + " (4:2:0 frames need an even width and height)");
  }
  options.width = w;
  options.height = h;
}

void ParsePtz(const std::string& text, Options& options) {
  const std::vector<std::string> parts = Split(text, ',');
  float values[4] = {0.0f, 0.0f, 0.0f, 1.0f};
  bool good = parts.size() >= 2 && parts.size() <= 4;
  for (std::size_t i = 0; good && i < parts.size(); ++i) {
    good = ParseFloat(parts[i], values[i]);
  }
  if (!good) {
    BadInput("bad --ptz value '" + text + "' (PAN,TILT[,ROLL[,ZOOM]], angles in degrees)");
  }
  options.ptz = DEWARP_PTZ_POSITION{values[0], values[1], values[2], values[3]};
  options.ptzGiven = true;
}

void ParseClick(const std::string& text, Options& options) {
  const std::vector<std::string> parts = Split(text, ',');
  if (parts.size() != 2 || !ParseInt(parts[0], options.clickX) || !ParseInt(parts[1], options.clickY) ||
      options.clickX < 0 || options.clickY < 0) {
    BadInput("bad --click value '" + text + "' (X,Y: a pixel of the output picture)");
  }
  options.click = true;
}

}  // namespace

const char* ViewName(DEWARP_VIEW view) { return NameOf(kViews, view); }
const char* ProjectionName(DEWARP_PROJECTION projection) { return NameOf(kProjections, projection); }
const char* MountName(DEWARP_INTERNAL_CAMERA_MOUNT mount) { return NameOf(kMounts, mount); }

bool IsPtzView(DEWARP_VIEW view) {
  return view == SINGLE_PTZ_VIEW || view == DUAL_PTZ_VIEW || view == QUAD_PTZ_VIEW;
}

DEWARP_PROJECTION NaturalProjection(DEWARP_VIEW view) {
  return IsPtzView(view) ? RECTILINEAR_PROJECTION : CYLINDRICAL_PROJECTION;
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  std::vector<std::string> positional;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    std::string value;
    const bool isOption = arg.size() > 2 && arg.compare(0, 2, "--") == 0;
    if (isOption) {
      const std::size_t equals = arg.find('=');
      if (equals != std::string::npos) {
        value = arg.substr(equals + 1);
        arg = arg.substr(0, equals);
      }
    }
    // Takes the option's value from "--name=value" or from the next argument.
    auto next = [&]() -> std::string {
      if (!value.empty()) {
        return value;
      }
      if (i + 1 >= argc) {
        BadInput("option " + arg + " needs a value (see --help)");
      }
      return argv[++i];
    };
    if (arg == "--help" || arg == "-h") options.help = true;
    else if (arg == "--demo") options.demo = true;
    else if (arg == "--out-dir") options.demoDir = next();
    else if (arg == "--sample") options.sample = true;
    else if (arg == "--sample-size") {
      options.sampleSize = IntValue(arg, next(), 16, 8192);
      if (options.sampleSize % 2) BadInput("odd --sample-size (4:2:0 frames need an even size)");
    }
    else if (arg == "--raw") options.raw = true;
    else if (arg == "--view") options.view = Lookup(kViews, arg, next());
    else if (arg == "--projection") {
      options.projection = Lookup(kProjections, arg, next());
      options.projectionGiven = true;
    }
    else if (arg == "--mount") options.mount = Lookup(kMounts, arg, next());
    else if (arg == "--size") ParseSize(next(), options);
    else if (arg == "--interpolation") options.interpolation = Lookup(kInterpolations, arg, next());
    else if (arg == "--aspect") {
      options.aspectRatio = Lookup(kAspects, arg, next());
      options.aspectGiven = true;
    }
    else if (arg == "--ptz") ParsePtz(next(), options);
    else if (arg == "--fov") {
      options.fov = FloatValue(arg, next());
      if (!(options.fov > 1.0f && options.fov <= 360.0f)) BadInput("bad --fov value (1 to 360 degrees)");
    }
    else if (arg == "--log") {
      options.logLevel = Lookup(kLogLevels, arg, next());
      options.logGiven = true;
    }
    else if (arg == "--click") ParseClick(next(), options);
    else if (arg == "--max-zoom") {
      options.maxZoom = FloatValue(arg, next());
      if (!(options.maxZoom >= 1.0f)) BadInput("bad --max-zoom value (1 or more)");
    }
    else if (arg == "--kind") options.kind = next();
    else if (arg == "--sub-mode") options.subMode = IntValue(arg, next(), 0, 100);
    else if (arg == "--frames") options.maxFrames = IntValue(arg, next(), 1, 100000000);
    else if (arg == "--quality") options.quality = IntValue(arg, next(), 1, 100);
    else if (arg == "--quiet" || arg == "-q") options.quiet = true;
    else if (arg.size() > 1 && arg[0] == '-' ) BadInput("unknown option " + arg + " (see --help)");
    else positional.push_back(arg);
  }
  if (options.help || options.demo) {
    return options;
  }
  if (!options.projectionGiven) {
    options.projection = NaturalProjection(options.view);
  }
  const std::size_t wanted = (options.sample ? 0u : 1u) + (options.click ? 0u : 1u);
  if (positional.size() != wanted) {
    BadInput(std::string("expected ") + (options.sample ? "" : "INPUT ") + (options.click ? "" : "OUTPUT") +
             ", got " + std::to_string(positional.size()) + " file name(s) (see --help)");
  }
  if (!options.sample) {
    options.input = positional[0];
  }
  if (!options.click) {
    options.output = positional.back();
  }
  return options;
}

}  // namespace dewarp_tool
