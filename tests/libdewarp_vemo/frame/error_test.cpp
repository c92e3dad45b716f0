#include <libdewarp_vemo/error.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <set>
#include <sstream>
#include <string>

#include "log_capture.h"

namespace {

using vemo::libdewarp::CodeLocation;
using vemo::libdewarp::Error;

const CodeLocation OpenLocation("src/dewarp.cpp", nullptr, "Open", 1538);
const char* const OpenText = "Open@src/dewarp.cpp:1538";

Error FromList(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Error error(format, arguments);
  va_end(arguments);
  return error;
}

Error FromList(int code, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Error error(code, format, arguments);
  va_end(arguments);
  return error;
}

Error FromList(const CodeLocation& location, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Error error(location, format, arguments);
  va_end(arguments);
  return error;
}

Error FromList(const CodeLocation& location, int code, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Error error(location, code, format, arguments);
  va_end(arguments);
  return error;
}

// A va_list handed on as a function parameter.
Error FromParameter(const CodeLocation& location, int code, const char* format, va_list arguments) {
  return Error(location, code, format, arguments);
}

Error Forward(const CodeLocation& location, int code, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Error error = FromParameter(location, code, format, arguments);
  va_end(arguments);
  return error;
}

// Names without an entry in the engine's table, though Linux may know them.
const std::set<int> NoEntry = {41, 47, 48, 50, 55, 58, 59, 68, 69, 73, 109, 118, 119};

TEST(ErrorSymbol, MatchesTheCLibraryNamesWithTheKnownExceptions) {
  const Error error("x");
  for (int code = 1; code <= 129; ++code) {
    SCOPED_TRACE(code);
    if (NoEntry.count(code)) {
      EXPECT_EQ("<UNKNOWN SYMBOL>", error.Symbol(code));
    } else if (code == 95) {
      EXPECT_EQ("ENOTSUP", error.Symbol(code));
    } else if (code == 113) {
      EXPECT_EQ("", error.Symbol(code));
    } else {
      const char* name = strerrorname_np(code);
      ASSERT_NE(nullptr, name);
      EXPECT_EQ(name, error.Symbol(code));
    }
  }
}

TEST(ErrorSymbol, SpotChecks) {
  EXPECT_EQ("EPERM", Error::SymbolOf(1));
  EXPECT_EQ("EFAULT", Error::SymbolOf(14));
  EXPECT_EQ("EINVAL", Error::SymbolOf(22));
  EXPECT_EQ("EDOM", Error::SymbolOf(33));
  EXPECT_EQ("EDEADLK", Error::SymbolOf(35));
  EXPECT_EQ("EISNAM", Error::SymbolOf(120));
  EXPECT_EQ("EKEYREJECTED", Error::SymbolOf(129));
}

TEST(ErrorSymbol, OutsideOneTo129IsUnknown) {
  for (int code : {0, -1, -22, 130, 131, 133, 1000}) {
    EXPECT_EQ("<UNKNOWN SYMBOL>", Error::SymbolOf(code)) << code;
  }
}

TEST(ErrorDescription, IsEmpty) {
  const Error error("x");
  for (int code = -1; code <= 131; ++code) {
    EXPECT_EQ("", error.Description(code)) << code;
  }
}

TEST(ErrorFormatError, SymbolAndCode) {
  EXPECT_EQ("Error EINVAL (22)", Error::FormatError(22));
  EXPECT_EQ("Error EFAULT (14)", Error::FormatError(14));
  EXPECT_EQ("Error ENOTSUP (95)", Error::FormatError(95));
}

TEST(ErrorFormatError, UnknownCodesKeepTheirNumber) {
  EXPECT_EQ("Error <UNKNOWN SYMBOL> (0)", Error::FormatError(0));
  EXPECT_EQ("Error <UNKNOWN SYMBOL> (-1)", Error::FormatError(-1));
  EXPECT_EQ("Error <UNKNOWN SYMBOL> (41)", Error::FormatError(41));
  EXPECT_EQ("Error <UNKNOWN SYMBOL> (130)", Error::FormatError(130));
}

TEST(ErrorFormatError, EmptySymbolGivesNothing) { EXPECT_EQ("", Error::FormatError(113)); }

TEST(ErrorMessage, FormatAndArguments) {
  EXPECT_EQ("view 3 of 4", std::string(Error("view %d of %s", 3, "4").what()));
  EXPECT_EQ("view 3 of 4", std::string(FromList("view %d of %s", 3, "4").what()));
}

TEST(ErrorMessage, CodeFormatAndArguments) {
  EXPECT_EQ("[Error EDOM (33)] - zoom 9.5", std::string(Error(33, "zoom %.1f", 9.5).what()));
  EXPECT_EQ("[Error EDOM (33)] - zoom 9.5", std::string(FromList(33, "zoom %.1f", 9.5).what()));
}

TEST(ErrorMessage, LocationFormatAndArguments) {
  const std::string expected = std::string("(") + OpenText + ") - no channel";
  EXPECT_EQ(expected, std::string(Error(OpenLocation, "no %s", "channel").what()));
  EXPECT_EQ(expected, std::string(FromList(OpenLocation, "no %s", "channel").what()));
}

TEST(ErrorMessage, LocationAndCode) {
  EXPECT_EQ(std::string("(") + OpenText + ") [Error ENOMEM (12)]", std::string(Error(OpenLocation, 12).what()));
}

TEST(ErrorMessage, LocationCodeFormatAndArguments) {
  const std::string expected = std::string("(") + OpenText + ") [Error EINVAL (22)] - Invalid view";
  EXPECT_EQ(expected, std::string(Error(OpenLocation, EINVAL, "Invalid %s", "view").what()));
  EXPECT_EQ(expected, std::string(FromList(OpenLocation, EINVAL, "Invalid %s", "view").what()));
}

TEST(ErrorMessage, ForwardedArgumentList) {
  EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - Invalid view 6",
            std::string(Forward(OpenLocation, EINVAL, "Invalid %s %d", "view", 6).what()));
}

