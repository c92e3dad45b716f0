#include <libdewarp_vemo/view_cache.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/view.h>

namespace vemo {
namespace libdewarp {

ViewCache::ViewCache() {}

ViewCache::ViewCache(const ViewCache& other) : m_obCache(other.m_obCache) {}

ViewCache& ViewCache::operator=(const ViewCache& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ViewCache");
    return *this;
  }
  m_obCache = other.m_obCache;
  return *this;
}

ViewCache::~ViewCache() {}

ViewCache::Key ViewCache::MakeKey(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection,
                                  DEWARP_VIEW view) {
  return Key(mount, std::make_pair(projection, view));
}

boost::shared_ptr<View> ViewCache::Get(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection,
                                       DEWARP_VIEW view) const {
  const Cache::const_iterator it = m_obCache.find(MakeKey(mount, projection, view));
  return it == m_obCache.end() ? boost::shared_ptr<View>() : it->second;
}

void ViewCache::Set(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection, DEWARP_VIEW view,
                    const boost::shared_ptr<View>& pobView) {
  const Key obKey = MakeKey(mount, projection, view);
  if (m_obCache.find(obKey) != m_obCache.end()) {
    // The line names the projection map cache; it is the line this cache has always written.
    DEWARP_LOG_INFO("Projection map cache item was overwritten\n");
  }
  m_obCache[obKey] = pobView;
}

void ViewCache::Clear() { m_obCache.clear(); }

}  // namespace libdewarp
}  // namespace vemo
