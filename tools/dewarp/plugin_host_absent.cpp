// Built when the plug-in layer is not part of this build: --kind explains that and stops.
#include "plugin_host.h"

#include "failure.h"

namespace dewarp_tool {

std::unique_ptr<FrameProcessor> MakePluginHost(const Options&, int, int) {
  BadInput("--kind needs the plug-in, which this build of dewarp does not include");
}

}  // namespace dewarp_tool
