// ACTi's dewarping library, libFisheyeSDK.so (also used for Inaxsys cameras): C functions over
// an opaque interface handle; every frame is transformed with its view mode, image description,
// position parameters and output description.
//
// Marked "MAKER:" below is what the maker's own header fixes and may need correcting here: the
// records' fields beyond those the plug-in sets, their order and types, and the codes.
#ifndef DEWARPWRAPPER_MAKERS_ACTI_API_H
#define DEWARPWRAPPER_MAKERS_ACTI_API_H

// View mode of one transform. MAKER: the enumerators' values.
enum EN_FISHEYE_MODE {
  FISHEYE_MODE_PTZ = 1,            // single PTZ view
  FISHEYE_MODE_PANORAMA = 2,       // panorama
  FISHEYE_MODE_DUAL_PANORAMA = 3   // the further view kind of mounted cameras
};

// Camera mounting of ST_FISHEYE_PARAMETER. MAKER: the values.
enum {
  FISHEYE_MOUNT_WALL = 0,
  FISHEYE_MOUNT_CEILING = 1,
  FISHEYE_MOUNT_FLOOR = 2
};

// The source frame. MAKER: fields and order.
struct ST_FISHEYE_IMGINFO {
  int Width;
  int Height;
  int Stride;          // bytes per row
  unsigned char* Data;
};

// Mounting and position, in the library's units. MAKER: fields and order.
struct ST_FISHEYE_PARAMETER {
  int Mount;
  int Pan;
  int Tilt;
  int Zoom;
};

// The destination frame. MAKER: fields and order.
struct ST_FISHEYE_OUT {
  int Width;
  int Height;
  int Stride;          // bytes per row
  unsigned char* Data;
};

// MAKER: the fixed channel count passed to FishEye_Initial.
const int FISHEYE_CHANNEL_COUNT = 1;

extern "C" {
// Opens an interface; null when none could be opened.
void* FishEye_OpenInterface();
// Prepares the interface for `count` channels; 0 on success. MAKER: result convention.
int FishEye_Initial(void* handle, int count, bool enable);
// Dewarps one frame; 0 on success.
int FishEye_Transform(void* handle, EN_FISHEYE_MODE mode, ST_FISHEYE_IMGINFO* image,
                      ST_FISHEYE_PARAMETER* parameters, ST_FISHEYE_OUT* out);
int FishEye_Release(void* handle);
int FishEye_CloseInterface(void* handle);
}

#endif
