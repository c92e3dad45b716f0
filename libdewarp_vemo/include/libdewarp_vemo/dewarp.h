/*
 * libdewarp public C interface: records, enumerations, the channel handle, the log callback type,
 * the nineteen dewarp_* functions and the built-in camera model.
 *
 * Every record crosses the interface by pointer and has a fixed layout: every field is 32 bits wide
 * on the 32-bit target, in the order given here. The header compiles as C and as C++.
 *
 * Functions returning int return 0 on success and -1 on failure, with the reason left in errno:
 * EINVAL (22) invalid handle, enumeration or image description; EFAULT (14) null pointer or channel
 * without camera; ENOMEM (12) nothing could be created; EDOM (33) value out of range; EDEADLK (35)
 * lock failure. errno is not cleared on success.
 */
#ifndef LIBDEWARP_VEMO_DEWARP_H
#define LIBDEWARP_VEMO_DEWARP_H

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Marks the functions the shared library exports (only the C interface is exported). */
#ifndef DEWARP_API
#define DEWARP_API __attribute__((visibility("default")))
#endif

/* In C++ every enumeration gets int as its fixed underlying type, so that any 32-bit value a caller
 * hands in is a valid value of the type and can be checked and refused, not undefined. In C an
 * enumeration with these enumerators is an int as well; the layout is the same in both languages. */
#ifdef __cplusplus
#define DEWARP_ENUM_BASE : int
#else
#define DEWARP_ENUM_BASE
#endif

/* ---- Scalar types ---------------------------------------------------------------------------- */

typedef float DEWARP_FLOAT;

/* Opaque channel handle: the address of the engine's channel object; null is never a channel. */
typedef void* DEWARP_CHANNEL;

/* The caller's log function: a printf-style format and its argument list. Null turns logging off. */
typedef int (*DEWARP_LOG_FUNCTION)(const char* Format, va_list Arguments);

/* ---- Enumerations ---------------------------------------------------------------------------- */

typedef enum DEWARP_LOG_LEVEL DEWARP_ENUM_BASE {
  LOG_ERROR = 0,
  LOG_WARNING = 1,
  LOG_INFO = 2,
  LOG_DEBUG = 3,
  LOG_TRACE = 4
} DEWARP_LOG_LEVEL;

typedef enum DEWARP_INTERPOLATION DEWARP_ENUM_BASE {
  NEAREST_NEIGHBOUR_INTERPOLATION = 0,
  LINEAR_INTERPOLATION = 1,
  CUBIC_INTERPOLATION = 2
} DEWARP_INTERPOLATION;

typedef enum DEWARP_PROJECTION DEWARP_ENUM_BASE {
  RECTILINEAR_PROJECTION = 0,
  CYLINDRICAL_PROJECTION = 1,
  EQUIRECTANGULAR_PROJECTION = 2,
  MERCATOR_PROJECTION = 3,
  LAMBERT_CYLINDRICAL_PROJECTION = 4,
  MILLER_CYLINDRICAL_PROJECTION = 5,
  PANNINI_PROJECTION = 6,
  ARCHITECTURAL_PROJECTION = 7,
  EQUIRECTANGULAR_PANNINI_PROJECTION = 8
} DEWARP_PROJECTION;

typedef enum DEWARP_VIEW DEWARP_ENUM_BASE {
  SINGLE_PANORAMIC_VIEW = 0,
  DUAL_PANORAMIC_VIEW = 1,
  QUAD_PANORAMIC_VIEW = 2,
  SINGLE_PTZ_VIEW = 3,
  DUAL_PTZ_VIEW = 4,
  QUAD_PTZ_VIEW = 5
} DEWARP_VIEW;

typedef enum DEWARP_ASPECT_RATIO DEWARP_ENUM_BASE {
  SCALE_TO_ASPECT_RATIO = 0,
  CROP_TO_ASPECT_RATIO = 1,
  FREE_ASPECT_RATIO = 2
} DEWARP_ASPECT_RATIO;

