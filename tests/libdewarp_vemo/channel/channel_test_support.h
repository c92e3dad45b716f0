// Shared helpers of the channel tests: a host's view of the C interface (records, frames with
// guard bytes around them, a log capture that also keeps the format of each line).
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <libdewarp_vemo/dewarp.h>

#include "log_capture.h"

namespace channel_test {

const double kPi = 3.14159265358979323846;

inline double Degrees(double radians) { return radians * 180.0 / kPi; }

const DEWARP_INTERNAL_CAMERA_MOUNT kMounts[] = {CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT,
                                                INVERTED_WALL_MOUNT};
const DEWARP_PROJECTION kProjections[] = {
    RECTILINEAR_PROJECTION,    CYLINDRICAL_PROJECTION,         EQUIRECTANGULAR_PROJECTION,
    MERCATOR_PROJECTION,       LAMBERT_CYLINDRICAL_PROJECTION, MILLER_CYLINDRICAL_PROJECTION,
    PANNINI_PROJECTION,        ARCHITECTURAL_PROJECTION,       EQUIRECTANGULAR_PANNINI_PROJECTION};
const DEWARP_VIEW kViews[] = {SINGLE_PANORAMIC_VIEW, DUAL_PANORAMIC_VIEW, QUAD_PANORAMIC_VIEW,
                              SINGLE_PTZ_VIEW,       DUAL_PTZ_VIEW,       QUAD_PTZ_VIEW};
const DEWARP_ASPECT_RATIO kAspects[] = {SCALE_TO_ASPECT_RATIO, CROP_TO_ASPECT_RATIO,
                                        FREE_ASPECT_RATIO};
const DEWARP_INTERPOLATION kInterpolations[] = {NEAREST_NEIGHBOUR_INTERPOLATION,
                                                LINEAR_INTERPOLATION, CUBIC_INTERPOLATION};

inline bool IsPtzView(DEWARP_VIEW view) { return view >= SINGLE_PTZ_VIEW; }

inline DEWARP_CHANNEL_SETTINGS Settings(DEWARP_VIEW view, DEWARP_PROJECTION projection,
                                        DEWARP_ASPECT_RATIO aspect,
                                        DEWARP_INTERPOLATION interpolation) {
  DEWARP_CHANNEL_SETTINGS settings;
  settings.View = view;
  settings.Projection = projection;
  settings.AspectRatio = aspect;
  settings.Interpolation = interpolation;
  return settings;
}

inline DEWARP_PTZ_POSITION Ptz(float pan, float tilt, float roll, float zoom) {
  DEWARP_PTZ_POSITION position;
  position.Pan = pan;
  position.Tilt = tilt;
  position.Roll = roll;
  position.Zoom = zoom;
  return position;
}

// Values the engine never produces, to see whether a record was written.
inline DEWARP_PTZ_POSITION UntouchedPtz() { return Ptz(-777.0f, -777.0f, -777.0f, -777.0f); }

inline bool SamePtz(const DEWARP_PTZ_POSITION& a, const DEWARP_PTZ_POSITION& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// A host's planar YUV 4:2:0 buffer of stride * height * 3 / 2 bytes, with guard bytes before and
// after it so that a write outside the described buffer is seen even without a sanitizer.
class Frame {
public:
  static constexpr std::size_t kGuard = 64;
  static constexpr std::uint8_t kGuardValue = 0xA5;

  Frame(unsigned int width, unsigned int height, unsigned int stride, std::uint8_t fill,
        DEWARP_IMAGE_FORMAT format = YUV420_PLANAR_IMAGE)
      : m_size(static_cast<std::size_t>(stride) * height * 3 / 2),
        m_bytes(m_size + 2 * kGuard, kGuardValue) {
    std::memset(Data(), fill, m_size);
    m_image.Info.Format = format;
    m_image.Info.Width = width;
    m_image.Info.Height = height;
    m_image.Info.Stride = stride;
    m_image.Data = Data();
  }

  // A copy describes its own bytes.
  Frame(const Frame& other) : m_size(other.m_size), m_bytes(other.m_bytes), m_image(other.m_image) {
    m_image.Data = Data();
  }
  Frame& operator=(const Frame& other) {
    m_size = other.m_size;
    m_bytes = other.m_bytes;
    m_image = other.m_image;
    m_image.Data = Data();
    return *this;
  }

  // Fills the three planes with one colour.
  void Fill(std::uint8_t y, std::uint8_t u, std::uint8_t v) {
    const std::size_t luma = static_cast<std::size_t>(m_image.Info.Stride) * m_image.Info.Height;
    const std::size_t chroma = luma / 4;
    std::memset(Data(), y, luma);
    std::memset(Data() + luma, u, chroma);
    std::memset(Data() + luma + chroma, v, m_size - luma - chroma);
  }

  std::uint8_t* Data() { return m_bytes.data() + kGuard; }
  const std::uint8_t* Data() const { return m_bytes.data() + kGuard; }
  std::size_t Size() const { return m_size; }
  DEWARP_IMAGE& Image() { return m_image; }

  std::uint8_t Y(unsigned int x, unsigned int y) const {
    return Data()[static_cast<std::size_t>(y) * m_image.Info.Stride + x];
  }

  bool GuardsIntact() const {
    for (std::size_t i = 0; i < kGuard; ++i) {
      if (m_bytes[i] != kGuardValue || m_bytes[kGuard + m_size + i] != kGuardValue) return false;
    }
    return true;
  }

  std::vector<std::uint8_t> Bytes() const {
    return std::vector<std::uint8_t>(Data(), Data() + m_size);
  }

private:
  std::size_t m_size;
  std::vector<std::uint8_t> m_bytes;
  DEWARP_IMAGE m_image;
};

// The built-in lens scaled down to a small picture: the same 183-degree circular fisheye over 242
// pixels instead of 1936, so that views and maps cost a sixty-fourth (every angle stays the same).
const unsigned int kSmallSide = 242;
inline DEWARP_INTERNAL_CAMERA_MODEL SmallLens() {
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  model.ResolutionH = kSmallSide;
  model.ResolutionV = kSmallSide;
  return model;
}

inline DEWARP_CHANNEL OpenSmall(DEWARP_INTERNAL_CAMERA_MOUNT mount,
                                const DEWARP_CHANNEL_SETTINGS* settings = nullptr) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = SmallLens();
  return dewarp_internal_open(&model, mount, settings);
}

// Opens a channel on the built-in camera, as the in-house host adapter does.
inline DEWARP_CHANNEL OpenBuiltIn(DEWARP_INTERNAL_CAMERA_MOUNT mount,
                                  const DEWARP_CHANNEL_SETTINGS* settings = nullptr) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  return dewarp_internal_open(&model, mount, settings);
}

// Closes a channel at the end of a scope.
class ScopedChannel {
public:
  explicit ScopedChannel(DEWARP_CHANNEL channel) : m_channel(channel) {}
  ~ScopedChannel() {
    if (m_channel) dewarp_close(m_channel);
  }
  DEWARP_CHANNEL get() const { return m_channel; }
  operator DEWARP_CHANNEL() const { return m_channel; }

private:
  ScopedChannel(const ScopedChannel&) = delete;
  ScopedChannel& operator=(const ScopedChannel&) = delete;
  DEWARP_CHANNEL m_channel;
};

// Index of the first captured line containing `text`, or -1.
inline int LineIndex(const vemo::test::LogCapture& capture, const std::string& text) {
  const std::vector<std::string>& lines = capture.lines();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find(text) != std::string::npos) return static_cast<int>(i);
  }
  return -1;
}

inline std::string AllLines(const vemo::test::LogCapture& capture) {
  std::string all;
  for (const std::string& line : capture.lines()) all += line;
  return all;
}

}  // namespace channel_test
