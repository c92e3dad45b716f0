// The plug-in, driven as a video-management host drives it: the registry finds the dewarper kind
// by name, CreateDewarper makes one with the host's parameters, and every frame goes through the
// dewarper's own input and output buffers.
#ifndef DEWARP_TOOL_PLUGIN_HOST_H
#define DEWARP_TOOL_PLUGIN_HOST_H

#include "options.h"
#include "processor.h"

#include <memory>

namespace dewarp_tool {

std::unique_ptr<FrameProcessor> MakePluginHost(const Options& options, int inputWidth, int inputHeight);

}  // namespace dewarp_tool

#endif
