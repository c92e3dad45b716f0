#include <libdewarp_vemo/bad_exception_handler.h>

#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "log_capture.h"

namespace {

using vemo::libdewarp::BadExceptionHandler;
using vemo::libdewarp::CodeLocation;
using vemo::libdewarp::Error;
using vemo::libdewarp::Log;

std::string Expand(const char* format, ...) {
  char buffer[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof(buffer), format, arguments);
  va_end(arguments);
  return buffer;
}

const std::string Prefix = "LIBDEWARP: ERROR - ";

// Throws `value` from inside the barrier and checks that std::bad_exception comes out and that the
// single line logged is `expected`.
template <class T>
void ExpectLadderLine(T value, const std::string& expected) {
  vemo::test::LogCapture capture(LOG_ERROR);
  bool badException = false;
  try {
    BadExceptionHandler::Invoke([&]() -> int { throw value; });
  } catch (const std::bad_exception&) {
    badException = true;
  } catch (...) {
  }
  EXPECT_TRUE(badException);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ(Prefix + expected, capture.lines()[0]);
}

TEST(UnexpectedLadder, Char) { ExpectLadderLine<char>('k', "Caught unexpected char exception - k\n"); }

TEST(UnexpectedLadder, UnsignedCharSaysChar) {
  ExpectLadderLine<unsigned char>(0xAB, "Caught unexpected char exception - 0xAB\n");
  ExpectLadderLine<unsigned char>(0x05, "Caught unexpected char exception - 0x05\n");
}

TEST(UnexpectedLadder, Short) { ExpectLadderLine<short>(-12, "Caught unexpected short integer exception - -12\n"); }

TEST(UnexpectedLadder, UnsignedShort) {
  ExpectLadderLine<unsigned short>(65535, "Caught unexpected unsigned short integer exception - 65535\n");
}

TEST(UnexpectedLadder, Int) { ExpectLadderLine<int>(-42, "Caught unexpected integer exception - -42\n"); }

TEST(UnexpectedLadder, UnsignedInt) {
  ExpectLadderLine<unsigned int>(4000000000u, "Caught unexpected unsigned integer exception - 4000000000\n");
}

TEST(UnexpectedLadder, Long) { ExpectLadderLine<long>(-70000L, "Caught unexpected long integer exception - -70000\n"); }

TEST(UnexpectedLadder, UnsignedLong) {
  ExpectLadderLine<unsigned long>(70000UL, "Caught unexpected unsigned long integer exception - 70000\n");
}

TEST(UnexpectedLadder, LongLong) {
  ExpectLadderLine<long long>(-9000000000LL, "Caught unexpected long-long integer exception - -9000000000\n");
}

TEST(UnexpectedLadder, UnsignedLongLong) {
  ExpectLadderLine<unsigned long long>(18446744073709551615ULL,
                                       "Caught unexpected unsigned long-long integer exception - 18446744073709551615\n");
}

// Pointers are printed as addresses with the C library's %p.
template <class T>
void ExpectPointerLine(const char* format) {
  static T object = T();
  const T* pointer = &object;
  ExpectLadderLine<const T*>(pointer, Expand(format, static_cast<const void*>(pointer)));
}

TEST(UnexpectedLadder, CharPointer) {
  const char* text = "thrown text";
  ExpectLadderLine<const char*>(text, Expand("Caught unexpected char pointer exception - %p\n", static_cast<const void*>(text)));
  // A non-const pointer is caught by the same handler.
  static char buffer[4] = "abc";
  ExpectLadderLine<char*>(buffer, Expand("Caught unexpected char pointer exception - %p\n", static_cast<void*>(buffer)));
}

TEST(UnexpectedLadder, UnsignedCharPointer) {
  ExpectPointerLine<unsigned char>("Caught unexpected unsigned char pointer exception - %p\n");
}

TEST(UnexpectedLadder, ShortPointer) { ExpectPointerLine<short>("Caught unexpected short integer pointer exception - %p\n"); }

TEST(UnexpectedLadder, UnsignedShortPointerOmitsPointer) {
  ExpectPointerLine<unsigned short>("Caught unexpected unsigned short integer exception - %p\n");
}

TEST(UnexpectedLadder, IntPointer) { ExpectPointerLine<int>("Caught unexpected integer pointer exception - %p\n"); }

TEST(UnexpectedLadder, UnsignedIntPointer) {
  ExpectPointerLine<unsigned int>("Caught unexpected unsigned integer pointer exception - %p\n");
}

TEST(UnexpectedLadder, LongPointer) { ExpectPointerLine<long>("Caught unexpected long integer pointer exception - %p\n"); }

TEST(UnexpectedLadder, UnsignedLongPointer) {
  ExpectPointerLine<unsigned long>("Caught unexpected unsigned long integer pointer exception - %p\n");
}

TEST(UnexpectedLadder, LongLongPointer) {
  ExpectPointerLine<long long>("Caught unexpected long-long integer pointer exception - %p\n");
}

TEST(UnexpectedLadder, UnsignedLongLongPointer) {
  ExpectPointerLine<unsigned long long>("Caught unexpected unsigned long-long integer pointer exception - %p\n");
}

TEST(UnexpectedLadder, Float) { ExpectLadderLine<float>(1.5f, "Caught unexpected float exception - 1.500000\n"); }

TEST(UnexpectedLadder, Double) { ExpectLadderLine<double>(-2.25, "Caught unexpected double exception - -2.250000\n"); }

TEST(UnexpectedLadder, LongDouble) {
  ExpectLadderLine<long double>(3.125L, "Caught unexpected long-double exception - 3.125000\n");
}

TEST(UnexpectedLadder, FloatPointer) { ExpectPointerLine<float>("Caught unexpected float pointer exception - %p\n"); }

TEST(UnexpectedLadder, DoublePointer) { ExpectPointerLine<double>("Caught unexpected double pointer exception - %p\n"); }

TEST(UnexpectedLadder, LongDoublePointer) {
  ExpectPointerLine<long double>("Caught unexpected long-double pointer exception - %p\n");
}

struct Foreign {
  int value;
};

TEST(UnexpectedLadder, VoidPointerAndOtherObjectPointers) {
  static int cell = 0;
  void* raw = &cell;
  ExpectLadderLine<void*>(raw, Expand("Caught unexpected void pointer exception - %p\n", raw));
  static Foreign foreign = {1};
  ExpectLadderLine<Foreign*>(&foreign,
                             Expand("Caught unexpected void pointer exception - %p\n", static_cast<void*>(&foreign)));
}

TEST(UnexpectedLadder, NullPointer) {
  ExpectLadderLine<const int*>(nullptr, Expand("Caught unexpected integer pointer exception - %p\n",
                                               static_cast<const void*>(nullptr)));
}

TEST(UnexpectedLadder, String) {
  ExpectLadderLine<std::string>(std::string("lens lost"), "Caught unexpected string exception - lens lost\n");
}

TEST(UnexpectedLadder, AnythingElse) {
  ExpectLadderLine<Foreign>(Foreign{3}, "Caught unexpected exception\n");
  ExpectLadderLine<bool>(true, "Caught unexpected exception\n");
  ExpectLadderLine<signed char>(static_cast<signed char>(7), "Caught unexpected exception\n");
  ExpectLadderLine<wchar_t>(L'x', "Caught unexpected exception\n");
}

// Standard exceptions pass the barrier; the ladder's standard-exception line is reached by calling
// the handler itself while one is handled.
TEST(UnexpectedLadder, StandardException) {
  vemo::test::LogCapture capture(LOG_ERROR);
  bool badException = false;
  try {
    try {
      throw std::runtime_error("map too large");
    } catch (...) {
      BadExceptionHandler::UnexpectedHandler();
    }
  } catch (const std::bad_exception&) {
    badException = true;
  }
  EXPECT_TRUE(badException);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ(Prefix + "Caught unexpected standard exception - map too large\n", capture.lines()[0]);
}

TEST(UnexpectedLadder, HandlerOutsideAnyHandledExceptionStillGivesBadException) {
  vemo::test::LogCapture capture(LOG_ERROR);
  EXPECT_THROW(BadExceptionHandler::UnexpectedHandler(), std::bad_exception);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ(Prefix + "Caught unexpected exception\n", capture.lines()[0]);
}

TEST(UnexpectedLadder, NothingIsLoggedBelowErrorLevelOff) {
  // With logging off the barrier still replaces the exception.
  EXPECT_THROW(BadExceptionHandler::Invoke([]() -> int { throw 5; }), std::bad_exception);
}

TEST(BarrierInvoke, ReturnsTheResult) {
  EXPECT_EQ(7, BadExceptionHandler::Invoke([] { return 7; }));
  int calls = 0;
  BadExceptionHandler::Invoke([&] { ++calls; });
  EXPECT_EQ(1, calls);
}

TEST(BarrierInvoke, ErrorPassesUnchangedAndUnlogged) {
  vemo::test::LogCapture capture(LOG_INFO);
  const CodeLocation location("src/dewarp.cpp", nullptr, "SetView", 9);
  try {
    BadExceptionHandler::Invoke([&]() -> int {
      Error::SetLastError(EFAULT);
      throw Error(location, EFAULT, "Invalid pointer to %s", "camera");
    });
    ADD_FAILURE() << "nothing thrown";
  } catch (const Error& error) {
    EXPECT_STREQ("(SetView@src/dewarp.cpp:9) [Error EFAULT (14)] - Invalid pointer to camera", error.what());
  }
  EXPECT_EQ(EFAULT, errno);
  EXPECT_TRUE(capture.lines().empty());
}

TEST(BarrierInvoke, StandardExceptionsPassUnchanged) {
  vemo::test::LogCapture capture(LOG_INFO);
  EXPECT_THROW(BadExceptionHandler::Invoke([]() -> int { throw std::invalid_argument("bad"); }), std::invalid_argument);
  EXPECT_THROW(BadExceptionHandler::Invoke([]() -> int { throw std::bad_exception(); }), std::bad_exception);
  EXPECT_TRUE(capture.lines().empty());
}

TEST(BarrierInvoke, ErrnoIsLeftAsItWas) {
  errno = 0;
  EXPECT_THROW(BadExceptionHandler::Invoke([]() -> int { throw 1; }), std::bad_exception);
  EXPECT_EQ(0, errno);
}

void Ending() { std::abort(); }

TEST(BadExceptionHandler, InstallsItsOwnTerminateHandlerAndRestoresThePrevious) {
  const std::terminate_handler before = std::set_terminate(&Ending);
  {
    BadExceptionHandler outer;
    EXPECT_EQ(&Ending, outer.GetOldHandler());
    const std::terminate_handler installed = std::get_terminate();
    EXPECT_NE(&Ending, installed);
    {
      BadExceptionHandler inner;
      EXPECT_EQ(installed, inner.GetOldHandler());
      EXPECT_EQ(installed, std::get_terminate());
    }
    EXPECT_EQ(installed, std::get_terminate());
  }
  EXPECT_EQ(&Ending, std::get_terminate());
  std::set_terminate(before);
}

int ToStandardError(const char* format, va_list arguments) { return std::vfprintf(stderr, format, arguments); }

void Thrower() { throw 42; }

// The exception cannot leave this function: the runtime ends the process.
void ThrowThroughNoexcept() noexcept {
  void (*volatile thrower)() = &Thrower;
  thrower();
}

void EndInsideAnInterfaceCall() {
  DEWARP_LOG_SETTINGS settings = {&ToStandardError, LOG_ERROR};
  Log::set_logging(settings);
  BadExceptionHandler handler;
  ThrowThroughNoexcept();
}

TEST(BadExceptionHandlerDeathTest, AnExceptionThatEndsTheProcessIsLoggedFirst) {
  EXPECT_DEATH(EndInsideAnInterfaceCall(), "LIBDEWARP: ERROR - Caught unexpected integer exception - 42");
}

// The frame of every interface function, as the C interface uses it: a handler for the whole call,
// the engine behind Invoke, and the interface's own line for whatever comes out.
int InterfaceFunction(const char* name, void (*engine)()) {
  BadExceptionHandler handler;
  try {
    BadExceptionHandler::Invoke(engine);
    return 0;
  } catch (const std::bad_exception& error) {
    Log::err(__LINE__, __FILE__, __FUNCTION__, "%s - %s\n", name, error.what());
  } catch (const std::exception& error) {
    Log::err(__LINE__, __FILE__, __FUNCTION__, "%s - %s\n", name, error.what());
  } catch (...) {
    Log::err(__LINE__, __FILE__, __FUNCTION__, "%s - unknown error\n", name);
  }
  return -1;
}

void EngineThrowsInt() { throw 17; }

TEST(BarrierFrame, IntFromTheEngineGivesTheLadderLineThenTheInterfaceLine) {
  vemo::test::LogCapture capture(LOG_ERROR);
  errno = 0;
  EXPECT_EQ(-1, InterfaceFunction("dewarp_set_view", &EngineThrowsInt));
  ASSERT_EQ(2u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: ERROR - Caught unexpected integer exception - %d\n", capture.formats()[0]);
  EXPECT_EQ("LIBDEWARP: ERROR - Caught unexpected integer exception - 17\n", capture.lines()[0]);
  EXPECT_EQ("LIBDEWARP: ERROR - dewarp_set_view - std::bad_exception\n", capture.lines()[1]);
  EXPECT_EQ(0, errno);
}

}  // namespace
