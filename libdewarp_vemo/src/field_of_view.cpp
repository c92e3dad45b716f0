#include <libdewarp_vemo/field_of_view.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const FieldOfView FieldOfView::ZeroFieldOfView(FloatingPoint::Zero, FloatingPoint::Zero, FloatingPoint::Zero);
const FieldOfView FieldOfView::InvalidFieldOfView(FloatingPoint::Nan, FloatingPoint::Nan, FloatingPoint::Nan);
// A ceiling or floor lens sees all round and from the horizon to the vertical.
const FieldOfView FieldOfView::CeilingFieldOfView(Trigonometry::TWO_PI, Trigonometry::HALF_PI);
const FieldOfView FieldOfView::FloorFieldOfView(Trigonometry::TWO_PI, Trigonometry::HALF_PI);
const FieldOfView FieldOfView::PtzFieldOfView(Trigonometry::HALF_PI, Trigonometry::HALF_PI);

FieldOfView& FieldOfView::operator=(const FieldOfView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "FieldOfView");
    return *this;
  }
  Horizontal = other.Horizontal;
  Vertical = other.Vertical;
  Diagonal = other.Diagonal;
  return *this;
}

void FieldOfView::Set(DEWARP_FLOAT horizontal, DEWARP_FLOAT vertical) {
  Horizontal = horizontal;
  Vertical = vertical;
  Diagonal = Trigonometry::hypot(horizontal, vertical);
}

}  // namespace libdewarp
}  // namespace vemo
