#include "DewarperType.h"

bool DewarpParams_t::operator==(const DewarpParams_t& other) const {
  return Lens == other.Lens && Position == other.Position && Scroll == other.Scroll &&
         X == other.X && Y == other.Y && R == other.R;
}

bool DewarpParams_t::operator!=(const DewarpParams_t& other) const {
  return !(*this == other);
}
