// Progress of long work on standard error: frames done and frames per second, refreshed in place
// a few times a second, only when standard error is a terminal.
#ifndef DEWARP_TOOL_PROGRESS_H
#define DEWARP_TOOL_PROGRESS_H

#include <chrono>

namespace dewarp_tool {

class Progress {
public:
  explicit Progress(bool quiet);
  void FrameDone();
  // Ends the progress line with the final count (on a terminal); returns the seconds since
  // construction.
  double Finish();
  int Frames() const { return m_frames; }

private:
  using Clock = std::chrono::steady_clock;
  bool m_show;
  int m_frames = 0;
  Clock::time_point m_start;
  Clock::time_point m_lastShown;
};

// Seconds elapsed on a monotonic clock since `start`.
double SecondsSince(std::chrono::steady_clock::time_point start);

}  // namespace dewarp_tool

#endif
