// Stand-in for Samsung's libDewarpingLib.so: the class CDewarping as the project declares it,
// recording every call. Built a second time without Update (FAKE_PARTIAL) to stand for a library
// that lacks one of the calls.
#include <makers/samsung_api.h>

#include <cstring>

#include "FakeCalls.h"

using fake_makers::Knob;
using fake_makers::Record;

namespace {
const unsigned char kFill = 0x5A;
}

// The object fills all of its storage (see the ImmerVision stand-in).
CDewarping::CDewarping() {
  std::memset(m_reserved, kFill, sizeof m_reserved);
  Record("CDewarping()");
}

CDewarping::~CDewarping() {
  bool intact = true;
  for (unsigned char byte : m_reserved) {
    intact = intact && byte == kFill;
  }
  Record("~CDewarping(%s)", intact ? "intact" : "overwritten");
}

int CDewarping::SetCameraPosition(int position) {
  Record("SetCameraPosition(%d)", position);
  return 0;
}

int CDewarping::SetViewType(int viewType) {
  Record("SetViewType(%d)", viewType);
  return 0;
}

int CDewarping::GetZoomLimits(float& minimum, float& maximum) {
  minimum = static_cast<float>(Knob("GetZoomLimits.min", 1.0));
  maximum = static_cast<float>(Knob("GetZoomLimits.max", 8.0));
  Record("GetZoomLimits() = %g, %g", minimum, maximum);
  return 0;
}

int CDewarping::SetInputParams(BUFFER* b) {
  Record("SetInputParams(ch=%d, format=%d, %p, %dx%d)", b->ch, b->colorFormat, static_cast<void*>(b->data),
         b->width, b->height);
  return 0;
}

int CDewarping::SetOutputParams(BUFFER* b) {
  // The output must arrive cleared.
  bool cleared = true;
  for (long i = 0; i < static_cast<long>(b->width) * b->height * b->ch; ++i) {
    cleared = cleared && b->data[i] == 0;
  }
  Record("SetOutputParams(ch=%d, format=%d, %p, %dx%d, %s)", b->ch, b->colorFormat,
         static_cast<void*>(b->data), b->width, b->height, cleared ? "cleared" : "not cleared");
  return 0;
}

int CDewarping::SetPtzPosition(int viewType, int reserved, DEWARPING_PTZ* p) {
  Record("SetPtzPosition(%d, %d, %.9g, %.9g, %.9g, %g)", viewType, reserved, p->pan, p->tilt, p->zoom,
         p->reserved);
  return 0;
}

#ifndef FAKE_PARTIAL
int CDewarping::Update() {
  Record("Update()");
  return static_cast<int>(Knob("Update", 1));
}
#endif
