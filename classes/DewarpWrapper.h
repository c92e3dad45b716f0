// The plug-in's four entry points: unmangled, exported, called by the host after loading.
#ifndef DEWARPWRAPPER_DEWARPWRAPPER_H
#define DEWARPWRAPPER_DEWARPWRAPPER_H

#include "IDewarpRegister.h"
#include "IDewarper.h"

#define DEWARP_WRAPPER_EXPORT __attribute__((visibility("default")))

// The single registry; the host must not delete it.
extern "C" DEWARP_WRAPPER_EXPORT IDewarpRegister* GetRegister();
// A new dewarper of the kind (owned by the host until DeleteDewarper), or null.
extern "C" DEWARP_WRAPPER_EXPORT IDewarper* CreateDewarper(int type, DewarpParams_t params);
// Destroys a dewarper made by CreateDewarper; null is ignored.
extern "C" DEWARP_WRAPPER_EXPORT void DeleteDewarper(IDewarper* dewarper);
// Whether the plug-in offers a dewarper of the kind.
extern "C" DEWARP_WRAPPER_EXPORT bool DewarperLoaded(int type);

#endif
