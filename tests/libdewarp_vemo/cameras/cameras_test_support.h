// Helpers shared by the camera and PTZ tests: lens models, hand-filled maps, element-wise map
// comparison and an independent double-precision model of lens directions.
#pragma once

#include <cmath>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/vector_2d.h>

namespace cameras_test {

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::Vector2d;

const double kPi = 3.14159265358979323846;

inline DEWARP_INTERNAL_CAMERA_MODEL Model(DEWARP_INTERNAL_CAMERA_TYPE type, float fovH, float fovV, float fovD,
                                          unsigned width, unsigned height) {
  DEWARP_INTERNAL_CAMERA_MODEL model;
  model.Type = type;
  model.FovD = fovD;
  model.FovH = fovH;
  model.FovV = fovV;
  model.ResolutionH = width;
  model.ResolutionV = height;
  return model;
}

// A map of cols x rows over a source of the given size whose element (x, y) is
// (x0 + sx * x, y0 + sy * y).
inline std::unique_ptr<ImageMap> AffineMap(int cols, int rows, const Vector2d& input, float x0, float sx, float y0,
                                           float sy) {
  std::unique_ptr<ImageMap> map(new ImageMap(cols, rows));
  map->SetInputSize(input);
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < cols; ++x) {
      map->SetMapItem(x, y, Vector2d(x0 + sx * static_cast<float>(x), y0 + sy * static_cast<float>(y)));
    }
  }
  return map;
}

inline bool SameBits(float a, float b) { return std::memcmp(&a, &b, sizeof(float)) == 0; }

// Element (x, y) of b equals element (x + dx, y + dy) of a, bit for bit (NaN included), for every
// element of b.
inline ::testing::AssertionResult SameElements(const ImageMap& a, int dx, int dy, const ImageMap& b) {
  for (int y = 0; y < static_cast<int>(b.GetMapHeight()); ++y) {
    for (int x = 0; x < static_cast<int>(b.GetMapWidth()); ++x) {
      const Vector2d va = a.GetMapItem(x + dx, y + dy);
      const Vector2d vb = b.GetMapItem(x, y);
      if (!SameBits(va.X, vb.X) || !SameBits(va.Y, vb.Y)) {
        return ::testing::AssertionFailure() << "element (" << x << ", " << y << "): (" << va.X << ", " << va.Y
                                             << ") vs (" << vb.X << ", " << vb.Y << ")";
      }
    }
  }
  return ::testing::AssertionSuccess();
}

struct Dir {
  double x, y, z;
};

// Equidistant lens: the image point of a direction given in lens axes (x to the right of the
// image, y down the image, z along the optical axis), relative to the image centre.
inline void LensPoint(const Dir& d, double f, double* px, double* py) {
  const double rho = std::hypot(d.x, d.y);
  const double angle = std::atan2(rho, d.z);
  if (rho == 0.0) {
    *px = 0.0;
    *py = 0.0;
    return;
  }
  *px = f * angle * d.x / rho;
  *py = f * angle * d.y / rho;
}

// Direction of an equidistant lens point (lens axes as above).
inline Dir LensDirection(double x, double y, double f) {
  const double r = std::hypot(x, y);
  const double theta = r / f;
  if (r == 0.0) return Dir{0.0, 0.0, 1.0};
  return Dir{std::sin(theta) * x / r, std::sin(theta) * y / r, std::cos(theta)};
}

}  // namespace cameras_test
