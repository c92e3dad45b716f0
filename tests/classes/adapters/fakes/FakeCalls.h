// The call log shared by the stand-in maker libraries and the adapter tests. Each stand-in
// library records every call it receives, with its arguments, as one line of text; a test
// takes the lines and compares them with the sequence it expects. Knobs let a test choose what
// a stand-in answers (result codes, corrected values, zoom limits).
#ifndef TESTS_ADAPTERS_FAKES_FAKECALLS_H
#define TESTS_ADAPTERS_FAKES_FAKECALLS_H

#include <string>
#include <vector>

namespace fake_makers {

// Appends one printf-formatted line to the log.
void Record(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Returns the lines recorded since the last Take or Reset and empties the log.
std::vector<std::string> Take();
// Empties the log and forgets every knob.
void Reset();
void SetKnob(const std::string& name, double value);
bool HasKnob(const std::string& name);
double Knob(const std::string& name, double fallback);

}  // namespace fake_makers

#endif
