// Shared helpers of the view tests: cameras, planar YUV 4:2:0 frames, and a fisheye frame whose
// colour encodes the viewing direction of every pixel, so that a dewarped picture can be checked
// without trusting the maps that produced it.
#pragma once

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/camera_builder.h>
#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/image_planar_420.h>

namespace views_test {

using vemo::libdewarp::Camera;
using vemo::libdewarp::CameraBuilder;

typedef boost::shared_ptr<Camera> CameraPtr;

const double kPi = 3.14159265358979323846;

// A circular fisheye of 183 degrees over a square image of the given side.
inline DEWARP_INTERNAL_CAMERA_MODEL FisheyeModel(unsigned int uSide) {
  DEWARP_INTERNAL_CAMERA_MODEL stdModel;
  stdModel.Type = CIRCULAR_FISHEYE_CAMERA;
  stdModel.FovD = 183.0f;
  stdModel.FovH = 183.0f;
  stdModel.FovV = 183.0f;
  stdModel.ResolutionH = uSide;
  stdModel.ResolutionV = uSide;
  return stdModel;
}

inline CameraPtr MakeFisheye(DEWARP_INTERNAL_CAMERA_MOUNT eMount, unsigned int uSide = 400) {
  return CameraPtr(CameraBuilder().MakeCamera(FisheyeModel(uSide), eMount));
}

inline CameraPtr MakeRectilinear(DEWARP_INTERNAL_CAMERA_MOUNT eMount) {
  DEWARP_INTERNAL_CAMERA_MODEL stdModel = FisheyeModel(400);
  stdModel.Type = RECTILINEAR_CAMERA;
  stdModel.FovD = 120.0f;
  stdModel.FovH = 100.0f;
  stdModel.FovV = 100.0f;
  return CameraPtr(CameraBuilder().MakeCamera(stdModel, eMount));
}

const DEWARP_INTERNAL_CAMERA_MOUNT kMounts[] = {CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT, INVERTED_WALL_MOUNT};
const DEWARP_PROJECTION kProjections[] = {
    RECTILINEAR_PROJECTION,         CYLINDRICAL_PROJECTION,       EQUIRECTANGULAR_PROJECTION,
    MERCATOR_PROJECTION,            LAMBERT_CYLINDRICAL_PROJECTION, MILLER_CYLINDRICAL_PROJECTION,
    PANNINI_PROJECTION,             ARCHITECTURAL_PROJECTION,     EQUIRECTANGULAR_PANNINI_PROJECTION};
const DEWARP_VIEW kViews[] = {SINGLE_PANORAMIC_VIEW, DUAL_PANORAMIC_VIEW, QUAD_PANORAMIC_VIEW,
                              SINGLE_PTZ_VIEW,       DUAL_PTZ_VIEW,       QUAD_PTZ_VIEW};
const DEWARP_ASPECT_RATIO kAspects[] = {SCALE_TO_ASPECT_RATIO, CROP_TO_ASPECT_RATIO, FREE_ASPECT_RATIO};

// Runs f and reports the engine error it throws as "errno|message"; "no error" if none.
template <class F>
std::string ErrorOf(F f) {
  errno = 0;
  try {
    f();
  } catch (const vemo::libdewarp::Error& e) {
    const std::string text = e.what();
    const std::string::size_type dash = text.rfind("] - ");
    return std::to_string(errno) + "|" + (dash == std::string::npos ? text : text.substr(dash + 4));
  }
  return "no error";
}

// One planar YUV 4:2:0 frame with stride equal to width.
class YuvFrame {
public:
  YuvFrame(unsigned int uWidth, unsigned int uHeight, std::uint8_t y = 0, std::uint8_t uv = 0)
      : m_uWidth(uWidth), m_uHeight(uHeight), m_data(uWidth * uHeight * 3 / 2, y) {
    std::fill(m_data.begin() + uWidth * uHeight, m_data.end(), uv);
  }
  unsigned int Width() const { return m_uWidth; }
  unsigned int Height() const { return m_uHeight; }
  std::uint8_t* Data() { return m_data.data(); }
  const std::vector<std::uint8_t>& Bytes() const { return m_data; }
  std::uint8_t& Y(unsigned int x, unsigned int y) { return m_data[y * m_uWidth + x]; }
  std::uint8_t Y(unsigned int x, unsigned int y) const { return m_data[y * m_uWidth + x]; }
  std::uint8_t& U(unsigned int x, unsigned int y) { return m_data[m_uWidth * m_uHeight + (y / 2) * (m_uWidth / 2) + x / 2]; }
  std::uint8_t U(unsigned int x, unsigned int y) const {
    return m_data[m_uWidth * m_uHeight + (y / 2) * (m_uWidth / 2) + x / 2];
  }
  std::uint8_t& V(unsigned int x, unsigned int y) {
    return m_data[m_uWidth * m_uHeight * 5 / 4 + (y / 2) * (m_uWidth / 2) + x / 2];
  }
  std::uint8_t V(unsigned int x, unsigned int y) const {
    return m_data[m_uWidth * m_uHeight * 5 / 4 + (y / 2) * (m_uWidth / 2) + x / 2];
  }
  vemo::libdewarp::ImagePlanar420 Image() {
    return vemo::libdewarp::ImagePlanar420(YUV420_PLANAR_IMAGE, m_data.data(), m_uWidth, m_uHeight, m_uWidth, false);
  }

private:
  unsigned int m_uWidth;
  unsigned int m_uHeight;
  std::vector<std::uint8_t> m_data;
};

// The direction frame. Each fisheye pixel sees the direction at angle theta = r / f from the
// optical axis (equidistant lens, f = side / 183 degrees) and azimuth alpha = atan2(up, right)
// about it. Luma carries theta (16 at the axis, 16 + 219 at kThetaMax), the chroma pair carries
// (cos alpha, sin alpha) around 128; pixels outside the image circle are luma 250, chroma 128.
const double kThetaMax = 1.6;
const int kOutsideLuma = 250;

inline YuvFrame DirectionFrame(unsigned int uSide) {
  YuvFrame frame(uSide, uSide);
  const double f = uSide / (183.0 * kPi / 180.0);
  const double c = uSide / 2.0;
  for (unsigned int y = 0; y < uSide; ++y) {
    for (unsigned int x = 0; x < uSide; ++x) {
      const double dx = x + 0.5 - c, dy = c - (y + 0.5);
      const double r = std::hypot(dx, dy);
      frame.Y(x, y) = r > c ? kOutsideLuma : static_cast<std::uint8_t>(std::lround(16.0 + 219.0 * (r / f) / kThetaMax));
    }
  }
  for (unsigned int y = 0; y < uSide; y += 2) {
    for (unsigned int x = 0; x < uSide; x += 2) {
      const double dx = x + 1.0 - c, dy = c - (y + 1.0);
      const double a = std::atan2(dy, dx);
      const bool inside = std::hypot(dx, dy) <= c;
      frame.U(x, y) = inside ? static_cast<std::uint8_t>(std::lround(128.0 + 100.0 * std::cos(a))) : 128;
      frame.V(x, y) = inside ? static_cast<std::uint8_t>(std::lround(128.0 + 100.0 * std::sin(a))) : 128;
    }
  }
  return frame;
}

struct Direction {
  bool valid;      // a pixel of the lens picture (not the default colour, not outside the circle)
  double theta;    // angle from the optical axis
  double alpha;    // azimuth about the axis
  double v[3];     // unit vector in the lens frame
};

inline bool IsDefaultColour(const YuvFrame& frame, unsigned int x, unsigned int y) {
  return frame.Y(x, y) == 16 && frame.U(x, y) == 128 && frame.V(x, y) == 128;
}

inline Direction Decode(const YuvFrame& frame, unsigned int x, unsigned int y) {
  Direction d = {false, 0.0, 0.0, {0.0, 0.0, 0.0}};
  const int luma = frame.Y(x, y);
  if (IsDefaultColour(frame, x, y) || luma > 235) {
    return d;
  }
  d.valid = true;
  d.theta = (luma - 16) / 219.0 * kThetaMax;
  d.alpha = std::atan2(frame.V(x, y) - 128.0, frame.U(x, y) - 128.0);
  d.v[0] = std::sin(d.theta) * std::cos(d.alpha);
  d.v[1] = std::sin(d.theta) * std::sin(d.alpha);
  d.v[2] = std::cos(d.theta);
  return d;
}

inline double Chord(const Direction& a, const Direction& b) {
  return std::sqrt((a.v[0] - b.v[0]) * (a.v[0] - b.v[0]) + (a.v[1] - b.v[1]) * (a.v[1] - b.v[1]) +
                   (a.v[2] - b.v[2]) * (a.v[2] - b.v[2]));
}

// Wraps an angle difference into (-pi, pi].
inline double WrapAngle(double a) {
  while (a > kPi) a -= 2.0 * kPi;
  while (a <= -kPi) a += 2.0 * kPi;
  return a;
}

}  // namespace views_test
