// Marks a timed job. Start and Finish do nothing in this build: a timer costs nothing and logs
// nothing.
#pragma once

#include <string>

namespace vemo {
namespace libdewarp {

class PerformanceTimer {
public:
  // Stores the job name and starts the timer.
  explicit PerformanceTimer(const char* job);
  explicit PerformanceTimer(const std::string& job);
  // Finishes the timer.
  virtual ~PerformanceTimer();

  void Start();
  void Finish();
  const std::string& GetJob() const;

private:
  PerformanceTimer(const PerformanceTimer&) = delete;
  PerformanceTimer& operator=(const PerformanceTimer&) = delete;

  std::string m_szJob;
};

}  // namespace libdewarp
}  // namespace vemo
