#include <libdewarp_vemo/performance_timer.h>

#include <gtest/gtest.h>

#include <string>

#include "log_capture.h"

namespace {

using vemo::libdewarp::PerformanceTimer;

TEST(PerformanceTimer, KeepsTheJobName) {
  PerformanceTimer fromText("projection map build");
  EXPECT_EQ("projection map build", fromText.GetJob());
  PerformanceTimer fromString(std::string("image dewarp"));
  EXPECT_EQ("image dewarp", fromString.GetJob());
  PerformanceTimer fromNull(static_cast<const char*>(nullptr));
  EXPECT_EQ("", fromNull.GetJob());
}

TEST(PerformanceTimer, TimingLogsNothing) {
  vemo::test::LogCapture capture(LOG_INFO);
  {
    PerformanceTimer timer("combinded map build");
    timer.Start();
    timer.Finish();
  }
  EXPECT_TRUE(capture.lines().empty());
}

}  // namespace
