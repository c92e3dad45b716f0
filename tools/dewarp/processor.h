// What turns one input frame into one output frame: the engine through its C interface, the
// plug-in through a dewarper as a host drives it, or nothing at all (--raw).
#ifndef DEWARP_TOOL_PROCESSOR_H
#define DEWARP_TOOL_PROCESSOR_H

#include "yuv.h"

namespace dewarp_tool {

class FrameProcessor {
public:
  virtual ~FrameProcessor() = default;
  // The output size for frames of the input size given at construction.
  virtual int OutputWidth() const = 0;
  virtual int OutputHeight() const = 0;
  // Dewarps one frame; `out` is resized to the output size.
  virtual void Process(const YuvFrame& in, YuvFrame& out) = 0;
};

}  // namespace dewarp_tool

#endif
