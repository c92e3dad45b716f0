#include <libdewarp_vemo/view_builder.h>

#include <cerrno>

#include <libdewarp_vemo/dual_panoramic_view.h>
#include <libdewarp_vemo/dual_ptz_view.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/quad_panoramic_view.h>
#include <libdewarp_vemo/quad_ptz_view.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>

namespace vemo {
namespace libdewarp {

ViewBuilder::ViewBuilder() {}

ViewBuilder::ViewBuilder(const ViewBuilder&) {}

ViewBuilder& ViewBuilder::operator=(const ViewBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ViewBuilder");
  }
  return *this;
}

ViewBuilder::~ViewBuilder() {}

View* ViewBuilder::BuildView(DEWARP_VIEW view, const boost::shared_ptr<Camera>& pobCamera,
                             DEWARP_PROJECTION projection) const {
  switch (view) {
    case SINGLE_PANORAMIC_VIEW:
      return new SinglePanoramicView(pobCamera, projection);
    case DUAL_PANORAMIC_VIEW:
      return new DualPanoramicView(pobCamera, projection);
    case QUAD_PANORAMIC_VIEW:
      return new QuadPanoramicView(pobCamera, projection);
    case SINGLE_PTZ_VIEW:
      return new SinglePtzView(pobCamera, projection);
    case DUAL_PTZ_VIEW:
      return new DualPtzView(pobCamera, projection);
    case QUAD_PTZ_VIEW:
      return new QuadPtzView(pobCamera, projection);
    default:
      DEWARP_LOG_ERR("Invalid view\n");
      Error::SetLastError(EINVAL);
      throw Error(DEWARP_LOCATION("ViewBuilder"), EINVAL, "Invalid view");
  }
}

}  // namespace libdewarp
}  // namespace vemo
