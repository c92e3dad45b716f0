#include <gtest/gtest.h>

#include "DewarpWrapper.h"

TEST(EntryPoints, RegisterIsOneInstance) {
  IDewarpRegister* registry = GetRegister();
  ASSERT_NE(registry, nullptr);
  EXPECT_EQ(GetRegister(), registry);
  EXPECT_EQ(registry->GetModeCount(), 11);
  EXPECT_STREQ(registry->GetName(8), "Kestrel");
  EXPECT_STREQ(registry->GetName(4), "");
  EXPECT_STREQ(registry->GetName(10), "");
}

TEST(EntryPoints, LoadedExactlyForRegisteredKinds) {
  EXPECT_TRUE(DewarperLoaded(8));
  for (int type : {-1, 0, 4, 10, 11, 99}) {
    EXPECT_FALSE(DewarperLoaded(type)) << type;
  }
}

TEST(EntryPoints, CreateKestrelAndDeleteIt) {
  const DewarpParams_t params = {0, 1, 0, 968, 968, 968};
  IDewarper* dewarper = CreateDewarper(8, params);
  ASSERT_NE(dewarper, nullptr);
  EXPECT_EQ(dewarper->Mode(), DewarperType::Kestrel);
  EXPECT_TRUE(dewarper->Parameters() == params);
  EXPECT_TRUE(dewarper->Check());
  DeleteDewarper(dewarper);
}

TEST(EntryPoints, KindsWithoutRowCreateNothing) {
  const DewarpParams_t params = {0, 1, 0, 0, 0, 0};
  EXPECT_EQ(CreateDewarper(4, params), nullptr);  // Oncam is recognised but has no dewarper
  EXPECT_EQ(CreateDewarper(10, params), nullptr);
  EXPECT_EQ(CreateDewarper(0, params), nullptr);
  EXPECT_EQ(CreateDewarper(11, params), nullptr);
  EXPECT_EQ(CreateDewarper(-7, params), nullptr);
}

TEST(EntryPoints, DeletingNullIsIgnored) { DeleteDewarper(nullptr); }
