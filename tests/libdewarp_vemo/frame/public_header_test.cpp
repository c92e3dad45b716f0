// The public header seen from C and from C++: same record layout, same enumerator values, and the
// record sizes the interface's pointer checks carry.
#include <libdewarp_vemo/dewarp.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "public_header_c.h"

namespace {

TEST(PublicHeader, RecordSizesMatchTheInterface) {
  EXPECT_EQ(24u, sizeof(DEWARP_INTERNAL_CAMERA_MODEL));
  EXPECT_EQ(16u, sizeof(DEWARP_CHANNEL_SETTINGS));
  EXPECT_EQ(16u, sizeof(DEWARP_PTZ_POSITION));
  EXPECT_EQ(32u, sizeof(DEWARP_PTZ_RANGE));
  EXPECT_EQ(8u, sizeof(DEWARP_RESOLUTION));
  EXPECT_EQ(16u, sizeof(DEWARP_IMAGE_INFO));
  EXPECT_EQ(4u, sizeof(DEWARP_FLOAT));
  // Two 32-bit fields, or a pointer and a 32-bit field padded to the pointer's alignment.
  EXPECT_EQ(2 * sizeof(void*), sizeof(DEWARP_LOG_SETTINGS));
  EXPECT_EQ(sizeof(void*) == 4 ? 20u : 24u, sizeof(DEWARP_IMAGE));
}

TEST(PublicHeader, FieldsFollowEachOtherInTheirOrder) {
  EXPECT_EQ(0u, offsetof(DEWARP_IMAGE_INFO, Format));
  EXPECT_EQ(4u, offsetof(DEWARP_IMAGE_INFO, Width));
  EXPECT_EQ(8u, offsetof(DEWARP_IMAGE_INFO, Height));
  EXPECT_EQ(12u, offsetof(DEWARP_IMAGE_INFO, Stride));
  EXPECT_EQ(16u, offsetof(DEWARP_IMAGE, Data));
  EXPECT_EQ(0u, offsetof(DEWARP_PTZ_POSITION, Pan));
  EXPECT_EQ(4u, offsetof(DEWARP_PTZ_POSITION, Tilt));
  EXPECT_EQ(8u, offsetof(DEWARP_PTZ_POSITION, Roll));
  EXPECT_EQ(12u, offsetof(DEWARP_PTZ_POSITION, Zoom));
  EXPECT_EQ(0u, offsetof(DEWARP_PTZ_RANGE, PanLo));
  EXPECT_EQ(4u, offsetof(DEWARP_PTZ_RANGE, PanHi));
  EXPECT_EQ(8u, offsetof(DEWARP_PTZ_RANGE, TiltLo));
  EXPECT_EQ(12u, offsetof(DEWARP_PTZ_RANGE, TiltHi));
  EXPECT_EQ(16u, offsetof(DEWARP_PTZ_RANGE, RollLo));
  EXPECT_EQ(20u, offsetof(DEWARP_PTZ_RANGE, RollHi));
  EXPECT_EQ(24u, offsetof(DEWARP_PTZ_RANGE, ZoomLo));
  EXPECT_EQ(28u, offsetof(DEWARP_PTZ_RANGE, ZoomHi));
  EXPECT_EQ(0u, offsetof(DEWARP_CHANNEL_SETTINGS, View));
  EXPECT_EQ(4u, offsetof(DEWARP_CHANNEL_SETTINGS, Projection));
  EXPECT_EQ(8u, offsetof(DEWARP_CHANNEL_SETTINGS, AspectRatio));
  EXPECT_EQ(12u, offsetof(DEWARP_CHANNEL_SETTINGS, Interpolation));
  EXPECT_EQ(0u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, Type));
  EXPECT_EQ(4u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, FovD));
  EXPECT_EQ(8u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, FovH));
  EXPECT_EQ(12u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, FovV));
  EXPECT_EQ(16u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, ResolutionH));
  EXPECT_EQ(20u, offsetof(DEWARP_INTERNAL_CAMERA_MODEL, ResolutionV));
  EXPECT_EQ(0u, offsetof(DEWARP_RESOLUTION, Width));
  EXPECT_EQ(4u, offsetof(DEWARP_RESOLUTION, Height));
  EXPECT_EQ(0u, offsetof(DEWARP_LOG_SETTINGS, Function));
  EXPECT_EQ(sizeof(void*), offsetof(DEWARP_LOG_SETTINGS, Level));
}

