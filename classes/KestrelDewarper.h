// The dewarper of the Kestrel kind: drives the in-house engine through its C interface with
// the built-in Norvik Kestrel Mk2 camera model. Needs no maker library.
#ifndef DEWARPWRAPPER_KESTRELDEWARPER_H
#define DEWARPWRAPPER_KESTRELDEWARPER_H

#include <libdewarp_vemo/dewarp.h>

#include "Buffer.h"
#include "IDewarperBaseT.h"

class KestrelDewarper : public IDewarperBaseT<DewarperType::Kestrel> {
public:
  explicit KestrelDewarper(const DewarpParams_t& params);
  ~KestrelDewarper() override;

  bool Check() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  float AdjustAspectRatio(float first, float second) override;
  void Clear() override;

  void SetDewarperType(DewarperType::DewarperTypes type) override;
  bool InitOptions() override;
  void UpdatePosition() override;
  float GetZoomScaleModifier() override;
  float LimitZoomRange(float zoom) override;
  void GetTiltRange(float& min, float& max, float& span, bool& wraps) override;
  float LimitTiltRange(float value) override;
  void GetFormatAndSize(int width, int height, unsigned int* size, int* format) override;

protected:
  // Closes the engine channel (the engine accepts a null one) and forgets it.
  void CloseChannel();
  // In the single PTZ view the output may not exceed half the input in either direction.
  void LimitOutputToHalfInput(int& width, int& height) const;

  DEWARP_CHANNEL m_channel;
  DEWARP_INTERNAL_CAMERA_MODEL m_model;
  BUFFER m_inputBuff;
  BUFFER m_outputBuff;
};

#endif
