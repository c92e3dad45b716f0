// Samsung's dewarping library, libDewarpingLib.so: the class CDewarping, declared from what the
// plug-in uses of it. Frames are described by the host's BUFFER record.
//
// Marked "MAKER:" below is what the maker's own header fixes and may need correcting here: the
// exact parameter types (they are part of the exported C++ names the plug-in resolves, so a
// mismatch shows as a missing call rather than as a wrong one), record layouts and the size of
// the object.
#ifndef DEWARPWRAPPER_MAKERS_SAMSUNG_API_H
#define DEWARPWRAPPER_MAKERS_SAMSUNG_API_H

#include "../Buffer.h"

// A view position: pan, tilt and zoom, then a field the plug-in leaves zero.
// MAKER: the record's name and layout.
struct DEWARPING_PTZ {
  double pan;
  double tilt;
  double zoom;
  double reserved;
};

class CDewarping {
public:
  CDewarping();
  ~CDewarping();

  // Camera position: 0 ceiling, 1 floor, 2 wall.
  int SetCameraPosition(int position);
  // View type: 1 panorama, 2 the further view kind, 4 the single PTZ view.
  int SetViewType(int viewType);
  // The zoom range of the current view.
  int GetZoomLimits(float& minimum, float& maximum);
  int SetInputParams(BUFFER* input);
  int SetOutputParams(BUFFER* output);
  // MAKER: the meaning of the second argument (the plug-in passes 0).
  int SetPtzPosition(int viewType, int reserved, DEWARPING_PTZ* position);
  // Dewarps the input frame into the output frame; 1 on success.
  int Update();

  // MAKER: the object's real size. The plug-in allocates sizeof(CDewarping) and lets the
  // library's constructor build its object there; this reserve must be at least the real size.
  enum { ReservedBytes = 16384 };

private:
  unsigned char m_reserved[ReservedBytes];
};

#endif
