// Fuzz target of the engine's C interface: the input bytes are read as a host's sequence of calls
// with arbitrary records, enumeration values, image descriptions (every buffer exactly as large as
// its description says) and PTZ values. Sizes are capped so that one input stays fast.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include <libdewarp_vemo/dewarp.h>

namespace {

// Reads the input front to back; past the end every value is zero.
class Input {
public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  bool Empty() const { return m_pos >= m_size; }
  std::uint8_t Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
  std::uint32_t Word() {
    std::uint32_t w = 0;
    for (int i = 0; i < 4; ++i) w = (w << 8) | Byte();
    return w;
  }
  // Small values mostly, any 32-bit value sometimes.
  int Enum() {
    const std::uint8_t b = Byte();
    if (b < 0xF0) return static_cast<int>(b % 12) - 2;
    return static_cast<int>(Word());
  }
  float Float() {
    const std::uint8_t kind = Byte();
    if (kind < 0xC0) return static_cast<float>(static_cast<std::int8_t>(Byte())) * 3.0f;
    std::uint32_t bits = Word();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;  // any bit pattern: huge, tiny, infinite, not a number
  }
  unsigned int Size(unsigned int max) { return Byte() % (max + 1); }

private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
};

int Logger(const char* format, va_list arguments) {
  char line[512];
  return std::vsnprintf(line, sizeof line, format, arguments);
}

const float kFovs[] = {183.0f, 180.0f, 90.0f, 120.0f, 150.0f, 170.0f, 60.0f, 200.0f};

DEWARP_INTERNAL_CAMERA_MODEL Model(Input& in) {
  DEWARP_INTERNAL_CAMERA_MODEL model;
  model.Type = static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(in.Byte() % 3);  // 2 is no camera type
  model.FovH = kFovs[in.Byte() % 8];
  model.FovV = kFovs[in.Byte() % 8];
  model.FovD = kFovs[in.Byte() % 8];
  // The lens picture stays small: its maps are built for every view.
  model.ResolutionH = 16 + in.Size(112);
  model.ResolutionV = 16 + in.Size(112);
  return model;
}

DEWARP_CHANNEL_SETTINGS Settings(Input& in) {
  DEWARP_CHANNEL_SETTINGS s;
  s.View = static_cast<DEWARP_VIEW>(in.Enum());
  s.Projection = static_cast<DEWARP_PROJECTION>(in.Enum());
  s.AspectRatio = static_cast<DEWARP_ASPECT_RATIO>(in.Enum());
  s.Interpolation = static_cast<DEWARP_INTERPOLATION>(in.Enum());
  return s;
}

// A frame description and a buffer of exactly stride * height * 3 / 2 bytes.
struct Frame {
  DEWARP_IMAGE image;
  std::vector<std::uint8_t> bytes;
};

void MakeFrame(Input& in, unsigned int maxSide, Frame& f) {
  const std::uint8_t kind = in.Byte();
  f.image.Info.Format = kind < 0xE0 ? YUV420_PLANAR_IMAGE : static_cast<DEWARP_IMAGE_FORMAT>(in.Enum());
  f.image.Info.Width = in.Size(maxSide);
  f.image.Info.Height = in.Size(maxSide);
  // Mostly a stride at least as wide as the picture, sometimes a narrower one.
  unsigned int stride = f.image.Info.Width + in.Size(9);
  if (kind % 7 == 0 && stride >= 3) stride -= 3;
  f.image.Info.Stride = stride;
  const std::size_t size = static_cast<std::size_t>(f.image.Info.Stride) * f.image.Info.Height * 3 / 2;
  f.bytes.assign(size, static_cast<std::uint8_t>(in.Byte()));
  f.image.Data = (kind % 31 == 1 || size == 0) ? nullptr : f.bytes.data();
}

DEWARP_CHANNEL Open(Input& in) {
  const std::uint8_t how = in.Byte() % 4;
  DEWARP_CHANNEL_SETTINGS settings = Settings(in);
  const DEWARP_INTERNAL_CAMERA_MODEL model = Model(in);
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(in.Enum());
  switch (how) {
    case 0:
      return dewarp_open(nullptr);
    case 1:
      return dewarp_open(&settings);
    case 2:
      return dewarp_internal_open(&model, mount, nullptr);
    default:
      return dewarp_internal_open(&model, mount, &settings);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  DEWARP_LOG_SETTINGS log = {&Logger, static_cast<DEWARP_LOG_LEVEL>(in.Enum())};
  dewarp_set_log(&log);
  DEWARP_CHANNEL channel = Open(in);
  for (int step = 0; step < 48 && !in.Empty(); ++step) {
    // Now and then the call goes to no channel at all.
    DEWARP_CHANNEL target = in.Byte() == 0xFF ? nullptr : channel;
    switch (in.Byte() % 16) {
      case 0:
        dewarp_set_view(target, static_cast<DEWARP_VIEW>(in.Enum()));
        break;
      case 1: {
        const int view = in.Enum();
        dewarp_set_projection(target, static_cast<DEWARP_VIEW>(view), static_cast<DEWARP_PROJECTION>(in.Enum()));
        break;
      }
      case 2:
        dewarp_set_aspect_ratio(target, static_cast<DEWARP_ASPECT_RATIO>(in.Enum()));
        break;
      case 3:
        dewarp_set_interpolation(target, static_cast<DEWARP_INTERPOLATION>(in.Enum()));
        break;
      case 4: {
        DEWARP_PTZ_POSITION p;
        p.Pan = in.Float();
        p.Tilt = in.Float();
        p.Roll = in.Float();
        p.Zoom = in.Float();
        dewarp_set_ptz(target, in.Byte() % 8 == 0 ? nullptr : &p);
        break;
      }
      case 5: {
        DEWARP_PTZ_POSITION p;
        DEWARP_PTZ_RANGE r;
        DEWARP_RESOLUTION n;
        const bool null = in.Byte() % 8 == 0;
        dewarp_get_ptz(target, null ? nullptr : &p);
        dewarp_get_ptz_range(target, null ? nullptr : &r);
        dewarp_get_native_resolution(target, null ? nullptr : &n);
        break;
      }
      case 6: {
        DEWARP_PTZ_POSITION p;
        const int x = static_cast<int>(in.Word());
        const int y = static_cast<int>(in.Word());
        dewarp_calc_ptz_position(target, x, y, in.Float(), in.Byte() % 8 == 0 ? nullptr : &p);
        break;
      }
      case 7:
      case 8:
      case 9: {
        Frame warped, dewarped;
        MakeFrame(in, 260, warped);
        MakeFrame(in, 72, dewarped);
        dewarp_image(target, in.Byte() % 16 == 0 ? nullptr : &warped.image, &dewarped.image);
        break;
      }
      case 10:
        dewarp_internal_set_mount(target, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(in.Enum()));
        break;
      case 11: {
        const DEWARP_INTERNAL_CAMERA_MODEL model = Model(in);
        dewarp_internal_set_model(target, in.Byte() % 8 == 0 ? nullptr : &model);
        break;
      }
      case 12: {
        DEWARP_INTERNAL_CAMERA_MODEL model;
        dewarp_internal_get_model(target, in.Byte() % 8 == 0 ? nullptr : &model);
        dewarp_internal_get_mount(target);
        dewarp_channel_valid(target);
        break;
      }
      case 13: {
        DEWARP_LOG_SETTINGS settings = {in.Byte() % 2 ? &Logger : nullptr, static_cast<DEWARP_LOG_LEVEL>(in.Enum())};
        dewarp_set_log(in.Byte() % 8 == 0 ? nullptr : &settings);
        break;
      }
      case 14:
        dewarp_close(channel);
        channel = Open(in);
        break;
      default:
        dewarp_close(nullptr);
        break;
    }
  }
  dewarp_close(channel);
  dewarp_set_log(nullptr);
  return 0;
}
