// The dewarp tool's command line.
#ifndef DEWARP_TOOL_OPTIONS_H
#define DEWARP_TOOL_OPTIONS_H

#include <libdewarp_vemo/dewarp.h>

#include <string>
#include <vector>

namespace dewarp_tool {

struct Options {
  bool help = false;
  bool demo = false;
  std::string demoDir = "out/demo";

  std::string input;   // file name, "-" for standard input; empty with --sample
  std::string output;  // file name, "-" for standard output
  bool sample = false;            // the built-in sample scene as input
  int sampleSize = 1936;          // its size (the built-in camera's lens image)
  bool raw = false;               // write the input as it is (no dewarping)

  DEWARP_VIEW view = SINGLE_PANORAMIC_VIEW;
  bool projectionGiven = false;
  DEWARP_PROJECTION projection = CYLINDRICAL_PROJECTION;
  DEWARP_INTERNAL_CAMERA_MOUNT mount = CEILING_MOUNT;
  int width = 0;   // 0: chosen from the view and the input
  int height = 0;
  DEWARP_INTERPOLATION interpolation = LINEAR_INTERPOLATION;
  DEWARP_ASPECT_RATIO aspectRatio = SCALE_TO_ASPECT_RATIO;
  bool aspectGiven = false;
  bool ptzGiven = false;
  DEWARP_PTZ_POSITION ptz = {0.0f, 0.0f, 0.0f, 1.0f};
  float fov = 183.0f;  // lens field of view in degrees

  bool logGiven = false;
  DEWARP_LOG_LEVEL logLevel = LOG_ERROR;

  bool click = false;
  int clickX = 0;
  int clickY = 0;
  float maxZoom = 4.0f;

  std::string kind;  // plug-in dewarper kind; empty: the engine directly
  int subMode = 1;

  int maxFrames = 0;  // 0: all
  int quality = 90;
  bool quiet = false;
};

// Parses argv; fails with a one-line message (exit status 2) for anything it does not understand.
Options ParseOptions(int argc, char** argv);
const char* HelpText();

// Names used on the command line and in messages.
const char* ViewName(DEWARP_VIEW view);
const char* ProjectionName(DEWARP_PROJECTION projection);
const char* MountName(DEWARP_INTERNAL_CAMERA_MOUNT mount);

// The projection a view kind uses when none is asked for: cylindrical for the panoramic
// layouts, rectilinear (perspective) for the PTZ layouts.
DEWARP_PROJECTION NaturalProjection(DEWARP_VIEW view);
bool IsPtzView(DEWARP_VIEW view);

}  // namespace dewarp_tool

#endif
