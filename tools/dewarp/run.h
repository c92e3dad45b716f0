// The dewarp tool's work for one command line.
#ifndef DEWARP_TOOL_RUN_H
#define DEWARP_TOOL_RUN_H

#include "options.h"

namespace dewarp_tool {

// Does what the options ask and returns the exit status; failures are thrown as Failure.
int Run(const Options& options);

}  // namespace dewarp_tool

#endif
