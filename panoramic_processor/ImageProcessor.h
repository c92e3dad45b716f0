// The panoramic image processor: turns one circular fisheye frame into a perspective
// pan/tilt/zoom view or a 360-degree panorama strip, caching a per-pixel source map so that an
// unchanged view costs one table lookup per pixel.
#ifndef PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_H
#define PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_H

#include "ImageProcessorCommon.h"
#include "ImageProcessorPrivateData.h"

class ImageProcessor : public ImageProcessorBase {
public:
  ImageProcessor();
  ~ImageProcessor();
  ImageProcessor(const ImageProcessor&) = delete;
  ImageProcessor& operator=(const ImageProcessor&) = delete;

  // Pan in [-180, 180] degrees, tilt in [-90, 90] degrees, zoom above 0; anything else is a
  // programming error that ends the process. The combined setters check pan, then tilt, then
  // zoom, and store nothing unless all pass.
  void SetPan(double pan);
  void SetTilt(double tilt);
  void SetZoom(double zoom);
  void SetPanTilt(double pan, double tilt);
  void SetPanTiltZoom(double pan, double tilt, double zoom);
  void GetPanTiltZoom(double& pan, double& tilt, double& zoom) const;
  double GetPan() const;
  double GetTilt() const;
  double GetZoom() const;

  // Sizes the three images from params (owning or dropping their buffers as the ...OwnData
  // flags say), keeps params and rebuilds the working tables; both cached maps are invalid
  // afterwards. Throws std::bad_alloc when a buffer or table does not fit the address space
  // (the tables are then left empty and nothing is rendered until the next SetParameters).
  void SetParameters(const ImageProcessorParams& params);
  const ImageProcessorParams& GetParameters() const;

  // Copies image into the input image.
  void InputImage(const ImageData& image);
  // Copy the rendered view / panorama out into image.
  void OutputImage(ImageData& image) const;
  void OutputPanoramaImage(ImageData& image) const;

  // Renders the view into the view output image.
  void ProcessImage();
  // Renders the panorama into the panorama output image.
  void ProcessPanoramaImage();

  // Bilinear mix of one channel of the pixel at (x, y) with its right, lower and lower-right
  // neighbours (bytesPerPixel bytes on, one stride down), weighted by the fractions fx and fy
  // and truncated to an integer.
  static int GetAveragePixelValue(const unsigned char* data, int stride, int bytesPerPixel, int x,
                                  int y, int channel, float fx, float fy);

  // The working tables (for diagnostics).
  const ImageProcessorPrivateData& PrivateData() const { return *_privateData; }

private:
  void InnerProcessImage();
  void InnerProcessPanoramaImage();

  ImageProcessorPrivateData* _privateData;
  ImageProcessorParams _params;
  double _pan;
  double _tilt;
  double _zoom;

public:
  // The three images. A user may point them at buffers of its own (ImageData::Borrow); every
  // read and write of the renderers stays inside Height x Stride bytes of these images.
  ImageData _inputData;
  ImageData _outputData;
  ImageData _outputPanoramaData;
};

#endif  // PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_H
