// ImmerVision's dewarping library, libIMV1.so: the class IMV_CameraInterface and its frame
// record IMV_Buffer, declared from what the plug-in uses of them.
//
// Marked "MAKER:" below is what the maker's own header fixes and may need correcting here: the
// exact parameter types (they are part of the exported C++ names the plug-in resolves, so a
// mismatch shows as a missing call rather than as a wrong one), record layouts and the size of
// the object.
#ifndef DEWARPWRAPPER_MAKERS_IMMERVISION_API_H
#define DEWARPWRAPPER_MAKERS_IMMERVISION_API_H

// One frame: the part to use (size and offsets), the full frame's size and its pixels.
// MAKER: field types and order.
struct IMV_Buffer {
  unsigned long width;
  unsigned long height;
  unsigned long offsetX;
  unsigned long offsetY;
  unsigned long frameWidth;
  unsigned long frameHeight;
  unsigned char* data;
};

class IMV_CameraInterface {
public:
  IMV_CameraInterface();
  ~IMV_CameraInterface();

  // Describes the input and output frames, their colour format, the view type and mounting.
  int SetVideoParams(IMV_Buffer* input, IMV_Buffer* output, unsigned long colorFormat,
                     unsigned long viewType, unsigned long mounting);
  // Chooses a lens by its name from the lens description table.
  int SetLens(char* name);
  int SetZoomLimits(float minimum, float maximum);
  // Moves the view; the library may correct the three values in place.
  // MAKER: the meaning of the two trailing arguments (the plug-in passes 0 and 1).
  int SetPosition(float* pan, float* tilt, float* zoom, unsigned long reserved, unsigned long mode);
  // Dewarps the input frame into the output frame; 0 on success.
  int Update();
  // Text of a result code.
  const char* GetErrorString(int code);

  // The lens table: StaticGetLensDescriptionCount() pairs of texts, the lens name first.
  static char** StaticGetLensDescription();
  static int StaticGetLensDescriptionCount();

  // MAKER: the object's real size. The plug-in allocates sizeof(IMV_CameraInterface) and lets the
  // library's constructor build its object there; this reserve must be at least the real size.
  enum { ReservedBytes = 16384 };

private:
  unsigned char m_reserved[ReservedBytes];
};

#endif
