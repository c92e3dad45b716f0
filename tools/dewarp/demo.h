// dewarp --demo: renders the built-in sample for a ceiling and a wall mount, dewarps it into every
// view kind, writes one PNG per view and a labelled contact sheet, and reports each step's time.
#ifndef DEWARP_TOOL_DEMO_H
#define DEWARP_TOOL_DEMO_H

#include "options.h"

namespace dewarp_tool {

int RunDemo(const Options& options);

// Creates a directory and its parents (like mkdir -p); fails with a message.
void MakeDirectories(const std::string& path);

}  // namespace dewarp_tool

#endif
