// The dewarper interface the host calls through its virtual table: the order of the virtual
// functions and their signatures are part of the plug-in's binary interface and never change.
#ifndef DEWARPWRAPPER_IDEWARPER_H
#define DEWARPWRAPPER_IDEWARPER_H

#include <cstddef>

#include "DewarperType.h"

class IDewarper {
public:
  virtual ~IDewarper();
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

#endif
