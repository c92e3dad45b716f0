#include <libdewarp_vemo/performance_timer.h>

namespace vemo {
namespace libdewarp {

PerformanceTimer::PerformanceTimer(const char* job) : m_szJob(job ? job : "") { Start(); }

PerformanceTimer::PerformanceTimer(const std::string& job) : m_szJob(job) { Start(); }

PerformanceTimer::~PerformanceTimer() { Finish(); }

// Timing is not measured in this build: both ends of a job are free and silent.
void PerformanceTimer::Start() {}

void PerformanceTimer::Finish() {}

const std::string& PerformanceTimer::GetJob() const { return m_szJob; }

}  // namespace libdewarp
}  // namespace vemo
