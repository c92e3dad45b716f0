// Four perspective panes in a two-by-two arrangement.
#pragma once

#include <libdewarp_vemo/single_ptz_view.h>

namespace vemo {
namespace libdewarp {

class QuadPtzView : public SinglePtzView {
public:
  explicit QuadPtzView(const CameraPtr& pobCamera);
  QuadPtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  QuadPtzView(const QuadPtzView& other);
  QuadPtzView& operator=(const QuadPtzView& other);
  virtual ~QuadPtzView();

  using View::BuildPtzMap;
  ImageMapPtr BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                          const ImageMapPtr& pobScaledProjectionMap) override;
};

}  // namespace libdewarp
}  // namespace vemo
