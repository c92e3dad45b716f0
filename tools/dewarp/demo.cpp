#include "demo.h"

#include "contact_sheet.h"
#include "engine_host.h"
#include "failure.h"
#include "image_io.h"
#include "output_file.h"
#include "progress.h"
#include "scene.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace dewarp_tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSampleSize = 1936;  // the built-in camera's lens image
constexpr int kViewWidth = 960;
constexpr int kViewHeight = 540;

const DEWARP_VIEW kViews[] = {SINGLE_PANORAMIC_VIEW, DUAL_PANORAMIC_VIEW, QUAD_PANORAMIC_VIEW,
                              SINGLE_PTZ_VIEW,       DUAL_PTZ_VIEW,       QUAD_PTZ_VIEW};

struct DemoMount {
  DEWARP_INTERNAL_CAMERA_MOUNT mount;
  const char* title;
  DEWARP_PTZ_POSITION ptz;  // where the PTZ views look
};

// The ceiling camera's PTZ panes look a little down towards the walls and floor; the wall
// camera's straight ahead at the far wall.
const DemoMount kMounts[] = {{CEILING_MOUNT, "CEILING MOUNT", {0.0f, -10.0f, 0.0f, 1.0f}},
                             {WALL_MOUNT, "WALL MOUNT", {0.0f, 0.0f, 0.0f, 1.0f}}};

std::string Upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c == '-') c = ' ';
  }
  return text;
}

void SavePng(const RgbImage& image, const std::string& path) {
  OutputFile file(path);
  WritePng(image, file);
  file.Commit();
}

void Step(const std::string& what, double seconds) {
  std::printf("  %-58s %7.2f s\n", what.c_str(), seconds);
  std::fflush(stdout);
}

}  // namespace

void MakeDirectories(const std::string& path) {
  for (std::size_t at = 0; at != std::string::npos;) {
    at = path.find('/', at + 1);
    const std::string part = path.substr(0, at);
    if (!part.empty() && ::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
      BadInput("cannot create the directory " + part + ": " + std::strerror(errno));
    }
  }
}

int RunDemo(const Options& options) {
  const Clock::time_point start = Clock::now();
  const std::string dir = options.demoDir;
  MakeDirectories(dir);
  const DEWARP_LOG_LEVEL level = options.logLevel;
  RouteEngineLog(&level);
  std::printf("dewarp demo: the built-in sample, a %dx%d picture of the built-in 183-degree fisheye\n"
              "camera in a room, dewarped by the engine into every view kind (%dx%d each)\n\n",
              kSampleSize, kSampleSize, kViewWidth, kViewHeight);

  std::vector<SheetCell> cells;
  std::vector<std::string> written;
  for (const DemoMount& demo : kMounts) {
    const std::string mountName = MountName(demo.mount);
    std::printf("%s mount:\n", mountName.c_str());
    Clock::time_point t = Clock::now();
    const RgbImage sample = RenderSample(kSampleSize, demo.mount);
    Step("render the sample scene (4 rays per pixel)", SecondsSince(t));
    t = Clock::now();
    const std::string samplePath = dir + "/" + mountName + "-fisheye.png";
    SavePng(sample, samplePath);
    written.push_back(samplePath);
    Step("write " + samplePath, SecondsSince(t));
    const YuvFrame frame = ToYuv420(sample);

    std::vector<SheetCell> panes;
    for (DEWARP_VIEW view : kViews) {
      Options o = options;
      o.view = view;
      o.projection = NaturalProjection(view);
      o.mount = demo.mount;
      o.width = kViewWidth;
      o.height = kViewHeight;
      o.ptzGiven = IsPtzView(view);
      o.ptz = demo.ptz;
      const std::string viewName = ViewName(view);
      t = Clock::now();
      EngineHost engine(o, kSampleSize, kSampleSize);
      YuvFrame out;
      engine.Process(frame, out);
      const double first = SecondsSince(t);
      t = Clock::now();
      engine.Process(frame, out);
      const double second = SecondsSince(t);
      char timing[160];
      std::snprintf(timing, sizeof timing, "%s: first frame (builds the maps) / next frame", viewName.c_str());
      std::printf("  %-58s %7.2f s / %.3f s\n", timing, first, second);
      t = Clock::now();
      const RgbImage picture = ToRgb(out);
      const std::string path = dir + "/" + mountName + "-" + viewName + ".png";
      SavePng(picture, path);
      written.push_back(path);
      Step("write " + path, SecondsSince(t));
      std::string caption = Upper(viewName) + " - " + Upper(ProjectionName(o.projection));
      if (IsPtzView(view)) {
        const DEWARP_PTZ_POSITION p = engine.Ptz();
        char where[64];
        std::snprintf(where, sizeof where, " (%.0f,%.0f,%.0f,%.1f)", p.Pan, p.Tilt, p.Roll, p.Zoom);
        caption += where;
      }
      panes.push_back(SheetCell{caption, picture, {}});
    }
    // Two sheet rows per mount: the fisheye and the panoramic layouts, then a note and the PTZ layouts.
    cells.push_back(SheetCell{Upper(mountName) + " - FISHEYE INPUT", sample, {}});
    for (int i = 0; i < 3; ++i) cells.push_back(panes[static_cast<std::size_t>(i)]);
    char size[64];
    std::snprintf(size, sizeof size, "%dX%d, 183 DEGREES", kSampleSize, kSampleSize);
    cells.push_back(SheetCell{demo.title, RgbImage(), {demo.title, "NORVIK KESTREL MK2", size,
                                                        "EQUIDISTANT LENS", "", "PTZ AS PAN,TILT,ROLL,ZOOM"}});
    for (int i = 3; i < 6; ++i) cells.push_back(panes[static_cast<std::size_t>(i)]);
    std::printf("\n");
  }

  Clock::time_point t = Clock::now();
  const RgbImage sheet = MakeContactSheet("LIBDEWARP - THE BUILT-IN SAMPLE IN EVERY VIEW KIND", cells, 4,
                                          kViewWidth / 2, kViewHeight / 2);
  const std::string sheetPath = dir + "/contact-sheet.png";
  SavePng(sheet, sheetPath);
  Step("contact sheet " + sheetPath, SecondsSince(t));
  std::printf("\ndone in %.1f s. %zu pictures and the contact sheet are in %s/:\n", SecondsSince(start),
              written.size(), dir.c_str());
  for (const std::string& path : written) {
    std::printf("  %s\n", path.c_str());
  }
  std::printf("  %s\n", sheetPath.c_str());
  return kExitOk;
}

}  // namespace dewarp_tool
