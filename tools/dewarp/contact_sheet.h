// A labelled contact sheet: pictures shrunk into equal cells of a grid, each with a caption
// above it, under a title.
#ifndef DEWARP_TOOL_CONTACT_SHEET_H
#define DEWARP_TOOL_CONTACT_SHEET_H

#include "yuv.h"

#include <string>
#include <vector>

namespace dewarp_tool {

struct SheetCell {
  std::string caption;
  RgbImage image;                  // empty: the cell shows only its text lines
  std::vector<std::string> lines;  // text written inside the cell
};

// Shrinks `source` by area averaging (or copies it) to fit inside width x height, keeping its
// proportions.
RgbImage FitInto(const RgbImage& source, int width, int height);

RgbImage MakeContactSheet(const std::string& title, const std::vector<SheetCell>& cells, int columns,
                          int cellWidth, int cellHeight);

}  // namespace dewarp_tool

#endif
