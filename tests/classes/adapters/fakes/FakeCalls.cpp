#include "FakeCalls.h"

#include <cstdarg>
#include <cstdio>
#include <map>

namespace fake_makers {
namespace {

std::vector<std::string>& Lines() {
  static std::vector<std::string> lines;
  return lines;
}

std::map<std::string, double>& Knobs() {
  static std::map<std::string, double> knobs;
  return knobs;
}

}  // namespace

void Record(const char* format, ...) {
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  Lines().push_back(line);
}

std::vector<std::string> Take() {
  std::vector<std::string> taken;
  taken.swap(Lines());
  return taken;
}

void Reset() {
  Lines().clear();
  Knobs().clear();
}

void SetKnob(const std::string& name, double value) { Knobs()[name] = value; }

bool HasKnob(const std::string& name) { return Knobs().count(name) != 0; }

double Knob(const std::string& name, double fallback) {
  const auto knob = Knobs().find(name);
  return knob == Knobs().end() ? fallback : knob->second;
}

}  // namespace fake_makers