/* Maker-only part of the interface: how the camera is mounted and what kind of lens it has. */
typedef enum DEWARP_INTERNAL_CAMERA_MOUNT DEWARP_ENUM_BASE {
  CEILING_MOUNT = 0,
  FLOOR_MOUNT = 1,
  WALL_MOUNT = 2,
  INVERTED_WALL_MOUNT = 3
} DEWARP_INTERNAL_CAMERA_MOUNT;

typedef enum DEWARP_INTERNAL_CAMERA_TYPE DEWARP_ENUM_BASE {
  RECTILINEAR_CAMERA = 0,
  CIRCULAR_FISHEYE_CAMERA = 1
} DEWARP_INTERNAL_CAMERA_TYPE;

typedef enum DEWARP_IMAGE_FORMAT DEWARP_ENUM_BASE {
  RGBA32_PACKED_IMAGE = 0,
  YUV422_PACKED_IMAGE = 1,
  YUV420_PACKED_IMAGE = 2,
  YUV422_PLANAR_IMAGE = 3,
  YUV420_PLANAR_IMAGE = 4
} DEWARP_IMAGE_FORMAT;

/* ---- Records --------------------------------------------------------------------------------- */

typedef struct DEWARP_LOG_SETTINGS {
  DEWARP_LOG_FUNCTION Function;
  DEWARP_LOG_LEVEL Level;
} DEWARP_LOG_SETTINGS;

/* Pixels. */
typedef struct DEWARP_RESOLUTION {
  unsigned int Width;
  unsigned int Height;
} DEWARP_RESOLUTION;

/* Width and height in pixels; Stride is the distance between row starts as the format defines it. */
typedef struct DEWARP_IMAGE_INFO {
  DEWARP_IMAGE_FORMAT Format;
  unsigned int Width;
  unsigned int Height;
  unsigned int Stride;
} DEWARP_IMAGE_INFO;

/* Data is the caller's pixel buffer; the engine never owns it. */
typedef struct DEWARP_IMAGE {
  DEWARP_IMAGE_INFO Info;
  void* Data;
} DEWARP_IMAGE;

typedef struct DEWARP_PTZ_POSITION {
  DEWARP_FLOAT Pan;
  DEWARP_FLOAT Tilt;
  DEWARP_FLOAT Roll;
  DEWARP_FLOAT Zoom;
} DEWARP_PTZ_POSITION;

/* Inclusive bounds. */
typedef struct DEWARP_PTZ_RANGE {
  DEWARP_FLOAT PanLo;
  DEWARP_FLOAT PanHi;
  DEWARP_FLOAT TiltLo;
  DEWARP_FLOAT TiltHi;
  DEWARP_FLOAT RollLo;
  DEWARP_FLOAT RollHi;
  DEWARP_FLOAT ZoomLo;
  DEWARP_FLOAT ZoomHi;
} DEWARP_PTZ_RANGE;

typedef struct DEWARP_CHANNEL_SETTINGS {
  DEWARP_VIEW View;
  DEWARP_PROJECTION Projection;
  DEWARP_ASPECT_RATIO AspectRatio;
  DEWARP_INTERPOLATION Interpolation;
} DEWARP_CHANNEL_SETTINGS;

/* Fields of view in degrees (diagonal, horizontal, vertical); the lens image's resolution in pixels. */
typedef struct DEWARP_INTERNAL_CAMERA_MODEL {
  DEWARP_INTERNAL_CAMERA_TYPE Type;
  DEWARP_FLOAT FovD;
  DEWARP_FLOAT FovH;
  DEWARP_FLOAT FovV;
  unsigned int ResolutionH;
  unsigned int ResolutionV;
} DEWARP_INTERNAL_CAMERA_MODEL;

/* ---- Layout checks --------------------------------------------------------------------------- */

