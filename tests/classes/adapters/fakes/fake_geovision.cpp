// Stand-in for Geovision's libGeoFESDK.so: records every call. Built a second time without
// IFishEye_Release (FAKE_PARTIAL) to stand for a library that lacks one of the calls.
#include <makers/geovision_api.h>

#include <cstring>

#include "FakeCalls.h"

using fake_makers::Knob;
using fake_makers::Record;

namespace {

class FakeFishEye final : public IFishEye {
public:
  explicit FakeFishEye(int number) : m_number(number) {}
  ~FakeFishEye() = default;

  int GvFE_Initialize(int camera, int inputWidth, int inputHeight, int outputWidth, int outputHeight,
                      int bytesPerPixel) override {
    Record("#%d GvFE_Initialize(%d, %d, %d, %d, %d, %d)", m_number, camera, inputWidth, inputHeight,
           outputWidth, outputHeight, bytesPerPixel);
    return static_cast<int>(Knob("GvFE_Initialize", 0));
  }
  int GvFESetPosition(int camera, FE_ViewParams* v) override {
    Record("#%d GvFESetPosition(%d, mode=%d campos=%d frame=%d u=%d v=%d lr=%d sr=%d)", m_number, camera,
           v->ViewMode, v->CamPos, v->SetFrame, v->FE_u, v->FE_v, v->FE_Lr, v->FE_Sr);
    return 0;
  }
  int GvFE_ParamsUpdated(int camera, FE_EventParams* event, FE_ViewParams* v) override {
    FE_EventParams zero;
    std::memset(&zero, 0, sizeof zero);
    Record("#%d GvFE_ParamsUpdated(%d, event=%s, mode=%d campos=%d frame=%d u=%d v=%d lr=%d sr=%d)", m_number,
           camera, std::memcmp(event, &zero, sizeof zero) == 0 ? "zero" : "set", v->ViewMode, v->CamPos,
           v->SetFrame, v->FE_u, v->FE_v, v->FE_Lr, v->FE_Sr);
    return 0;
  }
  int SetAbsolutePTZ(int camera, short pan, short tilt, short zoom, int mode) override {
    Record("#%d SetAbsolutePTZ(%d, %d, %d, %d, %d)", m_number, camera, pan, tilt, zoom, mode);
    return 0;
  }
  int GvFE_VideoInput(int camera, unsigned char* input, unsigned char* output) override {
    Record("#%d GvFE_VideoInput(%d, %p, %p)", m_number, camera, static_cast<void*>(input),
           static_cast<void*>(output));
    return static_cast<int>(Knob("GvFE_VideoInput", 0));
  }
  int GvFE_Close(int camera) override {
    Record("#%d GvFE_Close(%d)", m_number, camera);
    return 0;
  }

private:
  int m_number;
};

}  // namespace

extern "C" {

IFishEye* IFishEye_Create() {
  if (Knob("IFishEye_Create.null", 0) != 0) {
    Record("IFishEye_Create() = null");
    return nullptr;
  }
  // Objects are numbered from 1 in each test (Reset forgets the count).
  const int number = static_cast<int>(Knob("IFishEye_Create.count", 0)) + 1;
  fake_makers::SetKnob("IFishEye_Create.count", number);
  Record("IFishEye_Create() = #%d", number);
  return new FakeFishEye(number);
}

#ifndef FAKE_PARTIAL
void IFishEye_Release(IFishEye* fisheye) {
  FakeFishEye* object = static_cast<FakeFishEye*>(fisheye);
  Record("IFishEye_Release()");
  delete object;
}
#endif
}