TEST(PublicHeader, EnumeratorValuesHaveNoGaps) {
  EXPECT_EQ(0, LOG_ERROR);
  EXPECT_EQ(1, LOG_WARNING);
  EXPECT_EQ(2, LOG_INFO);
  EXPECT_EQ(3, LOG_DEBUG);
  EXPECT_EQ(4, LOG_TRACE);
  EXPECT_EQ(0, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(1, LINEAR_INTERPOLATION);
  EXPECT_EQ(2, CUBIC_INTERPOLATION);
  EXPECT_EQ(0, RECTILINEAR_PROJECTION);
  EXPECT_EQ(1, CYLINDRICAL_PROJECTION);
  EXPECT_EQ(2, EQUIRECTANGULAR_PROJECTION);
  EXPECT_EQ(3, MERCATOR_PROJECTION);
  EXPECT_EQ(4, LAMBERT_CYLINDRICAL_PROJECTION);
  EXPECT_EQ(5, MILLER_CYLINDRICAL_PROJECTION);
  EXPECT_EQ(6, PANNINI_PROJECTION);
  EXPECT_EQ(7, ARCHITECTURAL_PROJECTION);
  EXPECT_EQ(8, EQUIRECTANGULAR_PANNINI_PROJECTION);
  EXPECT_EQ(0, SINGLE_PANORAMIC_VIEW);
  EXPECT_EQ(1, DUAL_PANORAMIC_VIEW);
  EXPECT_EQ(2, QUAD_PANORAMIC_VIEW);
  EXPECT_EQ(3, SINGLE_PTZ_VIEW);
  EXPECT_EQ(4, DUAL_PTZ_VIEW);
  EXPECT_EQ(5, QUAD_PTZ_VIEW);
  EXPECT_EQ(0, SCALE_TO_ASPECT_RATIO);
  EXPECT_EQ(1, CROP_TO_ASPECT_RATIO);
  EXPECT_EQ(2, FREE_ASPECT_RATIO);
  EXPECT_EQ(0, CEILING_MOUNT);
  EXPECT_EQ(1, FLOOR_MOUNT);
  EXPECT_EQ(2, WALL_MOUNT);
  EXPECT_EQ(3, INVERTED_WALL_MOUNT);
  EXPECT_EQ(0, RECTILINEAR_CAMERA);
  EXPECT_EQ(1, CIRCULAR_FISHEYE_CAMERA);
  EXPECT_EQ(0, RGBA32_PACKED_IMAGE);
  EXPECT_EQ(1, YUV422_PACKED_IMAGE);
  EXPECT_EQ(2, YUV420_PACKED_IMAGE);
  EXPECT_EQ(3, YUV422_PLANAR_IMAGE);
  EXPECT_EQ(4, YUV420_PLANAR_IMAGE);
}

TEST(PublicHeader, EnumerationsAreSigned32BitIntegers) {
  EXPECT_TRUE((std::is_same<std::underlying_type<DEWARP_VIEW>::type, int>::value));
  EXPECT_TRUE((std::is_same<std::underlying_type<DEWARP_LOG_LEVEL>::type, int>::value));
  EXPECT_TRUE((std::is_same<std::underlying_type<DEWARP_IMAGE_FORMAT>::type, int>::value));
  EXPECT_EQ(4u, sizeof(DEWARP_INTERNAL_CAMERA_MOUNT));
}

TEST(PublicHeader, HandleAndCallbackTypes) {
  EXPECT_TRUE((std::is_same<DEWARP_CHANNEL, void*>::value));
  EXPECT_TRUE((std::is_same<DEWARP_LOG_FUNCTION, int (*)(const char*, va_list)>::value));
  EXPECT_TRUE((std::is_same<decltype(&dewarp_internal_get_mount),
                            DEWARP_INTERNAL_CAMERA_MOUNT (*)(DEWARP_CHANNEL)>::value));
  EXPECT_TRUE((std::is_same<decltype(&dewarp_close), void (*)(DEWARP_CHANNEL)>::value));
  EXPECT_TRUE((std::is_same<decltype(&dewarp_open), DEWARP_CHANNEL (*)(const DEWARP_CHANNEL_SETTINGS*)>::value));
  EXPECT_TRUE((std::is_same<decltype(&dewarp_calc_ptz_position),
                            int (*)(DEWARP_CHANNEL, int, int, float, DEWARP_PTZ_POSITION*)>::value));
}

TEST(PublicHeader, CompiledAsCTheLayoutIsTheSame) {
  DewarpCLayout c = {};
  dewarp_c_layout(&c);
  EXPECT_EQ(sizeof(DEWARP_LOG_SETTINGS), c.size_log_settings);
  EXPECT_EQ(sizeof(DEWARP_RESOLUTION), c.size_resolution);
  EXPECT_EQ(sizeof(DEWARP_IMAGE_INFO), c.size_image_info);
  EXPECT_EQ(sizeof(DEWARP_IMAGE), c.size_image);
  EXPECT_EQ(sizeof(DEWARP_PTZ_POSITION), c.size_ptz_position);
  EXPECT_EQ(sizeof(DEWARP_PTZ_RANGE), c.size_ptz_range);
  EXPECT_EQ(sizeof(DEWARP_CHANNEL_SETTINGS), c.size_channel_settings);
  EXPECT_EQ(sizeof(DEWARP_INTERNAL_CAMERA_MODEL), c.size_camera_model);
  EXPECT_EQ(4u, c.size_enumeration);
  EXPECT_EQ(offsetof(DEWARP_IMAGE, Data), c.offset_image_data);
  EXPECT_EQ(offsetof(DEWARP_IMAGE_INFO, Stride), c.offset_image_info_stride);
  EXPECT_EQ(offsetof(DEWARP_PTZ_POSITION, Zoom), c.offset_ptz_zoom);
  EXPECT_EQ(offsetof(DEWARP_PTZ_RANGE, ZoomHi), c.offset_range_zoom_hi);
  EXPECT_EQ(offsetof(DEWARP_CHANNEL_SETTINGS, Interpolation), c.offset_settings_interpolation);
  EXPECT_EQ(offsetof(DEWARP_INTERNAL_CAMERA_MODEL, ResolutionV), c.offset_model_resolution_v);
  EXPECT_EQ(offsetof(DEWARP_LOG_SETTINGS, Level), c.offset_log_level);
  EXPECT_EQ(4, c.last_log_level);
  EXPECT_EQ(2, c.last_interpolation);
  EXPECT_EQ(8, c.last_projection);
  EXPECT_EQ(5, c.last_view);
  EXPECT_EQ(2, c.last_aspect_ratio);
  EXPECT_EQ(3, c.last_mount);
  EXPECT_EQ(1, c.last_camera_type);
  EXPECT_EQ(4, c.last_image_format);
}

TEST(PublicHeader, ACallerInCGetsTheBuiltInModel) {
  float fov = 0.0f;
  unsigned resolution = 0;
  int type = -1;
  dewarp_c_builtin_model(&fov, &resolution, &type);
  EXPECT_EQ(183.0f, fov);
  EXPECT_EQ(1936u, resolution);
  EXPECT_EQ(1, type);
}

}  // namespace
