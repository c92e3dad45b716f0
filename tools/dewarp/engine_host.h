// The engine, driven through its public C interface exactly as any caller would: one channel for
// the built-in camera model with the input picture's size, the chosen mount, view, projection,
// aspect ratio and interpolation, and the PTZ position.
#ifndef DEWARP_TOOL_ENGINE_HOST_H
#define DEWARP_TOOL_ENGINE_HOST_H

#include "options.h"
#include "processor.h"

#include <libdewarp_vemo/dewarp.h>

namespace dewarp_tool {

// Sends the engine's log lines to standard error from the given level on (null: off).
void RouteEngineLog(const DEWARP_LOG_LEVEL* level);

class EngineHost : public FrameProcessor {
public:
  // Opens and configures the channel for input frames of width x height; fails (exit status 1)
  // if the engine refuses.
  EngineHost(const Options& options, int inputWidth, int inputHeight);
  ~EngineHost() override;
  EngineHost(const EngineHost&) = delete;
  EngineHost& operator=(const EngineHost&) = delete;

  int OutputWidth() const override { return m_outWidth; }
  int OutputHeight() const override { return m_outHeight; }
  void Process(const YuvFrame& in, YuvFrame& out) override;

  // The PTZ position the view took (the engine limits what it is asked for).
  DEWARP_PTZ_POSITION Ptz() const;
  // Which input (fisheye) pixel the output pixel (x, y) shows, found by dewarping probe frames
  // whose samples encode their own coordinates with nearest-neighbour sampling. False when the
  // output pixel shows nothing of the picture.
  bool SourcePixel(int x, int y, int& sourceX, int& sourceY);
  // The PTZ position dewarp_calc_ptz_position gives for a fisheye pixel, asked of a single PTZ
  // view (the layout in which the position is used); the channel's view stays so afterwards.
  DEWARP_PTZ_POSITION PtzForSourcePixel(int sourceX, int sourceY, float maxZoom);

private:
  void Check(int result, const char* what);
  void ChooseOutputSize(const Options& options);

  DEWARP_CHANNEL m_channel = nullptr;
  int m_inWidth;
  int m_inHeight;
  int m_outWidth = 0;
  int m_outHeight = 0;
  DEWARP_INTERPOLATION m_interpolation;
};

}  // namespace dewarp_tool

#endif
