// Makes a view of the requested layout on a camera.
#pragma once

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class Camera;
class View;

class ViewBuilder {
public:
  ViewBuilder();
  ViewBuilder(const ViewBuilder& other);
  ViewBuilder& operator=(const ViewBuilder& other);
  virtual ~ViewBuilder();

  // A newly allocated view of the layout `view` on the camera with the projection; the caller
  // owns it. An unknown layout sets errno 22 and throws "Invalid view".
  View* BuildView(DEWARP_VIEW view, const boost::shared_ptr<Camera>& pobCamera,
                  DEWARP_PROJECTION projection) const;
};

}  // namespace libdewarp
}  // namespace vemo
