// A dewarper over the common base that records what the base asks of it, for the base's tests.
#ifndef TESTS_CLASSES_RECORDING_DEWARPER_H
#define TESTS_CLASSES_RECORDING_DEWARPER_H

#include "IDewarperBaseT.h"

class RecordingDewarper : public IDewarperBaseT<DewarperType::Sentry360> {
public:
  explicit RecordingDewarper(const DewarpParams_t& params) : IDewarperBaseT<DewarperType::Sentry360>(params) {}

  bool Check() override {
    ++checks;
    return ready;
  }
  void Clear() override { ++clears; }
  void UpdatePosition() override { ++updates; }
  void SetPosition(float pan, float tilt, float zoom) override {
    ++setPositions;
    IDewarperBase::SetPosition(pan, tilt, zoom);
  }
  bool InvertPan() override { return invertPan; }
  bool InvertTilt() override { return invertTilt; }

  using IDewarperBase::IsFrameSizeUsable;
  using IDewarperBase::m_dstHeight;
  using IDewarperBase::m_dstWidth;
  using IDewarperBase::m_height;
  using IDewarperBase::m_input;
  using IDewarperBase::m_needsInit;
  using IDewarperBase::m_output;
  using IDewarperBase::m_Pan;
  using IDewarperBase::m_subMode;
  using IDewarperBase::m_Tilt;
  using IDewarperBase::m_width;
  using IDewarperBase::m_Zoom;

  bool ready = true;
  bool invertPan = false;
  bool invertTilt = false;
  int checks = 0;
  int clears = 0;
  int updates = 0;
  int setPositions = 0;
};

// Counts the initialisations the base runs and answers them as told.
class InitCountingDewarper : public RecordingDewarper {
public:
  using RecordingDewarper::RecordingDewarper;
  bool InitOptions() override {
    ++inits;
    return initResult;
  }
  int inits = 0;
  bool initResult = true;
};

inline DewarpParams_t ParamsWithPosition(int position) {
  DewarpParams_t params = {0, position, 0, 0, 0, 0};
  return params;
}

#endif
