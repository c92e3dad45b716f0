// dewarp: turns fisheye pictures and videos into the flat views an operator watches, through the
// engine's C interface or the plug-in. See `dewarp --help`.
#include "failure.h"
#include "options.h"
#include "run.h"

#include <cstdio>
#include <exception>
#include <new>

int main(int argc, char** argv) {
  using namespace dewarp_tool;
  try {
    const Options options = ParseOptions(argc, argv);
    if (options.help) {
      std::fputs(HelpText(), stdout);
      return kExitOk;
    }
    return Run(options);
  } catch (const Failure& failure) {
    std::fprintf(stderr, "dewarp: %s\n", failure.what());
    return failure.Status();
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "dewarp: out of memory (is the picture or --size too large?)\n");
    return kExitBadInput;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "dewarp: %s\n", error.what());
    return kExitEngine;
  }
}
