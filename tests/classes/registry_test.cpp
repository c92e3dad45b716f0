#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "DewarperRegistry.h"
#include "KestrelDewarper.h"

namespace {

// Exposes the registry's rows and dewarper cache.
class InspectableRegistry : public DewarperRegistry {
public:
  using DewarperRegistry::Find;
  using DewarperRegistry::m_dewarpers;
  using DewarperRegistry::m_info;
  using DewarperRegistry::Register;
};

// A lens-listing kind, to exercise the registry's lens queries.
class LensDewarper : public IDewarperBaseT<DewarperType::ImmerVision> {
public:
  explicit LensDewarper(const DewarpParams_t& params) : IDewarperBaseT<DewarperType::ImmerVision>(params) {
    ++created;
  }
  ~LensDewarper() override { ++destroyed; }
  bool Check() override { return true; }
  void Clear() override {}
  void UpdatePosition() override {}
  void SetDewarperType(DewarperType::DewarperTypes type) override { toldType = type; }
  int GetLens(int index, char* buffer, size_t size) override {
    lastIndex = index;
    return index == 0 ? std::snprintf(buffer, size, "RPL Number %s", "B0") : 0;
  }
  static int created;
  static int destroyed;
  static int lastIndex;
  static int toldType;
};
int LensDewarper::created = 0;
int LensDewarper::destroyed = 0;
int LensDewarper::lastIndex = -1;
int LensDewarper::toldType = -1;

}  // namespace

TEST(DewarperRegistry, KestrelRowAsRegistered) {
  InspectableRegistry registry;
  const DewarperRegistry::DewarpInfo* row = registry.Find(DewarperType::Kestrel);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->DllName, nullptr);
  EXPECT_STREQ(row->DewarperName, "Kestrel");
  EXPECT_TRUE(row->SupportsPosition);
  EXPECT_FALSE(row->SupportsLens);
  EXPECT_FALSE(row->SupportsXYR);
  EXPECT_TRUE(row->IsCameraSpecific);
  EXPECT_FALSE(row->Loaded);
}

TEST(DewarperRegistry, DescribesTheKestrelKind) {
  DewarperRegistry registry;
  EXPECT_STREQ(registry.GetName(DewarperType::Kestrel), "Kestrel");
  EXPECT_TRUE(registry.IsLoaded(DewarperType::Kestrel));
  EXPECT_TRUE(registry.IsCameraSpecific(DewarperType::Kestrel));
  bool lens = true, xyr = true, position = false;
  registry.GetSupportedFeatures(DewarperType::Kestrel, lens, xyr, position);
  EXPECT_FALSE(lens);
  EXPECT_FALSE(xyr);
  EXPECT_TRUE(position);
  EXPECT_EQ(registry.GetModeByName("Kestrel"), DewarperType::Kestrel);
}

TEST(DewarperRegistry, ModeCountIsTheNumberOfKindsNotOfRows) {
  InspectableRegistry registry;
  EXPECT_EQ(registry.GetModeCount(), 11);
  EXPECT_EQ(registry.m_info.size(), 8u);
  EXPECT_STREQ(registry.GetName(DewarperType::Oncam), "");
  EXPECT_STREQ(registry.GetName(DewarperType::Axis), "");
}

TEST(DewarperRegistry, ModeByNameOnTheRegistrationTable) {
  DewarperRegistry registry;
  EXPECT_EQ(registry.GetModeByName("ACTi"), DewarperType::Acti);
  EXPECT_EQ(registry.GetModeByName("ACTI"), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName("acti"), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName("Inaxsys"), DewarperType::Inaxsys);
  EXPECT_EQ(registry.GetModeByName("ImmerVision"), DewarperType::ImmerVision);
}

TEST(DewarperRegistry, LensOfSentry360OnTheRegistrationTableCreatesNothing) {
  InspectableRegistry registry;
  ASSERT_NE(registry.Find(DewarperType::Sentry360), nullptr);
  char text[16] = "untouched";
  EXPECT_EQ(registry.GetLens(DewarperType::Sentry360, 0, text, sizeof(text)), 0);
  EXPECT_TRUE(registry.m_dewarpers.empty());
  EXPECT_STREQ(text, "untouched");
}

TEST(DewarperRegistry, KindsWithoutRowsGiveNeutralAnswers) {
  DewarperRegistry registry;
  for (int type : {-1, 0, 4, 10, 11, 12, 1000, -2147483647 - 1}) {
    EXPECT_STREQ(registry.GetName(type), "") << type;
    EXPECT_FALSE(registry.IsLoaded(type)) << type;
    EXPECT_FALSE(registry.IsCameraSpecific(type)) << type;
    bool lens = true, xyr = true, position = true;
    registry.GetSupportedFeatures(type, lens, xyr, position);
    EXPECT_FALSE(lens);
    EXPECT_FALSE(xyr);
    EXPECT_FALSE(position);
    char text[4] = "abc";
    EXPECT_EQ(registry.GetLens(type, 0, text, sizeof(text)), 0);
    EXPECT_STREQ(text, "abc");
  }
}

TEST(DewarperRegistry, ModeByNameIsExactAndCaseSensitive) {
  InspectableRegistry registry;
  registry.Register<LensDewarper>("FisheyeSDK.dll", "ACTi", true, false, false, true, DewarperType::Acti);
  EXPECT_EQ(registry.GetModeByName("ACTi"), DewarperType::Acti);
  EXPECT_EQ(registry.GetModeByName("ACTI"), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName("acti"), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName("ACTi "), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName("Kestrel"), DewarperType::Kestrel);
  EXPECT_EQ(registry.GetModeByName("kestrel"), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName(""), DewarperType::NoDewarper);
  EXPECT_EQ(registry.GetModeByName(nullptr), DewarperType::NoDewarper);
}

