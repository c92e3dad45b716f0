// Conversions of the plug-in's float positions into the integer units of makers' libraries.
#ifndef DEWARPWRAPPER_MAKERS_MAKERVALUES_H
#define DEWARPWRAPPER_MAKERS_MAKERVALUES_H

#include <limits>

// Truncates toward zero like a cast, but saturates at the integer type's limits and gives 0 for
// NaN, so that no position a host can send is an undefined conversion.
template <class Integer>
Integer TruncateToInteger(double value) {
  if (!(value == value)) {
    return 0;
  }
  if (value <= static_cast<double>(std::numeric_limits<Integer>::min())) {
    return std::numeric_limits<Integer>::min();
  }
  if (value >= static_cast<double>(std::numeric_limits<Integer>::max())) {
    return std::numeric_limits<Integer>::max();
  }
  return static_cast<Integer>(value);
}

#endif
