// Vivotek's dewarping library, libfisheyesw.so.1: C functions over an opaque handle, configured
// through one option record whose selection mask says which fields a call applies.
//
// Marked "MAKER:" below is what the maker's own header fixes and may need correcting here.
#ifndef DEWARPWRAPPER_MAKERS_VIVOTEK_API_H
#define DEWARPWRAPPER_MAKERS_VIVOTEK_API_H

// Selection flags of FISHEYE_OPTION::Mask.
// MAKER: the meaning of the low bits inside the initial set; the plug-in passes the set whole.
enum {
  FISHEYE_OPTION_INITIAL = 0x20FF,   // frames, fisheye circle, mounting, view, output size
  FISHEYE_OPTION_PAN_WALL = 0x100,   // Pan, for a wall mounting
  FISHEYE_OPTION_TILT = 0x200,       // Tilt
  FISHEYE_OPTION_PAN = 0x400,        // Pan, for a ceiling or floor mounting
  FISHEYE_OPTION_ZOOM = 0x800,       // Zoom
  FISHEYE_OPTION_SCROLL = 0x1000     // Scroll
};

// MAKER: the record's name, field types and order (the fields are those the plug-in sets).
struct FISHEYE_OPTION {
  unsigned int Mask;
  unsigned int InputWidth;
  unsigned int InputHeight;
  unsigned int InputStride;
  unsigned char* InputBuffer;
  unsigned int OutputWidth;
  unsigned int OutputHeight;
  unsigned int OutputStride;
  unsigned char* OutputBuffer;
  unsigned int CenterX;
  unsigned int CenterY;
  unsigned int Radius;
  int Mounting;
  int ViewType;   // 0 single PTZ view, 1 panorama, 2 the further view kind
  int Pan;
  int Tilt;
  int Zoom;
  int Scroll;
  unsigned int DisplayWidth;    // the output size once more
  unsigned int DisplayHeight;
};

// MAKER: the library's fixed initialisation code.
const unsigned int FISHEYE_INITIAL_CODE = 0x56495654u;

extern "C" {
// Creates a handle; 0 on success.
int Fisheye_Initial(void** handle, unsigned int code);
// Applies the fields the option's mask selects; 0 on success.
int Fisheye_SetOption(void* handle, FISHEYE_OPTION* option);
// Dewarps the input frame into the output frame; 0 on success.
int Fisheye_OneFrame(void* handle);
// Releases the handle and nulls it.
int Fisheye_Release(void** handle);
}

#endif
