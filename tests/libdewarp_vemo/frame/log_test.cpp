#include <libdewarp_vemo/log.h>

#include <libdewarp_vemo/defaults.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <thread>
#include <vector>

#include "log_capture.h"

namespace {

using vemo::libdewarp::Log;

DEWARP_LOG_SETTINGS Settings(DEWARP_LOG_FUNCTION function, int level) {
  DEWARP_LOG_SETTINGS settings;
  settings.Function = function;
  settings.Level = static_cast<DEWARP_LOG_LEVEL>(level);
  return settings;
}

int Silent(const char*, va_list) { return 0; }

// Every test leaves logging off, as the engine starts.
class LogTest : public ::testing::Test {
protected:
  void TearDown() override { Log::set_logging(Settings(nullptr, LOG_ERROR)); }
};

// The settings in force when this program was loaded, read (and put back) during static
// initialisation, before any test runs.
DEWARP_LOG_SETTINGS ReadSettingsAtLoad() {
  const DEWARP_LOG_SETTINGS current = Log::set_logging(Settings(nullptr, LOG_ERROR));
  Log::set_logging(current);
  return current;
}

const DEWARP_LOG_SETTINGS SettingsAtLoad = ReadSettingsAtLoad();

TEST_F(LogTest, StartsWithoutFunctionAtErrorLevel) {
  EXPECT_EQ(nullptr, SettingsAtLoad.Function);
  EXPECT_EQ(LOG_ERROR, SettingsAtLoad.Level);
}

TEST_F(LogTest, SetLoggingReturnsThePreviousSettings) {
  Log::set_logging(Settings(&Silent, LOG_WARNING));
  const DEWARP_LOG_SETTINGS previous = Log::set_logging(Settings(nullptr, LOG_INFO));
  EXPECT_EQ(&Silent, previous.Function);
  EXPECT_EQ(LOG_WARNING, previous.Level);
  const DEWARP_LOG_SETTINGS now = Log::set_logging(Settings(nullptr, LOG_ERROR));
  EXPECT_EQ(nullptr, now.Function);
  EXPECT_EQ(LOG_INFO, now.Level);
}

TEST_F(LogTest, LevelIsClampedToErrorThroughInfo) {
  EXPECT_EQ(0, Log::MinLevel);
  EXPECT_EQ(2, Log::MaxLevel);
  const int given[] = {-5, -1, 0, 1, 2, 3, 4, 7, 1000};
  const int stored[] = {0, 0, 0, 1, 2, 2, 2, 2, 2};
  for (size_t i = 0; i < sizeof(given) / sizeof(given[0]); ++i) {
    Log::set_logging(Settings(&Silent, given[i]));
    EXPECT_EQ(stored[i], Log::set_logging(Settings(nullptr, LOG_ERROR)).Level) << given[i];
  }
}

TEST_F(LogTest, CheckLevelComparesWithTheCurrentLevel) {
  Log::set_logging(Settings(nullptr, LOG_WARNING));
  EXPECT_TRUE(Log::check_level(LOG_ERROR));
  EXPECT_TRUE(Log::check_level(LOG_WARNING));
  EXPECT_FALSE(Log::check_level(LOG_INFO));
  EXPECT_FALSE(Log::check_level(LOG_DEBUG));
}

TEST_F(LogTest, TraceLevelStoresInfoSoDebugIsNeverDelivered) {
  vemo::test::LogCapture capture(LOG_TRACE);
  Log::debug(1, "f.cpp", "F", "debug line\n");
  EXPECT_TRUE(capture.lines().empty());
  Log::info(1, "f.cpp", "F", "info line\n");
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: INFO - info line\n", capture.lines()[0]);
}

TEST_F(LogTest, DebugLevelIsClampedToo) {
  vemo::test::LogCapture capture(LOG_DEBUG);
  DEWARP_LOG_DEBUG("debug %d\n", 1);
  DEWARP_LOG_INFO("info %d\n", 2);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: INFO - info 2\n", capture.lines()[0]);
}

struct LevelCase {
  DEWARP_LOG_LEVEL level;
  std::vector<std::string> delivered;
};

TEST_F(LogTest, EachLevelDeliversItsOwnAndMoreSevereLines) {
  const LevelCase cases[] = {
      {LOG_ERROR, {"LIBDEWARP: ERROR - e\n"}},
      {LOG_WARNING, {"LIBDEWARP: ERROR - e\n", "LIBDEWARP: WARNING - w\n"}},
      {LOG_INFO, {"LIBDEWARP: ERROR - e\n", "LIBDEWARP: WARNING - w\n", "LIBDEWARP: INFO - i\n"}},
  };
  for (const LevelCase& c : cases) {
    vemo::test::LogCapture capture(c.level);
    DEWARP_LOG_ERR("e\n");
    DEWARP_LOG_WARN("w\n");
    DEWARP_LOG_INFO("i\n");
    DEWARP_LOG_DEBUG("d\n");
    EXPECT_EQ(c.delivered, capture.lines()) << c.level;
  }
}

TEST_F(LogTest, FormatReachesTheCallbackUnexpandedWithItsArguments) {
  vemo::test::LogCapture capture(LOG_ERROR);
  Log::err(10, "src/dewarp.cpp", "SetView", "%s - %s\n", "dewarp_set_view", "std::bad_exception");
  ASSERT_EQ(1u, capture.formats().size());
  EXPECT_EQ("LIBDEWARP: ERROR - %s - %s\n", capture.formats()[0]);
  EXPECT_EQ("LIBDEWARP: ERROR - dewarp_set_view - std::bad_exception\n", capture.lines()[0]);
}

TEST_F(LogTest, LineFileAndFunctionAreNotWritten) {
  vemo::test::LogCapture capture(LOG_ERROR);
  Log::err(1538, "src/dewarp.cpp", "Open", "The channel parameter is invalid\n");
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: ERROR - The channel parameter is invalid\n", capture.lines()[0]);
}

TEST_F(LogTest, WarningAndInfoPrefixes) {
  vemo::test::LogCapture capture(LOG_INFO);
  Log::warn(1, "a", "b", "Could not close channel %p\n", static_cast<void*>(nullptr));
  Log::info(1, "a", "b", "n=%u\n", 7u);
  ASSERT_EQ(2u, capture.formats().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Could not close channel %p\n", capture.formats()[0]);
  EXPECT_EQ("LIBDEWARP: INFO - n=%u\n", capture.formats()[1]);
  EXPECT_EQ("LIBDEWARP: INFO - n=7\n", capture.lines()[1]);
}

TEST_F(LogTest, EntryAndExitAreNeverDelivered) {
  vemo::test::LogCapture capture(LOG_TRACE);
  Log::entry(1, "a", "b", "in %d\n", 1);
  Log::exit(1, "a", "b", "out %d\n", 2);
  EXPECT_TRUE(capture.lines().empty());
}

TEST_F(LogTest, NothingIsDeliveredWithoutFunction) {
  std::vector<std::string> seen;
  {
    vemo::test::LogCapture capture(LOG_INFO);
    Log::set_logging(Settings(nullptr, LOG_INFO));
    DEWARP_LOG_ERR("dropped\n");
    Log::printf("dropped\n");
    seen = capture.lines();
  }
  EXPECT_TRUE(seen.empty());
}

TEST_F(LogTest, ReformatPrefixesPerLevel) {
  EXPECT_EQ("LIBDEWARP: ERROR - m", Log::reformat(LOG_ERROR, 1, "f", "g", "m"));
  EXPECT_EQ("LIBDEWARP: WARNING - m", Log::reformat(LOG_WARNING, 1, "f", "g", "m"));
  EXPECT_EQ("LIBDEWARP: INFO - m", Log::reformat(LOG_INFO, 1, "f", "g", "m"));
  EXPECT_EQ("LIBDEWARP: DEBUG - m", Log::reformat(LOG_DEBUG, 1, "f", "g", "m"));
  EXPECT_EQ("LIBDEWARP: TRACE - m", Log::reformat(LOG_TRACE, 1, "f", "g", "m"));
}

TEST_F(LogTest, ReformatOutsideTheLevelsStartsWithDash) {
  EXPECT_EQ("- m\n", Log::reformat(static_cast<DEWARP_LOG_LEVEL>(5), 1, "f", "g", "m\n"));
  EXPECT_EQ("- m\n", Log::reformat(static_cast<DEWARP_LOG_LEVEL>(-1), 1, "f", "g", "m\n"));
  EXPECT_EQ("- m\n", Log::reformat(static_cast<DEWARP_LOG_LEVEL>(7), 1, "f", "g", "[ENTRY] ", "m\n"));
}

TEST_F(LogTest, ReformatWithTagDoesNotWriteTheTag) {
  EXPECT_EQ("LIBDEWARP: TRACE - m\n", Log::reformat(LOG_TRACE, 3, "f", "g", "[ENTRY] ", "m\n"));
  EXPECT_EQ("LIBDEWARP: TRACE - m\n", Log::reformat(LOG_TRACE, 3, "f", "g", "[EXIT] ", "m\n"));
}

TEST_F(LogTest, ReformatWithoutLevel) { EXPECT_EQ("LIBDEWARP: - m %d\n", Log::reformat("m %d\n")); }

TEST_F(LogTest, PrintfDeliversWithoutLevelTest) {
  vemo::test::LogCapture capture(LOG_ERROR);
  Log::printf("value %d\n", 42);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: - value %d\n", capture.formats()[0]);
  EXPECT_EQ("LIBDEWARP: - value 42\n", capture.lines()[0]);
}

void ViaVprintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Log::vprintf(format, arguments);
  va_end(arguments);
}

TEST_F(LogTest, VprintfDeliversTheCallersList) {
  vemo::test::LogCapture capture(LOG_ERROR);
  ViaVprintf("%s=%d\n", "x", 5);
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: - x=5\n", capture.lines()[0]);
}

void ViaLog(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Log::log(format, arguments);
  va_end(arguments);
}

TEST_F(LogTest, LogHandsFormatAndListAsTheyAre) {
  vemo::test::LogCapture capture(LOG_ERROR);
  ViaLog("raw %s\n", "line");
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("raw %s\n", capture.formats()[0]);
  EXPECT_EQ("raw line\n", capture.lines()[0]);
}

TEST_F(LogTest, TheLogAddsNoLineFeed) {
  vemo::test::LogCapture capture(LOG_ERROR);
  DEWARP_LOG_ERR("no line feed");
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: ERROR - no line feed", capture.lines()[0]);
}

TEST_F(LogTest, LongLinesReachTheCallbackWhole) {
  vemo::test::LogCapture capture(LOG_ERROR);
  const std::string body(700, 'q');
  DEWARP_LOG_ERR("%s\n", body.c_str());
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: ERROR - " + body + "\n", capture.lines()[0]);
}

TEST_F(LogTest, SeveralThreadsLogAtOnce) {
  vemo::test::LogCapture capture(LOG_INFO);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 250; ++i) {
        DEWARP_LOG_INFO("thread %d line %d\n", t, i);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_EQ(1000u, capture.lines().size());
  EXPECT_EQ(250u, capture.count("thread 3 line "));
  EXPECT_TRUE(capture.contains("LIBDEWARP: INFO - thread 2 line 249\n"));
}

}  // namespace
