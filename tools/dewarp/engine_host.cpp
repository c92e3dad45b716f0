#include "engine_host.h"

#include "failure.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace dewarp_tool {

namespace {

int LogToStandardError(const char* format, va_list arguments) {
  return std::vfprintf(stderr, format, arguments);
}

int Even(double value) {
  const int rounded = static_cast<int>(value / 2.0 + 0.5) * 2;
  return std::max(2, rounded);
}

DEWARP_IMAGE Describe(const YuvFrame& frame) {
  DEWARP_IMAGE image;
  image.Info.Format = YUV420_PLANAR_IMAGE;
  image.Info.Width = static_cast<unsigned>(frame.width);
  image.Info.Height = static_cast<unsigned>(frame.height);
  image.Info.Stride = static_cast<unsigned>(frame.width);
  image.Data = const_cast<std::uint8_t*>(frame.data.data());
  return image;
}

}  // namespace

void RouteEngineLog(const DEWARP_LOG_LEVEL* level) {
  DEWARP_LOG_SETTINGS settings;
  settings.Function = level ? LogToStandardError : nullptr;
  settings.Level = level ? *level : LOG_ERROR;
  dewarp_set_log(&settings);
}

EngineHost::EngineHost(const Options& options, int inputWidth, int inputHeight)
    : m_inWidth(inputWidth), m_inHeight(inputHeight), m_interpolation(options.interpolation) {
  // The built-in lens, with the input picture's size as its resolution (the lens circle is
  // taken to fill the picture) and the field of view asked for.
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  model.ResolutionH = static_cast<unsigned>(inputWidth);
  model.ResolutionV = static_cast<unsigned>(inputHeight);
  model.FovD = model.FovH = model.FovV = options.fov;
  DEWARP_CHANNEL_SETTINGS settings;
  settings.View = options.view;
  settings.Projection = options.projection;
  // Without a choice each layout uses the engine's own: panoramic strips keep the projection's
  // proportions, PTZ panes fill the output.
  settings.AspectRatio = options.aspectGiven ? options.aspectRatio
                                             : (IsPtzView(options.view) ? FREE_ASPECT_RATIO : SCALE_TO_ASPECT_RATIO);
  settings.Interpolation = options.interpolation;
  m_channel = dewarp_internal_open(&model, options.mount, &settings);
  if (!m_channel) {
    EngineFailure("opening a channel");
  }
  if (options.ptzGiven) {
    DEWARP_PTZ_POSITION position = options.ptz;
    Check(dewarp_set_ptz(m_channel, &position), "setting the PTZ position");
  }
  ChooseOutputSize(options);
}

EngineHost::~EngineHost() {
  dewarp_close(m_channel);
}

void EngineHost::Check(int result, const char* what) {
  if (result != 0) {
    EngineFailure(what);
  }
}

// Without --size: as wide as the input; panoramic layouts take the height that keeps the
// projection's own proportions, PTZ panes 4:3.
void EngineHost::ChooseOutputSize(const Options& options) {
  if (options.width) {
    m_outWidth = options.width;
    m_outHeight = options.height;
    return;
  }
  m_outWidth = Even(m_inWidth);
  if (IsPtzView(options.view)) {
    m_outHeight = Even(m_outWidth * 0.75);
    return;
  }
  DEWARP_RESOLUTION native = {0, 0};
  Check(dewarp_get_native_resolution(m_channel, &native), "asking the view's natural size");
  if (!native.Width || !native.Height) {
    EngineFailure("asking the view's natural size");
  }
  m_outHeight = std::min(Even(static_cast<double>(m_outWidth) * native.Height / native.Width), 16384);
}

void EngineHost::Process(const YuvFrame& in, YuvFrame& out) {
  if (out.width != m_outWidth || out.height != m_outHeight) {
    out = YuvFrame(m_outWidth, m_outHeight);
  }
  const DEWARP_IMAGE warped = Describe(in);
  DEWARP_IMAGE dewarped = Describe(out);
  Check(dewarp_image(m_channel, &warped, &dewarped), "dewarping a frame");
}

DEWARP_PTZ_POSITION EngineHost::Ptz() const {
  DEWARP_PTZ_POSITION position = {0, 0, 0, 0};
  if (dewarp_get_ptz(m_channel, &position) != 0) {
    EngineFailure("reading the PTZ position");
  }
  return position;
}

bool EngineHost::SourcePixel(int x, int y, int& sourceX, int& sourceY) {
  if (x >= m_outWidth || y >= m_outHeight) {
    BadInput("--click " + std::to_string(x) + "," + std::to_string(y) + " lies outside the " +
             std::to_string(m_outWidth) + "x" + std::to_string(m_outHeight) + " output");
  }
  Check(dewarp_set_interpolation(m_channel, NEAREST_NEIGHBOUR_INTERPOLATION), "choosing the interpolation");
  // Four probes: the low byte of the column, the low byte of the row, the high bits of both, and
  // a white frame that tells picture from the default colour outside it.
  int values[4];
  YuvFrame probe(m_inWidth, m_inHeight);
  YuvFrame out;
  for (int k = 0; k < 4; ++k) {
    std::fill(probe.data.begin(), probe.data.end(), static_cast<std::uint8_t>(128));
    for (int py = 0; py < m_inHeight; ++py) {
      for (int px = 0; px < m_inWidth; ++px) {
        const int code = k == 0 ? (px & 0xFF) : k == 1 ? (py & 0xFF) : k == 2 ? ((px >> 8) | ((py >> 8) << 4)) : 255;
        probe.Y()[static_cast<std::size_t>(py) * m_inWidth + px] = static_cast<std::uint8_t>(code);
      }
    }
    Process(probe, out);
    values[k] = out.Y()[static_cast<std::size_t>(y) * m_outWidth + x];
  }
  Check(dewarp_set_interpolation(m_channel, m_interpolation), "choosing the interpolation");
  if (values[3] != 255) {
    return false;
  }
  sourceX = values[0] | ((values[2] & 0x0F) << 8);
  sourceY = values[1] | ((values[2] >> 4) << 8);
  return true;
}

DEWARP_PTZ_POSITION EngineHost::PtzForSourcePixel(int sourceX, int sourceY, float maxZoom) {
  Check(dewarp_set_projection(m_channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), "switching to a PTZ view");
  DEWARP_PTZ_POSITION position = {0, 0, 0, 0};
  Check(dewarp_calc_ptz_position(m_channel, sourceX, sourceY, maxZoom, &position),
        "finding the PTZ position of a point");
  return position;
}

}  // namespace dewarp_tool
