#include "contact_sheet.h"

#include "font.h"

#include <algorithm>
#include <cmath>

namespace dewarp_tool {

namespace {

constexpr int kGap = 10;
constexpr int kCaptionScale = 2;
constexpr int kCaptionHeight = kGlyphHeight * kCaptionScale + 10;
constexpr int kTitleScale = 3;
constexpr int kTitleHeight = kGlyphHeight * kTitleScale + 2 * kGap;
const std::uint8_t kBackground[3] = {34, 36, 40};
const std::uint8_t kCellBackground[3] = {18, 18, 20};
const std::uint8_t kText[3] = {235, 235, 235};

void Fill(RgbImage& image, int x0, int y0, int w, int h, const std::uint8_t rgb[3]) {
  for (int y = std::max(0, y0); y < std::min(image.height, y0 + h); ++y) {
    for (int x = std::max(0, x0); x < std::min(image.width, x0 + w); ++x) {
      std::copy(rgb, rgb + 3, image.At(x, y));
    }
  }
}

void Paste(RgbImage& target, const RgbImage& source, int x0, int y0) {
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      if (x0 + x >= 0 && y0 + y >= 0 && x0 + x < target.width && y0 + y < target.height) {
        std::copy(source.At(x, y), source.At(x, y) + 3, target.At(x0 + x, y0 + y));
      }
    }
  }
}

}  // namespace

RgbImage FitInto(const RgbImage& source, int width, int height) {
  const double scale = std::min(1.0, std::min(static_cast<double>(width) / source.width,
                                              static_cast<double>(height) / source.height));
  const int w = std::max(1, static_cast<int>(std::lround(source.width * scale)));
  const int h = std::max(1, static_cast<int>(std::lround(source.height * scale)));
  RgbImage result(w, h);
  // Each target pixel averages the source pixels whose centres fall inside it.
  for (int y = 0; y < h; ++y) {
    const int sy0 = static_cast<int>(static_cast<long long>(y) * source.height / h);
    const int sy1 = std::max(sy0 + 1, static_cast<int>(static_cast<long long>(y + 1) * source.height / h));
    for (int x = 0; x < w; ++x) {
      const int sx0 = static_cast<int>(static_cast<long long>(x) * source.width / w);
      const int sx1 = std::max(sx0 + 1, static_cast<int>(static_cast<long long>(x + 1) * source.width / w));
      long sum[3] = {0, 0, 0};
      for (int sy = sy0; sy < sy1; ++sy) {
        for (int sx = sx0; sx < sx1; ++sx) {
          const std::uint8_t* p = source.At(sx, sy);
          sum[0] += p[0];
          sum[1] += p[1];
          sum[2] += p[2];
        }
      }
      const long count = static_cast<long>(sy1 - sy0) * (sx1 - sx0);
      for (int k = 0; k < 3; ++k) {
        result.At(x, y)[k] = static_cast<std::uint8_t>((sum[k] + count / 2) / count);
      }
    }
  }
  return result;
}

RgbImage MakeContactSheet(const std::string& title, const std::vector<SheetCell>& cells, int columns,
                          int cellWidth, int cellHeight) {
  const int rows = static_cast<int>((cells.size() + columns - 1) / columns);
  const int pitchX = cellWidth + kGap;
  const int pitchY = kCaptionHeight + cellHeight + kGap;
  RgbImage sheet(kGap + columns * pitchX, kTitleHeight + rows * pitchY);
  Fill(sheet, 0, 0, sheet.width, sheet.height, kBackground);
  DrawText(sheet, kGap, kGap, title, kTitleScale, kText);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const int x = kGap + static_cast<int>(i % columns) * pitchX;
    const int y = kTitleHeight + static_cast<int>(i / columns) * pitchY;
    DrawText(sheet, x, y + 2, cells[i].caption, kCaptionScale, kText);
    const int top = y + kCaptionHeight;
    Fill(sheet, x, top, cellWidth, cellHeight, kCellBackground);
    if (cells[i].image.width > 0) {
      const RgbImage small = FitInto(cells[i].image, cellWidth, cellHeight);
      Paste(sheet, small, x + (cellWidth - small.width) / 2, top + (cellHeight - small.height) / 2);
    }
    for (std::size_t line = 0; line < cells[i].lines.size(); ++line) {
      DrawText(sheet, x + 12, top + 12 + static_cast<int>(line) * (kGlyphHeight + 5) * kCaptionScale,
               cells[i].lines[line], kCaptionScale, kText);
    }
  }
  return sheet;
}

}  // namespace dewarp_tool
