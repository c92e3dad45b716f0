// The dewarper of the ImmerVision kind: drives ImmerVision's IMV_CameraInterface from
// libIMV1.so, loaded at run time, over three-byte frames whose output is the input's size. The
// only kind with a list of lens names.
#ifndef DEWARPWRAPPER_IMMERVISIONDEWARPER_H
#define DEWARPWRAPPER_IMMERVISIONDEWARPER_H

#include "IDewarperBaseT.h"
#include "makers/immervision_api.h"

class ImmervisionDewarper : public IDewarperBaseT<DewarperType::ImmerVision> {
public:
  explicit ImmervisionDewarper(const DewarpParams_t& params);
  ~ImmervisionDewarper() override;

  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool CanPan(int subMode) override;
  bool CanTilt(int subMode) override;
  bool CanZoom(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  void Clear() override;
  int GetLens(int index, char* buffer, size_t size) override;

  bool InitOptions() override;
  void UpdatePosition() override;
  float GetZoomScaleModifier() override;
  float LimitZoomRange(float zoom) override;

protected:
  // Hands a non-zero result to the library's error text and latches the failure. True for 0.
  bool Succeeded(int result);

  bool m_failed;
  IMV_CameraInterface* m_IMV1;
  IMV_Buffer* m_IMV1_input;
  IMV_Buffer* m_IMV1_output;
};

#endif
