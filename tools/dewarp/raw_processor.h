// --raw: frames pass through unchanged (to convert between file formats or write the sample).
#ifndef DEWARP_TOOL_RAW_PROCESSOR_H
#define DEWARP_TOOL_RAW_PROCESSOR_H

#include "processor.h"

namespace dewarp_tool {

class RawProcessor : public FrameProcessor {
public:
  RawProcessor(int width, int height) : m_width(width), m_height(height) {}
  int OutputWidth() const override { return m_width; }
  int OutputHeight() const override { return m_height; }
  void Process(const YuvFrame& in, YuvFrame& out) override { out = in; }

private:
  int m_width;
  int m_height;
};

}  // namespace dewarp_tool

#endif
