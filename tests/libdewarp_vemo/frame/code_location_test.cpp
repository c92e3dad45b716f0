#include <libdewarp_vemo/code_location.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "log_capture.h"

namespace {

using vemo::libdewarp::CodeLocation;

std::string Print(const CodeLocation& location) {
  std::ostringstream stream;
  stream << location;
  return stream.str();
}

TEST(CodeLocation, DefaultIsEmptyWithLineMinusOne) {
  const CodeLocation location;
  EXPECT_TRUE(location.Empty());
  EXPECT_FALSE(location.HasClass());
  EXPECT_EQ("", location.GetFile());
  EXPECT_EQ("", location.GetClass());
  EXPECT_EQ("", location.GetFunction());
  EXPECT_EQ(-1, location.GetLine());
}

TEST(CodeLocation, KeepsFileClassFunctionAndLine) {
  const CodeLocation location("src/view.cpp", "View", "SetPtz", 77);
  EXPECT_FALSE(location.Empty());
  EXPECT_TRUE(location.HasClass());
  EXPECT_EQ("src/view.cpp", location.GetFile());
  EXPECT_EQ("View", location.GetClass());
  EXPECT_EQ("SetPtz", location.GetFunction());
  EXPECT_EQ(77, location.GetLine());
}

TEST(CodeLocation, NullStringsAreStoredEmpty) {
  const CodeLocation location(nullptr, nullptr, nullptr, 5);
  EXPECT_EQ("", location.GetFile());
  EXPECT_EQ("", location.GetClass());
  EXPECT_EQ("", location.GetFunction());
  EXPECT_FALSE(location.HasClass());
  EXPECT_EQ(5, location.GetLine());
  EXPECT_FALSE(location.Empty());
}

TEST(CodeLocation, PrintsFreeFunctionAsFunctionAtFileColonLine) {
  EXPECT_EQ("Open@src/dewarp.cpp:1538", Print(CodeLocation("src/dewarp.cpp", nullptr, "Open", 1538)));
}

TEST(CodeLocation, PrintsMemberAsClassColonColonFunction) {
  EXPECT_EQ("View::SetPtz@src/view.cpp:77", Print(CodeLocation("src/view.cpp", "View", "SetPtz", 77)));
}

TEST(CodeLocation, PrintsDefaultLocation) { EXPECT_EQ("@:-1", Print(CodeLocation())); }

TEST(CodeLocation, MacroNamesThisLine) {
  const int line = __LINE__ + 1;
  const CodeLocation location = DEWARP_LOCATION("Channel");
  EXPECT_EQ(__FILE__, location.GetFile());
  EXPECT_EQ("Channel", location.GetClass());
  EXPECT_EQ("TestBody", location.GetFunction());
  EXPECT_EQ(line, location.GetLine());

  const CodeLocation freeFunction = DEWARP_LOCATION(NULL);
  EXPECT_FALSE(freeFunction.HasClass());
}

TEST(CodeLocation, CopyAndAssignment) {
  const CodeLocation source("a.cpp", "A", "f", 3);
  CodeLocation copy(source);
  EXPECT_EQ(Print(source), Print(copy));
  CodeLocation assigned;
  assigned = source;
  EXPECT_EQ("A::f@a.cpp:3", Print(assigned));
}

TEST(CodeLocation, SelfAssignmentWarnsAndKeepsTheValue) {
  CodeLocation location("a.cpp", "A", "f", 3);
  vemo::test::LogCapture capture(LOG_WARNING);
  CodeLocation& alias = location;
  location = alias;
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Self assignment of CodeLocation object\n", capture.lines()[0]);
  EXPECT_EQ("A::f@a.cpp:3", Print(location));
}

}  // namespace
