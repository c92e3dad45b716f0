// Common behaviour of every dewarper: parameters, virtual camera position, PTZ stepping, range
// limiting and the two frame buffers the dewarper owns and lends to the host.
#ifndef DEWARPWRAPPER_IDEWARPERBASE_H
#define DEWARPWRAPPER_IDEWARPERBASE_H

#include "IDewarper.h"

class IDewarperBase : public IDewarper {
public:
  explicit IDewarperBase(const DewarpParams_t& params);
  ~IDewarperBase() override;

  IDewarperBase(const IDewarperBase&) = delete;
  IDewarperBase& operator=(const IDewarperBase&) = delete;

  // IDewarper: Mode(), Check() and Clear() stay for the adapters.
  int SubMode() override;
  void SetSubMode(int subMode) override;
  bool IsSubModeSupported(int subMode) override;
  bool IsNormalPTZSupported(int subMode) override;
  bool CanPan(int subMode) override;
  bool CanTilt(int subMode) override;
  bool CanZoom(int subMode) override;
  void Pan(int direction, int speed) override;
  void Tilt(int direction, int speed) override;
  void Zoom(int direction, int speed) override;
  void SetPosition(float pan, float tilt, float zoom) override;
  void GetPosition(float& pan, float& tilt, float& zoom) override;
  bool GetImageInputBuffer(int width, int height, unsigned char** buffer, unsigned int* size,
                           int* format) override;
  bool GetImageOutputBuffer(int* width, int* height, unsigned char** buffer, unsigned int* size,
                            int* format) override;
  bool GetNeedsRotation() override;
  float AdjustAspectRatio(float first, float second) override;
  const DewarpParams_t& Parameters() const override;
  int GetLens(int index, char* buffer, size_t size) override;

  // Operations every adapter may refine, in this order after the inherited ones.
  virtual void SetDewarperType(DewarperType::DewarperTypes type);
  virtual bool InitOptions();
  virtual void UpdatePosition() = 0;
  virtual float GetZoomScaleModifier();
  virtual float LimitZoomRange(float zoom);
  virtual bool InvertPan();
  virtual bool InvertTilt();
  virtual void GetPanRange(float& min, float& max, float& span, bool& wraps);
  virtual void GetTiltRange(float& min, float& max, float& span, bool& wraps);
  virtual float LimitPanRange(float value);
  virtual float LimitTiltRange(float value);
  virtual void GetFormatAndSize(int width, int height, unsigned int* size, int* format);
  virtual void GetInputFormatAndSize(int width, int height, unsigned int* size, int* format);
  virtual void GetOutputFormatAndSize(int width, int height, unsigned int* size, int* format);

protected:
  // Wraps a value into [min, max) when the range wraps, then clamps it into [min, max].
  static float LimitToRange(float value, float min, float max, bool wraps);
  // Whether a frame of width x height pixels has a usable size: both sides positive and three
  // bytes per pixel (the largest layout any dewarper reports) still countable in 32 bits.
  static bool IsFrameSizeUsable(long long width, long long height);
  // The number of PTZ steps a host request stands for: speed + 1 in the direction's sign.
  static int StepCount(int direction, int speed);
  // The change of `steps` PTZ steps on a range [min, max] of nominal span `span` degrees: each
  // step moves a fixed fraction of a degree of the span, scaled to the range; negated on request.
  static float StepChange(int steps, float min, float max, float span, bool invert);
  // Keeps a zoom inside [min, max]; a NaN zoom counts as below the range.
  static float LimitZoomTo(float zoom, float min, float max);
  // One planar YUV 4:2:0 frame under the host's format code `formatCode`: width x height luma
  // bytes and half as many chroma bytes, counted in unsigned arithmetic (usable sizes only).
  static void Planar420FormatAndSize(int width, int height, int formatCode, unsigned int* size, int* format);

  // Takes a host's sub-mode request: 0 stands for 1. True when the (normalised) request differs
  // from the current sub-mode, i.e. when the adapter has something to change.
  bool IsSubModeChange(int& subMode) const;
  // Places the virtual camera at a home position; nothing is limited or applied.
  void ResetPosition(float pan, float tilt, float zoom);
  // Whether one row of the input and of the output frame, at `bytesPerPixel` bytes a pixel, can
  // be counted in an int (as the maker libraries and the panoramic processor count them).
  bool RowBytesFitInInt(int bytesPerPixel) const;
  // Forgets the input frame's recorded size: the next input buffer request provides a new frame
  // and the dewarper is configured anew.
  void ForgetInputSize();

  DewarpParams_t m_Params;
  int m_width;
  int m_height;
  int m_dstWidth;
  int m_dstHeight;
  int m_subMode;
  bool m_needsInit;
  float m_Pan;
  float m_Tilt;
  float m_Zoom;
  unsigned char* m_input;
  unsigned char* m_output;

private:
  // Reuses *frame when its recorded size matches, else replaces it by a new frame of `bytes`
  // bytes and marks the dewarper for reinitialisation. False when no memory could be had.
  bool ProvideFrame(unsigned char*& frame, int& recordedWidth, int& recordedHeight, int width,
                    int height, unsigned int bytes);
};

#endif
