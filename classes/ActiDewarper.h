// The dewarper of the ACTi and Inaxsys kinds: drives ACTi's fisheye library (libFisheyeSDK.so,
// loaded at run time) over three-byte frames of at most 1920 x 1080. Positions are in the
// library's own units and travel with every frame.
#ifndef DEWARPWRAPPER_ACTIDEWARPER_H
#define DEWARPWRAPPER_ACTIDEWARPER_H

#include "IDewarperBaseT.h"

class ActiDewarper : public IDewarperBaseT<DewarperType::Acti> {
public:
  explicit ActiDewarper(const DewarpParams_t& params);
  ~ActiDewarper() override;

  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool CanPan(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  bool GetNeedsRotation() override;
  float AdjustAspectRatio(float first, float second) override;
  void Clear() override;

  void UpdatePosition() override;
  float GetZoomScaleModifier() override;
  float LimitZoomRange(float zoom) override;
  bool InvertPan() override;
  bool InvertTilt() override;
  void GetPanRange(float& min, float& max, float& span, bool& wraps) override;
  void GetTiltRange(float& min, float& max, float& span, bool& wraps) override;

protected:
  // Releases and closes the library interface, if any, and forgets it.
  void CloseInterface();
  // Dewarps the input buffer into the output buffer; true when the library succeeded.
  bool Transform();

  void* m_interface;
};

#endif
