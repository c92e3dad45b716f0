#include "output_file.h"

#include "failure.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace dewarp_tool {

OutputFile::OutputFile(const std::string& path) : m_path(path) {
  if (IsStandardOutput()) {
    m_stream = stdout;
    return;
  }
  m_temporary = path + ".part-" + std::to_string(static_cast<long>(::getpid()));
  m_stream = std::fopen(m_temporary.c_str(), "wb");
  if (!m_stream) {
    BadInput("cannot write " + path + ": " + std::strerror(errno));
  }
}

OutputFile::~OutputFile() {
  if (m_committed || IsStandardOutput()) {
    return;
  }
  if (m_stream) {
    std::fclose(m_stream);
  }
  std::remove(m_temporary.c_str());
}

void OutputFile::Write(const void* data, std::size_t size) {
  if (size && std::fwrite(data, 1, size, m_stream) != size) {
    BadInput("cannot write " + m_path + ": " + std::strerror(errno));
  }
}

void OutputFile::Commit() {
  if (IsStandardOutput()) {
    std::fflush(stdout);
    m_committed = true;
    return;
  }
  const bool flushed = std::fflush(m_stream) == 0;
  const bool closed = std::fclose(m_stream) == 0;
  m_stream = nullptr;
  if (!flushed || !closed) {
    BadInput("cannot write " + m_path + ": " + std::strerror(errno));
  }
  if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
    BadInput("cannot rename " + m_temporary + " to " + m_path + ": " + std::strerror(errno));
  }
  m_committed = true;
}

}  // namespace dewarp_tool
