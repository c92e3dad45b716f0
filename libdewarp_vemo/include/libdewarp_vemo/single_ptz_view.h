// One perspective pane steered like a pan-tilt-zoom camera.
#pragma once

#include <libdewarp_vemo/view.h>

namespace vemo {
namespace libdewarp {

class SinglePtzView : public View {
public:
  explicit SinglePtzView(const CameraPtr& pobCamera);
  SinglePtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  SinglePtzView(const SinglePtzView& other);
  SinglePtzView& operator=(const SinglePtzView& other);
  virtual ~SinglePtzView();

  DEWARP_PROJECTION GetCompatibleProjection(const CameraPtr& pobCamera,
                                            DEWARP_PROJECTION eProjection) const override;
  PtzRange GetPtzRange(const CameraPtr& pobCamera, const FieldOfView& obFov) const override;
  FieldOfView GetTargetFov(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) const override;
  using View::GetPtzRange;
};

}  // namespace libdewarp
}  // namespace vemo
