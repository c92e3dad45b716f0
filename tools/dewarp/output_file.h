// An output file that appears under its final name only when it is complete: the data is written
// to a temporary name beside it and renamed on Commit(); if the object is destroyed without a
// commit (an error, a truncated input), the temporary file is removed. The name "-" is standard
// output, written directly.
#ifndef DEWARP_TOOL_OUTPUT_FILE_H
#define DEWARP_TOOL_OUTPUT_FILE_H

#include <cstdio>
#include <string>

namespace dewarp_tool {

class OutputFile {
public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::FILE* Stream() const { return m_stream; }
  const std::string& Path() const { return m_path; }
  bool IsStandardOutput() const { return m_path == "-"; }
  // Writes the bytes or fails with a message naming the file.
  void Write(const void* data, std::size_t size);
  // Flushes, closes and renames the file to its final name.
  void Commit();

private:
  std::string m_path;
  std::string m_temporary;
  std::FILE* m_stream = nullptr;
  bool m_committed = false;
};

}  // namespace dewarp_tool

#endif
