// The dewarper base bound to its kind: Mode() answers the adapter's type.
#ifndef DEWARPWRAPPER_IDEWARPERBASET_H
#define DEWARPWRAPPER_IDEWARPERBASET_H

#include "IDewarperBase.h"

template <DewarperType::DewarperTypes T>
class IDewarperBaseT : public IDewarperBase {
public:
  explicit IDewarperBaseT(const DewarpParams_t& params) : IDewarperBase(params) {}

  DewarperType::DewarperTypes Mode() override { return T; }
};

#endif
