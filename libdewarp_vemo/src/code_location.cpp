#include <libdewarp_vemo/code_location.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

namespace {

std::string TextOrEmpty(const char* text) { return text ? std::string(text) : std::string(); }

}  // namespace

CodeLocation::CodeLocation() : m_nLine(-1) {}

CodeLocation::CodeLocation(const char* file, const char* className, const char* function, int line)
    : m_szFile(TextOrEmpty(file)),
      m_szClass(TextOrEmpty(className)),
      m_szFunction(TextOrEmpty(function)),
      m_nLine(line) {}

CodeLocation::CodeLocation(const CodeLocation& other) = default;

CodeLocation& CodeLocation::operator=(const CodeLocation& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "CodeLocation");
    return *this;
  }
  m_szFile = other.m_szFile;
  m_szClass = other.m_szClass;
  m_szFunction = other.m_szFunction;
  m_nLine = other.m_nLine;
  return *this;
}

CodeLocation::~CodeLocation() {}

bool CodeLocation::Empty() const {
  return m_szFile.empty() && m_szClass.empty() && m_szFunction.empty() && m_nLine == -1;
}

bool CodeLocation::HasClass() const { return !m_szClass.empty(); }

const std::string& CodeLocation::GetFile() const { return m_szFile; }

const std::string& CodeLocation::GetClass() const { return m_szClass; }

const std::string& CodeLocation::GetFunction() const { return m_szFunction; }

int CodeLocation::GetLine() const { return m_nLine; }

std::ostream& operator<<(std::ostream& stream, const CodeLocation& location) {
  if (location.HasClass()) {
    stream << location.GetClass() << "::";
  }
  stream << location.GetFunction() << '@' << location.GetFile() << ':' << location.GetLine();
  return stream;
}

}  // namespace libdewarp
}  // namespace vemo
