/* The public header compiled as C: the records, enumerations and functions as a C caller sees
 * them. The C++ tests compare these facts with the C++ view of the same header. */
#include <libdewarp_vemo/dewarp.h>

#include <stddef.h>

#include "public_header_c.h"

/* The declarations of the interface functions are checked by compiling this file; only the
 * built-in model is called, since it is the one function this layer implements. */
void dewarp_c_layout(struct DewarpCLayout* layout) {
  layout->size_log_settings = sizeof(DEWARP_LOG_SETTINGS);
  layout->size_resolution = sizeof(DEWARP_RESOLUTION);
  layout->size_image_info = sizeof(DEWARP_IMAGE_INFO);
  layout->size_image = sizeof(DEWARP_IMAGE);
  layout->size_ptz_position = sizeof(DEWARP_PTZ_POSITION);
  layout->size_ptz_range = sizeof(DEWARP_PTZ_RANGE);
  layout->size_channel_settings = sizeof(DEWARP_CHANNEL_SETTINGS);
  layout->size_camera_model = sizeof(DEWARP_INTERNAL_CAMERA_MODEL);
  layout->size_enumeration = sizeof(DEWARP_PROJECTION);

  layout->offset_image_data = offsetof(DEWARP_IMAGE, Data);
  layout->offset_image_info_stride = offsetof(DEWARP_IMAGE_INFO, Stride);
  layout->offset_ptz_zoom = offsetof(DEWARP_PTZ_POSITION, Zoom);
  layout->offset_range_zoom_hi = offsetof(DEWARP_PTZ_RANGE, ZoomHi);
  layout->offset_settings_interpolation = offsetof(DEWARP_CHANNEL_SETTINGS, Interpolation);
  layout->offset_model_resolution_v = offsetof(DEWARP_INTERNAL_CAMERA_MODEL, ResolutionV);
  layout->offset_log_level = offsetof(DEWARP_LOG_SETTINGS, Level);

  layout->last_log_level = LOG_TRACE;
  layout->last_interpolation = CUBIC_INTERPOLATION;
  layout->last_projection = EQUIRECTANGULAR_PANNINI_PROJECTION;
  layout->last_view = QUAD_PTZ_VIEW;
  layout->last_aspect_ratio = FREE_ASPECT_RATIO;
  layout->last_mount = INVERTED_WALL_MOUNT;
  layout->last_camera_type = CIRCULAR_FISHEYE_CAMERA;
  layout->last_image_format = YUV420_PLANAR_IMAGE;
}

/* The built-in model as a C caller receives it. */
void dewarp_c_builtin_model(float* fov_d, unsigned* resolution_h, int* type) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  *fov_d = model.FovD;
  *resolution_h = model.ResolutionH;
  *type = (int)model.Type;
}
