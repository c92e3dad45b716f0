// The dewarper of the Samsung kind: drives Samsung's CDewarping from libDewarpingLib.so, loaded
// at run time, over three-byte frames with an output size chosen from a fixed 4:3 list.
#ifndef DEWARPWRAPPER_SAMSUNGDEWARPER_H
#define DEWARPWRAPPER_SAMSUNGDEWARPER_H

#include "Buffer.h"
#include "IDewarperBaseT.h"
#include "makers/samsung_api.h"

class SamsungDewarper : public IDewarperBaseT<DewarperType::Samsung> {
public:
  explicit SamsungDewarper(const DewarpParams_t& params);
  ~SamsungDewarper() override;

  DewarperType::DewarperTypes Mode() override;
  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  void Clear() override;

  bool InitOptions() override;
  void UpdatePosition() override;
  float GetZoomScaleModifier() override;
  float LimitZoomRange(float zoom) override;
  void GetPanRange(float& min, float& max, float& span, bool& wraps) override;
  void GetTiltRange(float& min, float& max, float& span, bool& wraps) override;

protected:
  // The library's view type of the current sub-mode and camera position of the mounting.
  int ViewType() const;
  int CameraPosition() const;

  CDewarping* m_dewarper;
  BUFFER m_inputBuff;
  BUFFER m_outputBuff;
  float m_MinZoom;
  float m_MaxZoom;
};

#endif
