// The registry interface the host calls through its virtual table (order and signatures fixed).
#ifndef DEWARPWRAPPER_IDEWARPREGISTER_H
#define DEWARPWRAPPER_IDEWARPREGISTER_H

#include <cstddef>

#include "DewarperType.h"

class IDewarpRegister {
public:
  virtual ~IDewarpRegister();
  virtual bool IsCameraSpecific(int type) = 0;
  virtual void GetSupportedFeatures(int type, bool& lens, bool& xyr, bool& position) = 0;
  virtual bool IsLoaded(int type) = 0;
  virtual const char* GetName(int type) = 0;
  virtual int GetLens(int type, int index, char* buffer, size_t size) = 0;
  virtual int GetModeCount() = 0;
  virtual DewarperType::DewarperTypes GetModeByName(const char* name) = 0;
  virtual DewarperType::DewarperTypes GetModeByCamera(const char* make, const char* model, const char* url) = 0;
};

#endif
