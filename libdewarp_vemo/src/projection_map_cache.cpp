#include <libdewarp_vemo/projection_map_cache.h>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

ProjectionMapCache::ProjectionMapCache() {}

ProjectionMapCache::ProjectionMapCache(const ProjectionMapCache& other) : m_obCache(other.m_obCache) {}

ProjectionMapCache& ProjectionMapCache::operator=(const ProjectionMapCache& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ProjectionMapCache");
    return *this;
  }
  m_obCache = other.m_obCache;
  return *this;
}

ProjectionMapCache::~ProjectionMapCache() {}

void ProjectionMapCache::Set(DEWARP_INTERNAL_CAMERA_MOUNT eMount, DEWARP_PROJECTION eProjection,
                             const ImageMapPtr& pobMap) {
  Set(Key(eMount, eProjection), pobMap);
}

// An existing entry is overwritten (with an info line); the earlier map loses the cache's share.
void ProjectionMapCache::Set(const Key& obKey, const ImageMapPtr& pobMap) {
  if (m_obCache.find(obKey) != m_obCache.end()) {
    DEWARP_LOG_INFO("Projection map cache item was overwritten\n");
  }
  m_obCache[obKey] = pobMap;
}

ProjectionMapCache::ImageMapPtr ProjectionMapCache::Get(DEWARP_INTERNAL_CAMERA_MOUNT eMount,
                                                        DEWARP_PROJECTION eProjection) const {
  return Get(Key(eMount, eProjection));
}

ProjectionMapCache::ImageMapPtr ProjectionMapCache::Get(const Key& obKey) const {
  const std::map<Key, ImageMapPtr>::const_iterator it = m_obCache.find(obKey);
  if (it == m_obCache.end()) {
    return ImageMapPtr();
  }
  return it->second;
}

void ProjectionMapCache::Clear() { m_obCache.clear(); }

}  // namespace libdewarp
}  // namespace vemo
