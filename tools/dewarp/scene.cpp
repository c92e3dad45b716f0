#include "scene.h"

#include "font.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace dewarp_tool {

namespace {

constexpr double kHalfWidth = 4.0;  // the room spans -4..4 m east-west and north-south
constexpr double kHeight = 3.0;
constexpr double kJoint = 0.03;      // half width of tile joints and grid lines, metres
constexpr double kLetterCell = 0.2;  // one font pixel of a wall label, metres
constexpr double kLabelBottom = 0.8;

Vec3 Add(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vec3 Scale(const Vec3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }

// Distance from v to the nearest whole multiple of `spacing`.
double DistanceToGrid(double v, double spacing) {
  const double r = std::fabs(std::remainder(v, spacing));
  return r;
}

void SetColour(double rgb[3], double r, double g, double b) {
  rgb[0] = r;
  rgb[1] = g;
  rgb[2] = b;
}

// A wall seen from inside the room: (s, t) are metres to the right of the wall's centre and
// above the floor, for a person facing the wall.
void WallColour(double s, double t, const double base[3], const std::string& label, double rgb[3]) {
  SetColour(rgb, base[0], base[1], base[2]);
  if (t < 0.15) {  // skirting board
    SetColour(rgb, 60, 48, 40);
    return;
  }
  if (DistanceToGrid(s, 1.0) < kJoint * 0.7 || DistanceToGrid(t, 1.0) < kJoint * 0.7) {
    SetColour(rgb, base[0] * 0.55, base[1] * 0.55, base[2] * 0.55);
  }
  // The label, centred, in white letters with a dark shadow one font pixel below-right.
  const double width = TextColumns(label) * kLetterCell;
  const double colF = (s + width / 2) / kLetterCell;
  const double rowF = (kLabelBottom + kGlyphHeight * kLetterCell - t) / kLetterCell;
  auto ink = [&](double col, double row) {
    if (col < 0 || row < 0) return false;
    const int c = static_cast<int>(col);
    const int r = static_cast<int>(row);
    const int index = c / kGlyphAdvance;
    return index < static_cast<int>(label.size()) && GlyphInk(label[index], c % kGlyphAdvance, r);
  };
  if (ink(colF, rowF)) {
    SetColour(rgb, 250, 250, 245);
  } else if (ink(colF - 0.35, rowF - 0.35)) {
    SetColour(rgb, 30, 30, 35);
  }
}

void FloorColour(double x, double z, double rgb[3]) {
  if (DistanceToGrid(x, 1.0) < kJoint || DistanceToGrid(z, 1.0) < kJoint) {
    SetColour(rgb, 55, 45, 40);
    return;
  }
  const long tile = std::lround(std::floor(x)) + std::lround(std::floor(z));
  if (tile % 2 == 0) {
    SetColour(rgb, 228, 218, 196);
  } else {
    SetColour(rgb, 176, 112, 78);
  }
}

void CeilingColour(double x, double z, double rgb[3]) {
  if (DistanceToGrid(x, 1.0) < kJoint || DistanceToGrid(z, 1.0) < kJoint) {
    SetColour(rgb, 140, 140, 150);
  } else if (std::hypot(x, z) < 0.3) {
    SetColour(rgb, 255, 250, 200);  // a round lamp in the middle
  } else {
    SetColour(rgb, 232, 232, 228);
  }
}

}  // namespace

CameraPose PoseForMount(DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  switch (mount) {
    case CEILING_MOUNT:  // looking down; north at the top of the picture, east on the right
      return {{0.0, kHeight - 0.05, 0.0}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
    case FLOOR_MOUNT:  // looking up; east on the right, so north at the bottom
      return {{0.0, 0.05, 0.0}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}};
    case INVERTED_WALL_MOUNT:  // on the south wall looking north, upside down
      return {{0.0, 1.6, kHalfWidth - 0.05}, {-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    case WALL_MOUNT:
    default:  // on the south wall looking north, upright
      return {{0.0, 1.6, kHalfWidth - 0.05}, {1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
  }
}

void SceneColour(const Vec3& origin, const Vec3& d, double rgb[3]) {
  // The nearest of the six planes the ray reaches going forward.
  double best = HUGE_VAL;
  int face = -1;
  auto consider = [&](double along, double from, double plane, int which) {
    if (along == 0.0) return;
    const double t = (plane - from) / along;
    if (t > 1e-9 && t < best) {
      best = t;
      face = which;
    }
  };
  consider(d.y, origin.y, 0.0, 0);
  consider(d.y, origin.y, kHeight, 1);
  consider(d.z, origin.z, -kHalfWidth, 2);
  consider(d.x, origin.x, kHalfWidth, 3);
  consider(d.z, origin.z, kHalfWidth, 4);
  consider(d.x, origin.x, -kHalfWidth, 5);
  if (face < 0) {
    SetColour(rgb, 0, 0, 0);
    return;
  }
  const Vec3 p = Add(origin, Scale(d, best));
  static const double kNorth[3] = {70, 110, 195};
  static const double kEast[3] = {80, 165, 95};
  static const double kSouth[3] = {195, 72, 62};
  static const double kWest[3] = {222, 190, 72};
  switch (face) {
    case 0: FloorColour(p.x, p.z, rgb); break;
    case 1: CeilingColour(p.x, p.z, rgb); break;
    case 2: WallColour(p.x, p.y, kNorth, "NORTH", rgb); break;   // facing north, east is right
    case 3: WallColour(p.z, p.y, kEast, "EAST", rgb); break;     // facing east, south is right
    case 4: WallColour(-p.x, p.y, kSouth, "SOUTH", rgb); break;  // facing south, west is right
    default: WallColour(-p.z, p.y, kWest, "WEST", rgb); break;   // facing west, north is right
  }
}

bool FisheyeRay(double x, double y, int size, double fovDegrees, const CameraPose& pose, Vec3& direction) {
  const double halfFov = fovDegrees * M_PI / 360.0;
  const double f = size / (fovDegrees * M_PI / 180.0);  // equidistant: radius = f * angle
  const double dx = x - size / 2.0;
  const double dy = y - size / 2.0;
  const double r = std::hypot(dx, dy);
  const double angle = r / f;
  if (angle > halfFov) {
    return false;
  }
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  const double cx = r > 0 ? s * dx / r : 0.0;
  const double cy = r > 0 ? s * dy / r : 0.0;
  direction = Add(Add(Scale(pose.right, cx), Scale(pose.down, cy)), Scale(pose.forward, c));
  return true;
}

RgbImage RenderSample(int size, DEWARP_INTERNAL_CAMERA_MOUNT mount, double fovDegrees) {
  RgbImage image(size, size);
  const CameraPose pose = PoseForMount(mount);
  static const double kOffsets[2] = {0.25, 0.75};
  for (int py = 0; py < size; ++py) {
    for (int px = 0; px < size; ++px) {
      double sum[3] = {0, 0, 0};
      for (double oy : kOffsets) {
        for (double ox : kOffsets) {
          Vec3 d;
          double rgb[3] = {0, 0, 0};
          if (FisheyeRay(px + ox, py + oy, size, fovDegrees, pose, d)) {
            SceneColour(pose.position, d, rgb);
          }
          for (int k = 0; k < 3; ++k) sum[k] += rgb[k];
        }
      }
      std::uint8_t* out = image.At(px, py);
      for (int k = 0; k < 3; ++k) {
        out[k] = static_cast<std::uint8_t>(std::min(255.0, std::max(0.0, std::round(sum[k] / 4.0))));
      }
    }
  }
  return image;
}

}  // namespace dewarp_tool