#ifdef __cplusplus
#define DEWARP_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define DEWARP_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* Records without pointers have the same size on both targets. */
DEWARP_STATIC_ASSERT(sizeof(DEWARP_INTERNAL_CAMERA_MODEL) == 24, "camera model record is 24 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_CHANNEL_SETTINGS) == 16, "channel settings record is 16 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_PTZ_POSITION) == 16, "PTZ position record is 16 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_PTZ_RANGE) == 32, "PTZ range record is 32 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_RESOLUTION) == 8, "resolution record is 8 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_IMAGE_INFO) == 16, "image info record is 16 bytes");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_VIEW) == 4, "enumerations are 32 bits wide");
#if defined(__i386__)
/* On the 32-bit target pointers are 32 bits wide as well. */
DEWARP_STATIC_ASSERT(sizeof(DEWARP_LOG_SETTINGS) == 8, "log settings record is 8 bytes on i386");
DEWARP_STATIC_ASSERT(sizeof(DEWARP_IMAGE) == 20, "image record is 20 bytes on i386");
#endif

/* ---- Functions ------------------------------------------------------------------------------- */

/* Process-wide log callback and level; null settings turn logging off. */
DEWARP_API int dewarp_set_log(const DEWARP_LOG_SETTINGS* Settings);

/* Channels. A null settings pointer opens a channel with the default settings. */
DEWARP_API DEWARP_CHANNEL dewarp_open(const DEWARP_CHANNEL_SETTINGS* ChannelSettings);
DEWARP_API DEWARP_CHANNEL dewarp_internal_open(const DEWARP_INTERNAL_CAMERA_MODEL* Model,
                                               DEWARP_INTERNAL_CAMERA_MOUNT Mount,
                                               const DEWARP_CHANNEL_SETTINGS* ChannelSettings);
DEWARP_API void dewarp_close(DEWARP_CHANNEL ChannelId);
DEWARP_API int dewarp_channel_valid(DEWARP_CHANNEL ChannelId);

/* Settings. */
DEWARP_API int dewarp_set_view(DEWARP_CHANNEL ChannelId, DEWARP_VIEW View);
DEWARP_API int dewarp_set_projection(DEWARP_CHANNEL ChannelId, DEWARP_VIEW View, DEWARP_PROJECTION Projection);
DEWARP_API int dewarp_set_aspect_ratio(DEWARP_CHANNEL ChannelId, DEWARP_ASPECT_RATIO AspectRatio);
DEWARP_API int dewarp_set_interpolation(DEWARP_CHANNEL ChannelId, DEWARP_INTERPOLATION Interpolation);
DEWARP_API int dewarp_get_native_resolution(DEWARP_CHANNEL ChannelId, DEWARP_RESOLUTION* Resolution);

/* PTZ. A null position given to dewarp_set_ptz resets the view's PTZ position. */
DEWARP_API int dewarp_set_ptz(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_POSITION* Position);
DEWARP_API int dewarp_get_ptz(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_POSITION* Position);
DEWARP_API int dewarp_get_ptz_range(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_RANGE* Range);
DEWARP_API int dewarp_calc_ptz_position(DEWARP_CHANNEL ChannelId, int X, int Y, float MaxZoom,
                                        DEWARP_PTZ_POSITION* Position);

/* Frames. */
DEWARP_API int dewarp_image(DEWARP_CHANNEL ChannelId, const DEWARP_IMAGE* Warped, DEWARP_IMAGE* Dewarped);

/* Camera model and mount (maker-only part). */
DEWARP_API int dewarp_internal_set_model(DEWARP_CHANNEL ChannelId, const DEWARP_INTERNAL_CAMERA_MODEL* Model);
DEWARP_API int dewarp_internal_get_model(DEWARP_CHANNEL ChannelId, DEWARP_INTERNAL_CAMERA_MODEL* Model);
DEWARP_API int dewarp_internal_set_mount(DEWARP_CHANNEL ChannelId, DEWARP_INTERNAL_CAMERA_MOUNT Mount);
/* Returns WALL_MOUNT, the default mount, for a null handle. */
DEWARP_API DEWARP_INTERNAL_CAMERA_MOUNT dewarp_internal_get_mount(DEWARP_CHANNEL ChannelId);

/* The built-in camera model, the Norvik Kestrel Mk2 fisheye lens, returned by value. */
DEWARP_API DEWARP_INTERNAL_CAMERA_MODEL GetNorvikKestrelMk2Camera(void);

#ifdef __cplusplus
}
#endif

#endif /* LIBDEWARP_VEMO_DEWARP_H */
