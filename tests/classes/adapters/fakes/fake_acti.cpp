// Stand-in for ACTi's libFisheyeSDK.so: records every call. Built a second time without
// FishEye_Transform (FAKE_PARTIAL) to stand for a library that lacks one of the calls.
#include <makers/acti_api.h>

#include "FakeCalls.h"

using fake_makers::Knob;
using fake_makers::Record;

namespace {
int g_interface;
const char* Name(void* handle) { return handle == &g_interface ? "h" : "?"; }
}  // namespace

extern "C" {

void* FishEye_OpenInterface() {
  Record("FishEye_OpenInterface()");
  return Knob("FishEye_OpenInterface.null", 0) != 0 ? nullptr : &g_interface;
}

int FishEye_Initial(void* handle, int count, bool enable) {
  Record("FishEye_Initial(%s, count=%d, %s)", Name(handle), count, enable ? "true" : "false");
  return static_cast<int>(Knob("FishEye_Initial", 0));
}

#ifndef FAKE_PARTIAL
int FishEye_Transform(void* handle, EN_FISHEYE_MODE mode, ST_FISHEYE_IMGINFO* image,
                      ST_FISHEYE_PARAMETER* parameters, ST_FISHEYE_OUT* out) {
  Record("FishEye_Transform(%s, mode=%d, in=%dx%d/%d %p, mount=%d pan=%d tilt=%d zoom=%d, out=%dx%d/%d %p)",
         Name(handle), static_cast<int>(mode), image->Width, image->Height, image->Stride,
         static_cast<void*>(image->Data), parameters->Mount, parameters->Pan, parameters->Tilt,
         parameters->Zoom, out->Width, out->Height, out->Stride, static_cast<void*>(out->Data));
  return static_cast<int>(Knob("FishEye_Transform", 0));
}
#endif

int FishEye_Release(void* handle) {
  Record("FishEye_Release(%s)", Name(handle));
  return 0;
}

int FishEye_CloseInterface(void* handle) {
  Record("FishEye_CloseInterface(%s)", Name(handle));
  return 0;
}
}
