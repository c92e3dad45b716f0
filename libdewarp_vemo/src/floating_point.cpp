#include <libdewarp_vemo/floating_point.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

template <class T>
T BasicFloatingPoint<T>::sqrt(T argument) {
  T x = argument;
  if (x < T(0)) {
    DEWARP_LOG_WARN("Attempted square root of a negative value. Returning root of absolute.\n");
    x = std::fabs(x);
  }
  const T root = std::sqrt(x);
  return std::isnan(root) ? std::sqrt(argument) : root;
}

template class BasicFloatingPoint<float>;
template class BasicFloatingPoint<double>;
template class BasicFloatingPoint<long double>;

}  // namespace libdewarp
}  // namespace vemo
