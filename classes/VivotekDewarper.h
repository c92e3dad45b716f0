// The dewarper of the Vivotek kind: drives Vivotek's fisheye library (libfisheyesw.so.1, loaded
// at run time) over planar YUV 4:2:0 frames.
#ifndef DEWARPWRAPPER_VIVOTEKDEWARPER_H
#define DEWARPWRAPPER_VIVOTEKDEWARPER_H

#include "IDewarperBaseT.h"

class VivotekDewarper : public IDewarperBaseT<DewarperType::Vivotek> {
public:
  explicit VivotekDewarper(const DewarpParams_t& params);
  ~VivotekDewarper() override;

  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool CanPan(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  float AdjustAspectRatio(float first, float second) override;
  void Clear() override;

  bool InitOptions() override;
  void UpdatePosition() override;
  float LimitZoomRange(float zoom) override;
  void GetFormatAndSize(int width, int height, unsigned int* size, int* format) override;

protected:
  // Releases the library handle, if any, and forgets it.
  void Release();

  void* m_Vivotek;
};

#endif
