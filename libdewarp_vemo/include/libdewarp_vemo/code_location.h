// The place of a report: source file, class, function and line.
#pragma once

#include <ostream>
#include <string>

namespace vemo {
namespace libdewarp {

class CodeLocation {
public:
  // Three empty strings and line -1.
  CodeLocation();
  // A null pointer for any of the strings is stored as an empty string; a null class marks a free
  // function.
  CodeLocation(const char* file, const char* className, const char* function, int line);
  CodeLocation(const CodeLocation& other);
  CodeLocation& operator=(const CodeLocation& other);
  virtual ~CodeLocation();

  // True for the default location (no file, class or function, line -1).
  bool Empty() const;
  bool HasClass() const;
  const std::string& GetFile() const;
  const std::string& GetClass() const;
  const std::string& GetFunction() const;
  int GetLine() const;

private:
  std::string m_szFile;
  std::string m_szClass;
  std::string m_szFunction;
  int m_nLine;
};

// "Class::Function@file:line", or "Function@file:line" without a class.
std::ostream& operator<<(std::ostream& stream, const CodeLocation& location);

}  // namespace libdewarp
}  // namespace vemo

// The location of the current line inside class `cls` (a C string, or NULL for a free function).
#define DEWARP_LOCATION(cls) ::vemo::libdewarp::CodeLocation(__FILE__, cls, __FUNCTION__, __LINE__)
