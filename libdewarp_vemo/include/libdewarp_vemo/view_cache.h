// The views a channel has built, kept per (camera mount, projection, layout) so that switching
// back to an earlier layout, projection or mount reuses that view with its maps and PTZ position.
#pragma once

#include <map>
#include <utility>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class View;

class ViewCache {
public:
  // Ordered by mount first, then projection, then layout.
  typedef std::pair<DEWARP_INTERNAL_CAMERA_MOUNT, std::pair<DEWARP_PROJECTION, DEWARP_VIEW> > Key;
  typedef std::map<Key, boost::shared_ptr<View> > Cache;

  ViewCache();
  ViewCache(const ViewCache& other);
  ViewCache& operator=(const ViewCache& other);
  virtual ~ViewCache();

  static Key MakeKey(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection, DEWARP_VIEW view);

  // The stored view for the key, or an empty pointer.
  boost::shared_ptr<View> Get(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection,
                              DEWARP_VIEW view) const;
  // Stores the view under the key; an existing entry is replaced (and the replacement logged).
  void Set(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection, DEWARP_VIEW view,
           const boost::shared_ptr<View>& pobView);
  void Clear();

private:
  Cache m_obCache;
};

}  // namespace libdewarp
}  // namespace vemo
