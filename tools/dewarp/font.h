// A small 5x7 bitmap font (capital letters, digits and a few signs) for the labels painted on
// the sample room's walls and on the demo's contact sheet. Lower-case letters are drawn as
// capitals; characters without a glyph are drawn as blanks.
#ifndef DEWARP_TOOL_FONT_H
#define DEWARP_TOOL_FONT_H

#include "yuv.h"

#include <string>

namespace dewarp_tool {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;
constexpr int kGlyphAdvance = 6;  // one blank column between characters

// Whether the glyph of `c` has ink at column `col` (0..4, left to right) and row `row` (0..6,
// top to bottom). Outside the glyph cell: false.
bool GlyphInk(char c, int col, int row);

// Width of a text in font columns (advance times length, without the last gap).
int TextColumns(const std::string& text);

// Paints the text with its top-left corner at (x, y), each font pixel `scale` pixels wide.
void DrawText(RgbImage& image, int x, int y, const std::string& text, int scale, const std::uint8_t rgb[3]);

}  // namespace dewarp_tool

#endif
