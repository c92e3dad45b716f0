#include "progress.h"

#include <cstdio>
#include <unistd.h>

namespace dewarp_tool {

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Progress::Progress(bool quiet)
    : m_show(!quiet && ::isatty(STDERR_FILENO)), m_start(Clock::now()), m_lastShown(m_start) {}

void Progress::FrameDone() {
  ++m_frames;
  if (!m_show) {
    return;
  }
  const Clock::time_point now = Clock::now();
  if (now - m_lastShown < std::chrono::milliseconds(250)) {
    return;
  }
  m_lastShown = now;
  const double seconds = SecondsSince(m_start);
  std::fprintf(stderr, "\rdewarp: %d frames, %.1f fps ", m_frames, seconds > 0 ? m_frames / seconds : 0.0);
}

double Progress::Finish() {
  const double seconds = SecondsSince(m_start);
  if (m_show && m_frames > 0) {
    std::fprintf(stderr, "\rdewarp: %d frames, %.1f fps\n", m_frames, seconds > 0 ? m_frames / seconds : 0.0);
  }
  return seconds;
}

}  // namespace dewarp_tool
