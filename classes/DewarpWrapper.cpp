#include "DewarpWrapper.h"

#include "DewarperRegistry.h"

namespace {

// Built when the library is loaded, destroyed when it is unloaded.
DewarperRegistry s_registry;

}  // namespace

IDewarpRegister* GetRegister() { return &s_registry; }

IDewarper* CreateDewarper(int type, DewarpParams_t params) {
  if (!DewarperLoaded(type)) {
    return nullptr;
  }
  return s_registry.Create(static_cast<DewarperType::DewarperTypes>(type), params);
}

void DeleteDewarper(IDewarper* dewarper) { delete dewarper; }

bool DewarperLoaded(int type) { return s_registry.IsLoaded(type); }
