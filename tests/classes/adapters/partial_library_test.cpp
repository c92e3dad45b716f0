// Maker libraries that are present but lack one of the calls the adapters make: each counts as
// absent. Run with the incomplete stand-ins on the loader's path.
#include <cstring>

#include "DewarpWrapper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

struct Incomplete {
  int Type;
  const char* Library;
  const char* Missing;  // the call the incomplete stand-in lacks
};

const Incomplete kIncomplete[] = {
    {DewarperType::ImmerVision, "libIMV1.so", "_ZN19IMV_CameraInterface6UpdateEv"},
    {DewarperType::Vivotek, "libfisheyesw.so.1", "Fisheye_OneFrame"},
    {DewarperType::Samsung, "libDewarpingLib.so", "_ZN10CDewarping6UpdateEv"},
    {DewarperType::Acti, "libFisheyeSDK.so", "FishEye_Transform"},
    {DewarperType::Inaxsys, "libFisheyeSDK.so", "FishEye_Transform"},
    {DewarperType::Geovision, "libGeoFESDK.so", "IFishEye_Release"}};

class PartialLibrary : public FakeLogTest {};

TEST_F(PartialLibrary, TheLibrariesArePresentButIncomplete) {
  for (const Incomplete& c : kIncomplete) {
    void* handle = dlopen(c.Library, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << c.Library;
    EXPECT_EQ(dlsym(handle, c.Missing), nullptr) << c.Missing;
    dlclose(handle);
  }
}

TEST_F(PartialLibrary, AnAdapterWhoseLibraryLacksACallIsNotReadyAndCallsNothing) {
  for (const Incomplete& c : kIncomplete) {
    IDewarper* dewarper = CreateDewarper(c.Type, Params(1, 1));
    ASSERT_NE(dewarper, nullptr) << c.Type;
    EXPECT_FALSE(dewarper->Check()) << c.Type;
    const Frame frame = RequestFrame(*dewarper, 640, 480, 640, 480);
    EXPECT_FALSE(frame.InputOk) << c.Type;
    EXPECT_FALSE(frame.OutputOk) << c.Type;
    dewarper->SetPosition(1.0f, 2.0f, 3.0f);
    dewarper->SetSubMode(2);
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(dewarper->GetLens(0, buffer, sizeof buffer), 0);
    EXPECT_EQ(buffer[0], '#');
    DeleteDewarper(dewarper);
    // Not one call reached the incomplete library.
    EXPECT_TRUE(Calls().empty()) << c.Type;
  }
}

}  // namespace
