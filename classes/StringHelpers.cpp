#include "StringHelpers.h"

bool StringHelpers::StartsWith(const std::string& text, const std::string& pattern) {
  return text.size() >= pattern.size() && text.compare(0, pattern.size(), pattern) == 0;
}

bool StringHelpers::EndsWith(const std::string& text, const std::string& pattern) {
  return text.size() >= pattern.size() &&
         text.compare(text.size() - pattern.size(), pattern.size(), pattern) == 0;
}
