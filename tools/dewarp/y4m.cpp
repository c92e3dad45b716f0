#include "y4m.h"

#include "failure.h"
#include "output_file.h"

#include <cstdlib>
#include <cstring>
#include <sstream>

namespace dewarp_tool {

namespace {

// Reads one line of at most `limit` bytes; false if the stream ends before the line feed.
bool ReadLine(std::FILE* stream, std::string& line, std::size_t limit) {
  line.clear();
  int c;
  while ((c = std::fgetc(stream)) != EOF) {
    if (c == '\n') {
      return true;
    }
    if (line.size() >= limit) {
      return false;
    }
    line.push_back(static_cast<char>(c));
  }
  return false;
}

bool ParseRatio(const std::string& text, int& num, int& den) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) {
    return false;
  }
  char* end = nullptr;
  const long n = std::strtol(text.c_str(), &end, 10);
  if (end != text.c_str() + colon) {
    return false;
  }
  const long d = std::strtol(text.c_str() + colon + 1, &end, 10);
  if (*end != '\0' || n < 0 || d < 0 || n > 1000000 || d > 1000000) {
    return false;
  }
  num = static_cast<int>(n);
  den = static_cast<int>(d);
  return true;
}

bool ParseSize(const std::string& text, int& value) {
  char* end = nullptr;
  const long v = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || v <= 0 || v > 16384) {
    return false;
  }
  value = static_cast<int>(v);
  return true;
}

}  // namespace

Y4mHeader ParseY4mHeader(const std::string& line, const std::string& name) {
  std::istringstream words(line);
  std::string word;
  words >> word;
  if (word != "YUV4MPEG2") {
    BadInput(name + ": not a YUV4MPEG2 stream");
  }
  Y4mHeader header;
  while (words >> word) {
    const std::string value = word.substr(1);
    switch (word[0]) {
      case 'W':
        if (!ParseSize(value, header.width)) BadInput(name + ": bad frame width '" + value + "'");
        break;
      case 'H':
        if (!ParseSize(value, header.height)) BadInput(name + ": bad frame height '" + value + "'");
        break;
      case 'F':
        if (!ParseRatio(value, header.rateNum, header.rateDen) || !header.rateNum || !header.rateDen) {
          BadInput(name + ": bad frame rate '" + value + "'");
        }
        break;
      case 'A':
        if (!ParseRatio(value, header.aspectNum, header.aspectDen)) {
          BadInput(name + ": bad pixel aspect '" + value + "'");
        }
        break;
      case 'I':
        header.interlace = value.empty() ? 'p' : value[0];
        break;
      case 'C':
        if (value != "420" && value != "420jpeg" && value != "420paldv" && value != "420mpeg2") {
          BadInput(name + ": unsupported pixel format C" + value +
                   " (only 8-bit 4:2:0 is supported; convert with ffmpeg -pix_fmt yuv420p)");
        }
        break;
      default:
        break;  // X (application data) and unknown tags are ignored
    }
  }
  if (!header.width || !header.height) {
    BadInput(name + ": the YUV4MPEG2 header gives no frame size");
  }
  if (header.width % 2 || header.height % 2) {
    BadInput(name + ": odd frame size " + std::to_string(header.width) + "x" + std::to_string(header.height) +
             " (4:2:0 frames need an even width and height)");
  }
  return header;
}

Y4mReader::Y4mReader(std::FILE* stream, const std::string& name, const std::string& prefix)
    : m_stream(stream), m_name(name) {
  std::string line;
  const bool complete = ReadLine(m_stream, line, 1024);
  line = prefix + line;
  if (!complete) {
    BadInput(name + (line.empty() ? ": empty input" : ": not a YUV4MPEG2 stream (no header line)"));
  }
  m_header = ParseY4mHeader(line, name);
}

bool Y4mReader::MoreFrames() {
  const int next = std::fgetc(m_stream);
  if (next == EOF) {
    return false;
  }
  std::ungetc(next, m_stream);
  return true;
}

bool Y4mReader::ReadFrame(YuvFrame& frame) {
  std::string line;
  const int first = std::fgetc(m_stream);
  if (first == EOF) {
    return false;
  }
  std::ungetc(first, m_stream);
  const std::string frameNo = std::to_string(m_frames + 1);
  if (!ReadLine(m_stream, line, 1024) || line.compare(0, 5, "FRAME") != 0) {
    BadInput(m_name + ": frame " + frameNo + " is damaged (no FRAME line; truncated or not YUV4MPEG2)");
  }
  if (frame.width != m_header.width || frame.height != m_header.height) {
    frame = YuvFrame(m_header.width, m_header.height);
  }
  const std::size_t got = std::fread(frame.data.data(), 1, frame.data.size(), m_stream);
  if (got != frame.data.size()) {
    BadInput(m_name + ": truncated: frame " + frameNo + " has " + std::to_string(got) + " of " +
             std::to_string(frame.data.size()) + " bytes");
  }
  ++m_frames;
  return true;
}

Y4mWriter::Y4mWriter(OutputFile& file, int width, int height, int rateNum, int rateDen) : m_file(file) {
  const std::string header = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F" +
                             std::to_string(rateNum) + ":" + std::to_string(rateDen) +
                             " Ip A1:1 C420jpeg\n";
  m_file.Write(header.data(), header.size());
}

void Y4mWriter::WriteFrame(const YuvFrame& frame) {
  static const char kFrame[] = "FRAME\n";
  m_file.Write(kFrame, sizeof kFrame - 1);
  m_file.Write(frame.data.data(), frame.data.size());
}

}  // namespace dewarp_tool