// Text arguments given as literals, arrays and temporaries are printf arguments, never taken for an
// argument list.
TEST(ErrorMessage, TextArgumentsOfEveryKind) {
  char array[8] = "array";
  std::string text = "temp";
  EXPECT_EQ("literal", std::string(Error("%s", "literal").what()));
  EXPECT_EQ("array", std::string(Error("%s", array).what()));
  EXPECT_EQ("[Error EINVAL (22)] - literal", std::string(Error(22, "%s", "literal").what()));
  EXPECT_EQ("[Error EINVAL (22)] - array", std::string(Error(22, "%s", array).what()));
  EXPECT_EQ(std::string("(") + OpenText + ") - literal", std::string(Error(OpenLocation, "%s", "literal").what()));
  EXPECT_EQ(std::string("(") + OpenText + ") - temp", std::string(Error(OpenLocation, "%s", &text[0]).what()));
  EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - array",
            std::string(Error(OpenLocation, EINVAL, "%s", array).what()));
  EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - temp",
            std::string(Error(OpenLocation, EINVAL, "%s", &text[0]).what()));
}

TEST(ErrorMessage, MemberLocation) {
  const CodeLocation location("src/view.cpp", "View", "CheckMaps", 12);
  EXPECT_EQ("(View::CheckMaps@src/view.cpp:12) [Error EFAULT (14)] - Invalid pointer to camera",
            std::string(Error(location, EFAULT, "Invalid pointer to %s", "camera").what()));
}

TEST(ErrorMessage, Code113EndsInAnEmptyPairOfBrackets) {
  const std::string text = Error(OpenLocation, 113).what();
  EXPECT_EQ(std::string("(") + OpenText + ") []", text);
  EXPECT_EQ("[]", text.substr(text.size() - 2));
}

TEST(ErrorMessage, HasNoTrailingLineFeedOfItsOwn) {
  const std::string text = Error(OpenLocation, EINVAL, "Invalid view").what();
  EXPECT_NE('\n', text.back());
}

std::string Repeat(char c, size_t n) { return std::string(n, c); }

TEST(ErrorMessage, LongMessagesAreFormattedWhole) {
  for (size_t length : {255u, 256u, 257u, 1000u, 5000u}) {
    const std::string body = Repeat('x', length - 3) + "END";
    EXPECT_EQ(body, std::string(Error("%s", body.c_str()).what())) << length;
  }
  // The placeholders themselves expand past the first buffer as well.
  const std::string expected = Repeat('a', 200) + "-" + Repeat('b', 200);
  EXPECT_EQ(expected, std::string(Error("%s-%s", Repeat('a', 200).c_str(), Repeat('b', 200).c_str()).what()));
  EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - " + Repeat('z', 600),
            std::string(Error(OpenLocation, EINVAL, "%s", Repeat('z', 600).c_str()).what()));
}

TEST(ErrorMessage, EmptyFormat) { EXPECT_EQ("[Error EINVAL (22)] - ", std::string(Error(22, "%s", "").what())); }

TEST(Error, SetLastErrorStoresErrno) {
  errno = 0;
  Error::SetLastError(EDOM);
  EXPECT_EQ(EDOM, errno);
  Error::SetLastError(EDEADLK);
  EXPECT_EQ(35, errno);
}

TEST(Error, IsAStandardExceptionWithItsMessage) {
  try {
    Error::SetLastError(EINVAL);
    throw Error(OpenLocation, EINVAL, "Invalid view");
  } catch (const std::exception& caught) {
    EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - Invalid view", caught.what());
    EXPECT_NE(nullptr, dynamic_cast<const Error*>(&caught));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST(Error, CopyAndAssignmentCopyTheMessage) {
  const Error source(OpenLocation, EFAULT);
  const Error copy(source);
  EXPECT_STREQ(source.what(), copy.what());
  Error assigned("other");
  assigned = source;
  EXPECT_STREQ(source.what(), assigned.what());
}

TEST(Error, SelfAssignmentWarnsAndKeepsTheMessage) {
  Error error("kept");
  vemo::test::LogCapture capture(LOG_WARNING);
  Error& alias = error;
  error = alias;
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Self assignment of Error object\n", capture.lines()[0]);
  EXPECT_STREQ("kept", error.what());
}

TEST(Error, PrintsItsTextOnAStream) {
  std::ostringstream stream;
  stream << Error(OpenLocation, EINVAL, "Invalid view");
  EXPECT_EQ(std::string("(") + OpenText + ") [Error EINVAL (22)] - Invalid view", stream.str());
}

}  // namespace
