// Finished projection maps keyed by camera mount and projection, held by shared ownership.
#pragma once

#include <map>
#include <utility>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class ImageMap;

class ProjectionMapCache {
public:
  typedef std::pair<DEWARP_INTERNAL_CAMERA_MOUNT, DEWARP_PROJECTION> Key;
  typedef boost::shared_ptr<ImageMap> ImageMapPtr;

  ProjectionMapCache();
  ProjectionMapCache(const ProjectionMapCache& other);
  ProjectionMapCache& operator=(const ProjectionMapCache& other);
  virtual ~ProjectionMapCache();

  void Set(DEWARP_INTERNAL_CAMERA_MOUNT eMount, DEWARP_PROJECTION eProjection, const ImageMapPtr& pobMap);
  void Set(const Key& obKey, const ImageMapPtr& pobMap);
  // The map stored for the key, or an empty pointer; never builds a map.
  ImageMapPtr Get(DEWARP_INTERNAL_CAMERA_MOUNT eMount, DEWARP_PROJECTION eProjection) const;
  ImageMapPtr Get(const Key& obKey) const;
  void Clear();

private:
  std::map<Key, ImageMapPtr> m_obCache;
};

}  // namespace libdewarp
}  // namespace vemo
