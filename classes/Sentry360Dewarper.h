// The dewarper of the Sentry360 kind: drives the built-in panoramic processor over three-byte
// frames. Sub-mode 1 is the processor's perspective view, sub-mode 2 its 360-degree panorama.
#ifndef DEWARPWRAPPER_SENTRY360DEWARPER_H
#define DEWARPWRAPPER_SENTRY360DEWARPER_H

#include "IDewarperBaseT.h"

class ImageProcessor;

class Sentry360Dewarper : public IDewarperBaseT<DewarperType::Sentry360> {
public:
  explicit Sentry360Dewarper(const DewarpParams_t& params);
  ~Sentry360Dewarper() override;

  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  float AdjustAspectRatio(float first, float second) override;
  void Clear() override;

  bool InitOptions() override;
  void UpdatePosition() override;
  float GetZoomScaleModifier() override;
  float LimitZoomRange(float zoom) override;
  bool InvertPan() override;
  bool InvertTilt() override;
  void GetPanRange(float& min, float& max, float& span, bool& wraps) override;
  void GetTiltRange(float& min, float& max, float& span, bool& wraps) override;

protected:
  ImageProcessor* m_360sdk;

private:
  void Unconfigure();
};

#endif
