// Case-sensitive byte comparisons of texts, used to recognise cameras by make and model.
#ifndef DEWARPWRAPPER_STRINGHELPERS_H
#define DEWARPWRAPPER_STRINGHELPERS_H

#include <string>

class StringHelpers {
public:
  // The text is at least as long as the pattern and begins with it.
  static bool StartsWith(const std::string& text, const std::string& pattern);
  // The text is at least as long as the pattern and ends with it.
  static bool EndsWith(const std::string& text, const std::string& pattern);
};

#endif
