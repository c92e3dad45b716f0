/* Shared between the C translation unit and its C++ test. */
#ifndef DEWARP_TEST_PUBLIC_HEADER_C_H
#define DEWARP_TEST_PUBLIC_HEADER_C_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct DewarpCLayout {
  size_t size_log_settings, size_resolution, size_image_info, size_image, size_ptz_position,
      size_ptz_range, size_channel_settings, size_camera_model, size_enumeration;
  size_t offset_image_data, offset_image_info_stride, offset_ptz_zoom, offset_range_zoom_hi,
      offset_settings_interpolation, offset_model_resolution_v, offset_log_level;
  int last_log_level, last_interpolation, last_projection, last_view, last_aspect_ratio, last_mount,
      last_camera_type, last_image_format;
};

void dewarp_c_layout(struct DewarpCLayout* layout);
void dewarp_c_builtin_model(float* fov_d, unsigned* resolution_h, int* type);

#ifdef __cplusplus
}
#endif

#endif
