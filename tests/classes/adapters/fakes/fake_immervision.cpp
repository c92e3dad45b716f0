// Stand-in for ImmerVision's libIMV1.so: the class IMV_CameraInterface as the project declares
// it, recording every call. Built a second time without Update (FAKE_PARTIAL) to stand for a
// library that lacks one of the calls.
#include <makers/immervision_api.h>

#include <cstdio>
#include <cstring>

#include "FakeCalls.h"

using fake_makers::HasKnob;
using fake_makers::Knob;
using fake_makers::Record;

namespace {

// Three lenses: name, description.
char g_lensA[] = "FAKE-A0";
char g_lensB[] = "FAKE-B1";
char g_lensC[] = "FAKE-C2";
char g_description[] = "stand-in lens";
char* g_lenses[] = {g_lensA, g_description, g_lensB, g_description, g_lensC, g_description};

const unsigned char kFill = 0xA5;

const char* BufferText(const IMV_Buffer* b, char* text, std::size_t size) {
  std::snprintf(text, size, "%lux%lu+%lu+%lu of %lux%lu %p", b->width, b->height, b->offsetX, b->offsetY,
                b->frameWidth, b->frameHeight, static_cast<void*>(b->data));
  return text;
}

}  // namespace

// The object fills all of its storage, so that storage smaller than the class shows at once
// under the address sanitizer; the destructor checks it is intact.
IMV_CameraInterface::IMV_CameraInterface() {
  std::memset(m_reserved, kFill, sizeof m_reserved);
  Record("IMV_CameraInterface()");
}

IMV_CameraInterface::~IMV_CameraInterface() {
  bool intact = true;
  for (unsigned char byte : m_reserved) {
    intact = intact && byte == kFill;
  }
  Record("~IMV_CameraInterface(%s)", intact ? "intact" : "overwritten");
}

int IMV_CameraInterface::SetVideoParams(IMV_Buffer* input, IMV_Buffer* output, unsigned long colorFormat,
                                        unsigned long viewType, unsigned long mounting) {
  char in[128], out[128];
  Record("SetVideoParams(in=%s, out=%s, %lu, %lu, %lu)", BufferText(input, in, sizeof in),
         BufferText(output, out, sizeof out), colorFormat, viewType, mounting);
  return static_cast<int>(Knob("SetVideoParams", 0));
}

int IMV_CameraInterface::SetLens(char* name) {
  Record("SetLens(%s)", name);
  return static_cast<int>(Knob("SetLens", 0));
}

int IMV_CameraInterface::SetZoomLimits(float minimum, float maximum) {
  Record("SetZoomLimits(%g, %g)", minimum, maximum);
  return static_cast<int>(Knob("SetZoomLimits", 0));
}

int IMV_CameraInterface::SetPosition(float* pan, float* tilt, float* zoom, unsigned long reserved,
                                     unsigned long mode) {
  Record("SetPosition(%g, %g, %g, %lu, %lu)", *pan, *tilt, *zoom, reserved, mode);
  // The library may correct the position in place.
  if (HasKnob("SetPosition.pan")) *pan = static_cast<float>(Knob("SetPosition.pan", 0));
  if (HasKnob("SetPosition.tilt")) *tilt = static_cast<float>(Knob("SetPosition.tilt", 0));
  if (HasKnob("SetPosition.zoom")) *zoom = static_cast<float>(Knob("SetPosition.zoom", 0));
  return static_cast<int>(Knob("SetPosition", 0));
}

#ifndef FAKE_PARTIAL
int IMV_CameraInterface::Update() {
  Record("Update()");
  return static_cast<int>(Knob("Update", 0));
}
#endif

const char* IMV_CameraInterface::GetErrorString(int code) {
  Record("GetErrorString(%d)", code);
  return "stand-in error";
}

char** IMV_CameraInterface::StaticGetLensDescription() { return g_lenses; }

int IMV_CameraInterface::StaticGetLensDescriptionCount() { return 3; }
