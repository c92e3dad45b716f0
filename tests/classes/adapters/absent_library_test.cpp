// A host without any maker library: every maker adapter is present in the registry but not
// ready, refuses frames and leaves the host unharmed whatever it is asked; the Kestrel and
// Sentry360 kinds work fully. Run with no stand-in library on the loader's path.
#include <cstring>
#include <memory>

#include "ActiDewarper.h"
#include "DewarpWrapper.h"
#include "GeovisionDewarper.h"
#include "ImmervisionDewarper.h"
#include "SamsungDewarper.h"
#include "VivotekDewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

const char* const kMakerLibraries[] = {"libIMV1.so", "libfisheyesw.so.1", "libDewarpingLib.so", "libFisheyeSDK.so",
                                       "libGeoFESDK.so"};
const int kMakerKinds[] = {DewarperType::ImmerVision, DewarperType::Vivotek, DewarperType::Samsung,
                           DewarperType::Acti,        DewarperType::Inaxsys, DewarperType::Geovision};

// Drives a dewarper through everything a host may do, in an awkward order.
void DriveEverything(IDewarper& dewarper) {
  dewarper.SetPosition(10.0f, 20.0f, 30.0f);
  dewarper.Pan(1, 3);
  dewarper.Tilt(-1, 0);
  dewarper.Zoom(1, 2);
  float pan = 0, tilt = 0, zoom = 0;
  dewarper.GetPosition(pan, tilt, zoom);
  for (int subMode : {2, 3, 0, 1}) {
    dewarper.SetSubMode(subMode);  // would release a handle on some kinds
    dewarper.IsSubModeSupported(subMode);
    dewarper.CanPan(subMode);
    dewarper.CanTilt(subMode);
    dewarper.CanZoom(subMode);
    dewarper.AdjustAspectRatio(1.0f, 2.0f);
  }
  dewarper.Clear();
  dewarper.GetNeedsRotation();
}

TEST(AbsentLibrary, NoMakerLibraryIsOnTheLoadersPath) {
  for (const char* library : kMakerLibraries) {
    EXPECT_FALSE(LibraryPresent(library)) << library << " must be absent for this run";
  }
}

TEST(AbsentLibrary, EveryMakerKindIsRegisteredButNotReady) {
  for (int type : kMakerKinds) {
    EXPECT_TRUE(DewarperLoaded(type)) << type;
    IDewarper* dewarper = CreateDewarper(type, Params(0, 1, 0, 320, 240, 200));
    ASSERT_NE(dewarper, nullptr) << type;
    EXPECT_FALSE(dewarper->Check()) << type;
    const Frame frame = RequestFrame(*dewarper, 640, 480, 640, 480);
    EXPECT_FALSE(frame.InputOk) << type;
    EXPECT_FALSE(frame.OutputOk) << type;
    EXPECT_EQ(frame.Input, nullptr) << type;
    EXPECT_EQ(frame.Output, nullptr) << type;
    DriveEverything(*dewarper);
    EXPECT_FALSE(dewarper->Check()) << type;
    DeleteDewarper(dewarper);
  }
}

// The operations that would reach the library outside Check do nothing: configuration and
// position pushes on each adapter directly.
TEST(AbsentLibrary, CallsThatWouldReachTheLibraryDoNothing) {
  std::unique_ptr<IDewarperBase> dewarpers[] = {
      std::unique_ptr<IDewarperBase>(new ImmervisionDewarper(Params(0, 1))),
      std::unique_ptr<IDewarperBase>(new VivotekDewarper(Params(0, 1))),
      std::unique_ptr<IDewarperBase>(new SamsungDewarper(Params(0, 1))),
      std::unique_ptr<IDewarperBase>(new ActiDewarper(Params(0, 1))),
      std::unique_ptr<IDewarperBase>(new GeovisionDewarper(Params(0, 1)))};
  for (auto& dewarper : dewarpers) {
    EXPECT_FALSE(dewarper->InitOptions());
    dewarper->UpdatePosition();
    DriveEverything(*dewarper);
    EXPECT_FALSE(dewarper->InitOptions());
  }
}

TEST(AbsentLibrary, NoLensNamesWithoutTheLibrary) {
  char buffer[16];
  std::memset(buffer, '#', sizeof buffer);
  ImmervisionDewarper dewarper(Params(0, 0));
  EXPECT_EQ(dewarper.GetLens(0, buffer, sizeof buffer), 0);
  EXPECT_EQ(GetRegister()->GetLens(DewarperType::ImmerVision, 0, buffer, sizeof buffer), 0);
  for (char c : buffer) {
    EXPECT_EQ(c, '#');
  }
}

// Kestrel and Sentry360 need no maker library.
TEST(HostWithoutMakers, KestrelAndSentry360WorkFully) {
  for (int type : {DewarperType::Kestrel, DewarperType::Sentry360}) {
    IDewarper* dewarper = CreateDewarper(type, Params(0, 1, 0, 320, 240, 200));
    ASSERT_NE(dewarper, nullptr) << type;
    EXPECT_EQ(dewarper->Mode(), type);
    EXPECT_TRUE(dewarper->Check()) << type;
    dewarper->Clear();
    for (int subMode : {1, 2}) {
      dewarper->SetSubMode(subMode);
      for (int i = 0; i < 3; ++i) {
        const Frame frame = RequestFrame(*dewarper, 640, 480, 320, 240);
        EXPECT_TRUE(frame.InputOk) << type << " sub-mode " << subMode;
        EXPECT_TRUE(frame.OutputOk) << type << " sub-mode " << subMode;
        dewarper->Pan(1, 0);
      }
    }
    DeleteDewarper(dewarper);
  }
}

}  // namespace
