// The plug-in's binary interface as a host declares it for itself: the kinds, the creation
// parameters, the two interfaces in their virtual-table order and the entry points. A host
// includes no header of the plug-in; these declarations are its own, under its own namespace,
// and meet the plug-in's objects only through the virtual tables.
#ifndef TESTS_CLASSES_HOST_HOST_INTERFACES_H
#define TESTS_CLASSES_HOST_HOST_INTERFACES_H

#include <cstddef>

namespace host {

namespace DewarperType {
enum DewarperTypes { NoDewarper = 0, ImmerVision = 1, Sentry360 = 2, Vivotek = 3, Oncam = 4,
                     Acti = 5, Inaxsys = 6, Samsung = 7, Kestrel = 8, Geovision = 9,
                     Axis = 10, Count = 11 };
}

struct DewarpParams_t {
  int Lens, Position, Scroll, X, Y, R;
};

class IDewarper {
public:
  virtual ~IDewarper() {}
  virtual DewarperType::DewarperTypes Mode() = 0;
  virtual bool Check() = 0;
  virtual int SubMode() = 0;
  virtual void SetSubMode(int subMode) = 0;
  virtual bool IsSubModeSupported(int subMode) = 0;
  virtual bool IsNormalPTZSupported(int subMode) = 0;
  virtual bool CanPan(int subMode) = 0;
  virtual bool CanTilt(int subMode) = 0;
  virtual bool CanZoom(int subMode) = 0;
  virtual void Pan(int direction, int speed) = 0;
  virtual void Tilt(int direction, int speed) = 0;
  virtual void Zoom(int direction, int speed) = 0;
  virtual void SetPosition(float pan, float tilt, float zoom) = 0;
  virtual void GetPosition(float& pan, float& tilt, float& zoom) = 0;
  virtual bool GetImageInputBuffer(int width, int height, unsigned char** buffer, unsigned int* size,
                                   int* format) = 0;
  virtual bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                                    int* format) = 0;
  virtual bool GetNeedsRotation() = 0;
  virtual float AdjustAspectRatio(float first, float second) = 0;
  virtual void Clear() = 0;
  virtual const DewarpParams_t& Parameters() const = 0;
  virtual int GetLens(int index, char* buffer, size_t size) = 0;
};

class IDewarpRegister {
public:
  virtual ~IDewarpRegister() {}
  virtual bool IsCameraSpecific(int type) = 0;
  virtual void GetSupportedFeatures(int type, bool& lens, bool& xyr, bool& position) = 0;
  virtual bool IsLoaded(int type) = 0;
  virtual const char* GetName(int type) = 0;
  virtual int GetLens(int type, int index, char* buffer, size_t size) = 0;
  virtual int GetModeCount() = 0;
  virtual DewarperType::DewarperTypes GetModeByName(const char* name) = 0;
  virtual DewarperType::DewarperTypes GetModeByCamera(const char* make, const char* model, const char* url) = 0;
};

typedef IDewarpRegister* (*GetRegisterFunction)();
typedef IDewarper* (*CreateDewarperFunction)(int type, DewarpParams_t params);
typedef void (*DeleteDewarperFunction)(IDewarper* dewarper);
typedef bool (*DewarperLoadedFunction)(int type);

}  // namespace host

#endif
