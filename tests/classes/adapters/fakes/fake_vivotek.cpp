// Stand-in for Vivotek's libfisheyesw.so.1: records every call. Built a second time without
// Fisheye_OneFrame (FAKE_PARTIAL) to stand for a library that lacks one of the calls.
#include <makers/vivotek_api.h>

#include "FakeCalls.h"

using fake_makers::Knob;
using fake_makers::Record;

namespace {
int g_handle;
}

extern "C" {

int Fisheye_Initial(void** handle, unsigned int code) {
  Record("Fisheye_Initial(code=0x%08x)", code);
  const int result = static_cast<int>(Knob("Fisheye_Initial", 0));
  if (result == 0) {
    *handle = &g_handle;
  }
  return result;
}

int Fisheye_SetOption(void* handle, FISHEYE_OPTION* o) {
  const bool ours = handle == &g_handle;
  switch (o->Mask) {
    case FISHEYE_OPTION_ZOOM:
      Record("Fisheye_SetOption(%s, mask=0x%x, zoom=%d)", ours ? "h" : "?", o->Mask, o->Zoom);
      break;
    case FISHEYE_OPTION_TILT:
      Record("Fisheye_SetOption(%s, mask=0x%x, tilt=%d)", ours ? "h" : "?", o->Mask, o->Tilt);
      break;
    case FISHEYE_OPTION_PAN:
    case FISHEYE_OPTION_PAN_WALL:
      Record("Fisheye_SetOption(%s, mask=0x%x, pan=%d)", ours ? "h" : "?", o->Mask, o->Pan);
      break;
    case FISHEYE_OPTION_SCROLL:
      Record("Fisheye_SetOption(%s, mask=0x%x, scroll=%d)", ours ? "h" : "?", o->Mask, o->Scroll);
      break;
    default:
      Record("Fisheye_SetOption(%s, mask=0x%x, in=%ux%u/%u %p, out=%ux%u/%u %p, centre=%u,%u r=%u, "
             "mount=%d, view=%d, display=%ux%u)",
             ours ? "h" : "?", o->Mask, o->InputWidth, o->InputHeight, o->InputStride,
             static_cast<void*>(o->InputBuffer), o->OutputWidth, o->OutputHeight, o->OutputStride,
             static_cast<void*>(o->OutputBuffer), o->CenterX, o->CenterY, o->Radius, o->Mounting,
             o->ViewType, o->DisplayWidth, o->DisplayHeight);
      return static_cast<int>(Knob("Fisheye_SetOption.initial", 0));
  }
  return 0;
}

#ifndef FAKE_PARTIAL
int Fisheye_OneFrame(void* handle) {
  Record("Fisheye_OneFrame(%s)", handle == &g_handle ? "h" : "?");
  return static_cast<int>(Knob("Fisheye_OneFrame", 0));
}
#endif

int Fisheye_Release(void** handle) {
  Record("Fisheye_Release(%s)", *handle == &g_handle ? "h" : "?");
  *handle = nullptr;
  return 0;
}
}
