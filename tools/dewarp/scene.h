// The built-in sample: what the built-in fisheye camera (183 degrees, equidistant lens) sees in a
// plain room, rendered by ray casting. The room is 8 m square and 3 m high with a tiled floor
// (1 m tiles with dark joints), a ceiling of 1 m panels, and four walls of different colours,
// each with a 1 m grid of thin lines and its direction painted in large letters ("NORTH" on the
// blue wall, "EAST" green, "SOUTH" red, "WEST" yellow). Every joint and grid line is straight in
// the room, so it must come out straight in a perspective (PTZ) view.
//
// World axes: X east, Y up, Z south, metres; the floor's centre is the origin.
#ifndef DEWARP_TOOL_SCENE_H
#define DEWARP_TOOL_SCENE_H

#include "yuv.h"

#include <libdewarp_vemo/dewarp.h>

namespace dewarp_tool {

struct Vec3 {
  double x, y, z;
};

// Where the camera hangs and how it is turned for each mount: its position and the world
// directions of the image's right, the image's down and the lens axis.
struct CameraPose {
  Vec3 position;
  Vec3 right;
  Vec3 down;
  Vec3 forward;
};
CameraPose PoseForMount(DEWARP_INTERNAL_CAMERA_MOUNT mount);

// The colour the room shows along a ray from `origin` in direction `direction` (any length).
void SceneColour(const Vec3& origin, const Vec3& direction, double rgb[3]);

// The world direction an equidistant fisheye of the given field of view sees at the image point
// (x, y) (pixels from the top-left corner of a size x size picture; centre at size/2). Returns
// false outside the image circle.
bool FisheyeRay(double x, double y, int size, double fovDegrees, const CameraPose& pose, Vec3& direction);

// The sample picture: size x size pixels, the lens circle filling the square, black outside it;
// each pixel is the average of 2x2 rays.
RgbImage RenderSample(int size, DEWARP_INTERNAL_CAMERA_MOUNT mount, double fovDegrees = 183.0);

}  // namespace dewarp_tool

#endif
