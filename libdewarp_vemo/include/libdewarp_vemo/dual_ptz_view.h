// Two perspective panes steered together; the second looks the opposite way where the camera's
// mounting allows more than one pane.
#pragma once

#include <libdewarp_vemo/single_ptz_view.h>

namespace vemo {
namespace libdewarp {

class DualPtzView : public SinglePtzView {
public:
  explicit DualPtzView(const CameraPtr& pobCamera);
  DualPtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  DualPtzView(const DualPtzView& other);
  DualPtzView& operator=(const DualPtzView& other);
  virtual ~DualPtzView();

  using View::BuildPtzMap;
  ImageMapPtr BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                          const ImageMapPtr& pobScaledProjectionMap) override;
};

}  // namespace libdewarp
}  // namespace vemo
