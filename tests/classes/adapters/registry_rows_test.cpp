// Every kind of the registration table has its row, with its flags, and creates its adapter.
#include "ActiDewarper.h"
#include "DewarpWrapper.h"
#include "GeovisionDewarper.h"
#include "ImmervisionDewarper.h"
#include "KestrelDewarper.h"
#include "SamsungDewarper.h"
#include "Sentry360Dewarper.h"
#include "VivotekDewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

struct Row {
  int Type;
  const char* Name;
  bool Position, Lens, Xyr, CameraSpecific;
};

const Row kRows[] = {{DewarperType::Sentry360, "Sentry360", true, false, true, true},
                     {DewarperType::ImmerVision, "ImmerVision", true, true, false, false},
                     {DewarperType::Vivotek, "Vivotek", true, false, false, true},
                     {DewarperType::Samsung, "Samsung", true, false, false, true},
                     {DewarperType::Acti, "ACTi", true, false, false, true},
                     {DewarperType::Inaxsys, "Inaxsys", true, false, false, true},
                     {DewarperType::Geovision, "Geovision", true, false, false, true},
                     {DewarperType::Kestrel, "Kestrel", true, false, false, true}};

TEST(RegistryRows, AllEightKindsAreRegisteredWithTheirFlags) {
  IDewarpRegister* registry = GetRegister();
  ASSERT_NE(registry, nullptr);
  for (const Row& row : kRows) {
    EXPECT_TRUE(DewarperLoaded(row.Type)) << row.Name;
    EXPECT_TRUE(registry->IsLoaded(row.Type)) << row.Name;
    EXPECT_STREQ(registry->GetName(row.Type), row.Name);
    EXPECT_EQ(registry->GetModeByName(row.Name), row.Type);
    EXPECT_EQ(registry->IsCameraSpecific(row.Type), row.CameraSpecific) << row.Name;
    bool lens = !row.Lens, xyr = !row.Xyr, position = !row.Position;
    registry->GetSupportedFeatures(row.Type, lens, xyr, position);
    EXPECT_EQ(lens, row.Lens) << row.Name;
    EXPECT_EQ(xyr, row.Xyr) << row.Name;
    EXPECT_EQ(position, row.Position) << row.Name;
  }
  EXPECT_FALSE(DewarperLoaded(DewarperType::Oncam));
  EXPECT_FALSE(DewarperLoaded(DewarperType::Axis));
}

template <class Adapter>
void ExpectCreates(int type) {
  IDewarper* dewarper = CreateDewarper(type, Params(0, 1, 0, 320, 240, 200));
  ASSERT_NE(dewarper, nullptr) << type;
  EXPECT_NE(dynamic_cast<Adapter*>(dewarper), nullptr) << type;
  DeleteDewarper(dewarper);
}

TEST(RegistryRows, EachRowCreatesItsAdapter) {
  ExpectCreates<Sentry360Dewarper>(DewarperType::Sentry360);
  ExpectCreates<ImmervisionDewarper>(DewarperType::ImmerVision);
  ExpectCreates<VivotekDewarper>(DewarperType::Vivotek);
  ExpectCreates<SamsungDewarper>(DewarperType::Samsung);
  ExpectCreates<ActiDewarper>(DewarperType::Acti);
  ExpectCreates<ActiDewarper>(DewarperType::Inaxsys);
  ExpectCreates<GeovisionDewarper>(DewarperType::Geovision);
  ExpectCreates<KestrelDewarper>(DewarperType::Kestrel);
}

TEST(RegistryRows, ModesOfTheCreatedAdapters) {
  for (int type : {DewarperType::Sentry360, DewarperType::ImmerVision, DewarperType::Vivotek, DewarperType::Samsung,
                   DewarperType::Acti, DewarperType::Geovision}) {
    IDewarper* dewarper = CreateDewarper(type, Params(0, 1));
    ASSERT_NE(dewarper, nullptr);
    EXPECT_EQ(dewarper->Mode(), type);
    DeleteDewarper(dewarper);
  }
  // The Inaxsys kind is the ACTi adapter, which answers its own kind.
  IDewarper* inaxsys = CreateDewarper(DewarperType::Inaxsys, Params(0, 1));
  ASSERT_NE(inaxsys, nullptr);
  EXPECT_EQ(inaxsys->Mode(), DewarperType::Acti);
  DeleteDewarper(inaxsys);
}

}  // namespace
