// Dewarper kinds and the host's creation parameters, shared with the host application.
#ifndef DEWARPWRAPPER_DEWARPERTYPE_H
#define DEWARPWRAPPER_DEWARPERTYPE_H

namespace DewarperType {
// Plain integer enumeration: the host stores and passes these values as ints.
enum DewarperTypes {
  NoDewarper = 0,
  ImmerVision = 1,
  Sentry360 = 2,
  Vivotek = 3,
  Oncam = 4,
  Acti = 5,
  Inaxsys = 6,
  Samsung = 7,
  Kestrel = 8,
  Geovision = 9,
  Axis = 10,
  Count = 11
};
}  // namespace DewarperType

// The host's creation parameters: six signed 32-bit integers, in this order. Position is the
// mounting code (1 ceiling, 2 floor, anything else wall); X, Y, R the fisheye circle in pixels.
struct DewarpParams_t {
  int Lens;
  int Position;
  int Scroll;
  int X;
  int Y;
  int R;

  bool operator==(const DewarpParams_t& other) const;
  bool operator!=(const DewarpParams_t& other) const;
};
typedef DewarpParams_t DewarpParams;

static_assert(sizeof(DewarpParams_t) == 24, "the host passes six 32-bit integers by value");

#endif
