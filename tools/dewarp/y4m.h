// YUV4MPEG2 video: a text header line, then frames each introduced by a "FRAME" line. The tool
// reads and writes planar 4:2:0 with 8-bit samples ("C420", "C420jpeg", "C420paldv",
// "C420mpeg2" or no colour-space tag), which is what `ffmpeg -f yuv4mpegpipe` produces for
// yuv420p.
#ifndef DEWARP_TOOL_Y4M_H
#define DEWARP_TOOL_Y4M_H

#include "yuv.h"

#include <cstdio>
#include <string>

namespace dewarp_tool {

class OutputFile;

struct Y4mHeader {
  int width = 0;
  int height = 0;
  int rateNum = 25;
  int rateDen = 1;
  int aspectNum = 0;
  int aspectDen = 0;
  char interlace = 'p';
};

class Y4mReader {
public:
  // Reads the header from the stream (not owned); "name" is used in messages. Fails for a
  // stream that is not YUV4MPEG2, an unsupported pixel format, or a missing or odd frame size.
  // `prefix` holds bytes already taken from the stream to recognise it.
  Y4mReader(std::FILE* stream, const std::string& name, const std::string& prefix = std::string());
  // Reads the next frame; false at a clean end of the stream. A frame cut short fails.
  bool ReadFrame(YuvFrame& frame);
  // Whether anything follows the frames read so far (without reading it).
  bool MoreFrames();
  const Y4mHeader& Header() const { return m_header; }
  int FramesRead() const { return m_frames; }

private:
  std::FILE* m_stream;
  std::string m_name;
  Y4mHeader m_header;
  int m_frames = 0;
};

// Parses a header line (without its line feed); exposed for tests.
Y4mHeader ParseY4mHeader(const std::string& line, const std::string& name);

class Y4mWriter {
public:
  Y4mWriter(OutputFile& file, int width, int height, int rateNum, int rateDen);
  void WriteFrame(const YuvFrame& frame);

private:
  OutputFile& m_file;
};

}  // namespace dewarp_tool

#endif
