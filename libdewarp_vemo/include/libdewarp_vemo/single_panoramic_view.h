// The whole scene around the camera unrolled into one panoramic strip.
#pragma once

#include <libdewarp_vemo/view.h>

namespace vemo {
namespace libdewarp {

class SinglePanoramicView : public View {
public:
  explicit SinglePanoramicView(const CameraPtr& pobCamera);
  SinglePanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  SinglePanoramicView(const SinglePanoramicView& other);
  SinglePanoramicView& operator=(const SinglePanoramicView& other);
  virtual ~SinglePanoramicView();

  DEWARP_PROJECTION GetCompatibleProjection(const CameraPtr& pobCamera,
                                            DEWARP_PROJECTION eProjection) const override;
  PtzRange GetPtzRange(const CameraPtr& pobCamera, const FieldOfView& obFov) const override;
  FieldOfView GetTargetFov(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) const override;
  DEWARP_PROJECTION GetDefaultProjection() const override;
  DEWARP_ASPECT_RATIO GetDefaultAspectRatio() const override;
  using View::GetPtzRange;

protected:
  // The single panoramic projection map cut into strips: width times fWidthFactor, height
  // times fHeightFactor (the strips stacked one above the other).
  ImageMapPtr BuildStripProjectionMap(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection,
                                      float fWidthFactor, float fHeightFactor);
};

}  // namespace libdewarp
}  // namespace vemo
