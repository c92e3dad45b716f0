// The dewarper of the Geovision kind: drives Geovision's IFishEye from libGeoFESDK.so, loaded at
// run time, over planar YUV 4:2:0 frames, on one channel of the library. Positions are in
// tenths of a degree.
#ifndef DEWARPWRAPPER_GEOVISIONDEWARPER_H
#define DEWARPWRAPPER_GEOVISIONDEWARPER_H

#include "Buffer.h"
#include "IDewarperBaseT.h"

class IFishEye;

class GeovisionDewarper : public IDewarperBaseT<DewarperType::Geovision> {
public:
  explicit GeovisionDewarper(const DewarpParams_t& params);
  ~GeovisionDewarper() override;

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
  void GetFormatAndSize(int width, int height, unsigned int* size, int* format) override;

protected:
  // Closes the open channel and releases the library object, if any.
  void Close();

  IFishEye* m_fisheye;
  int m_camera;
  BUFFER m_inputBuff;
  BUFFER m_outputBuff;
};

#endif