TEST(DewarperRegistry, ModeByNameTakesTheLowestTypeOfTwoEqualNames) {
  InspectableRegistry registry;
  registry.Register<LensDewarper>("FisheyeSDK.dll", "Twin", true, false, false, true, DewarperType::Inaxsys);
  registry.Register<LensDewarper>("FisheyeSDK.dll", "Twin", true, false, false, true, DewarperType::Acti);
  EXPECT_EQ(registry.GetModeByName("Twin"), DewarperType::Acti);
}

TEST(DewarperRegistry, ModeByNameOfAnEmptyTableIsNoDewarper) {
  InspectableRegistry registry;
  for (auto& row : registry.m_info) delete row.second;
  registry.m_info.clear();
  EXPECT_EQ(registry.GetModeByName("Kestrel"), DewarperType::NoDewarper);
}

TEST(DewarperRegistry, SupportedFeaturesComeInLensXyrPositionOrder) {
  InspectableRegistry registry;
  // position no, lens yes, xyr no
  registry.Register<LensDewarper>("a", "A", false, true, false, false, DewarperType::ImmerVision);
  bool lens = false, xyr = true, position = true;
  registry.GetSupportedFeatures(DewarperType::ImmerVision, lens, xyr, position);
  EXPECT_TRUE(lens);
  EXPECT_FALSE(xyr);
  EXPECT_FALSE(position);
  // position no, lens no, xyr yes
  registry.Register<LensDewarper>("b", "B", false, false, true, true, DewarperType::Sentry360);
  registry.GetSupportedFeatures(DewarperType::Sentry360, lens, xyr, position);
  EXPECT_FALSE(lens);
  EXPECT_TRUE(xyr);
  EXPECT_FALSE(position);
}

TEST(DewarperRegistry, LensOfAKindWithoutLensListCreatesNothing) {
  InspectableRegistry registry;
  registry.Register<LensDewarper>("360API.dll", "Sentry360", true, false, true, true, DewarperType::Sentry360);
  LensDewarper::created = 0;
  char text[32] = "untouched";
  EXPECT_EQ(registry.GetLens(DewarperType::Sentry360, 0, text, sizeof(text)), 0);
  EXPECT_EQ(LensDewarper::created, 0);
  EXPECT_TRUE(registry.m_dewarpers.empty());
  EXPECT_STREQ(text, "untouched");
  EXPECT_EQ(registry.GetLens(DewarperType::Kestrel, 0, text, sizeof(text)), 0);
  EXPECT_TRUE(registry.m_dewarpers.empty());
}

TEST(DewarperRegistry, LensQueriesShareOneCachedDewarperPerKind) {
  LensDewarper::created = 0;
  LensDewarper::destroyed = 0;
  {
    InspectableRegistry registry;
    registry.Register<LensDewarper>("IMV1.dll", "ImmerVision", true, true, false, false, DewarperType::ImmerVision);
    char text[32] = {0};
    EXPECT_EQ(registry.GetLens(DewarperType::ImmerVision, 0, text, sizeof(text)), 13);
    EXPECT_STREQ(text, "RPL Number B0");
    EXPECT_EQ(LensDewarper::toldType, DewarperType::ImmerVision);
    EXPECT_EQ(registry.GetLens(DewarperType::ImmerVision, 3, text, sizeof(text)), 0);
    EXPECT_EQ(LensDewarper::lastIndex, 3);
    EXPECT_EQ(LensDewarper::created, 1);
    ASSERT_EQ(registry.m_dewarpers.size(), 1u);
    const DewarpParams_t zero = {0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(registry.m_dewarpers[DewarperType::ImmerVision]->Parameters() == zero);
    // A null buffer that claims room is not handed on.
    EXPECT_EQ(registry.GetLens(DewarperType::ImmerVision, 0, nullptr, 32), 0);
    EXPECT_EQ(LensDewarper::lastIndex, 3);
  }
  EXPECT_EQ(LensDewarper::destroyed, 1);  // the registry destroys its cache
}

TEST(DewarperRegistry, CreateTellsTheDewarperItsType) {
  InspectableRegistry registry;
  registry.Register<LensDewarper>("x", "X", true, true, false, false, DewarperType::Axis);
  LensDewarper::toldType = -1;
  const DewarpParams_t params = {1, 2, 3, 4, 5, 6};
  IDewarper* dewarper = registry.Create(DewarperType::Axis, params);
  ASSERT_NE(dewarper, nullptr);
  EXPECT_EQ(LensDewarper::toldType, DewarperType::Axis);
  EXPECT_TRUE(dewarper->Parameters() == params);
  delete dewarper;
  EXPECT_EQ(registry.Create(DewarperType::Oncam, params), nullptr);
  IDewarper* kestrel = registry.Create(DewarperType::Kestrel, params);
  ASSERT_NE(kestrel, nullptr);
  EXPECT_EQ(kestrel->Mode(), DewarperType::Kestrel);
  delete kestrel;
}

TEST(DewarpParams, EqualityIsFieldByField) {
  const DewarpParams_t a = {1, 2, 3, 4, 5, 6};
  EXPECT_TRUE(a == a);
  EXPECT_FALSE(a != a);
  int DewarpParams_t::*const fields[] = {&DewarpParams_t::Lens, &DewarpParams_t::Position, &DewarpParams_t::Scroll,
                                         &DewarpParams_t::X,    &DewarpParams_t::Y,        &DewarpParams_t::R};
  for (int DewarpParams_t::*field : fields) {
    DewarpParams_t b = a;
    b.*field += 1;
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
  }
}
