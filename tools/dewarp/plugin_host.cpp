#include "plugin_host.h"

#include "failure.h"

#include <DewarpWrapper.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace dewarp_tool {

namespace {

// The host's pixel-format codes the plug-in's dewarpers report.
constexpr int kPlanar420 = 5;        // one planar YUV 4:2:0 frame
constexpr int kThreeBytesPixel = 12;  // packed pixels of three bytes (the tool uses R, G, B)

int Even(double value) {
  return std::max(2, static_cast<int>(value / 2.0 + 0.5) * 2);
}

// The host's mounting code: 1 ceiling, 2 floor, anything else wall.
int HostPosition(DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  return mount == CEILING_MOUNT ? 1 : mount == FLOOR_MOUNT ? 2 : 0;
}

std::string KnownKinds(IDewarpRegister& registry) {
  std::string names;
  for (int type = 0; type < registry.GetModeCount(); ++type) {
    if (registry.IsLoaded(type)) {
      names += (names.empty() ? "" : ", ") + std::string(registry.GetName(type));
    }
  }
  return names;
}

class PluginHost : public FrameProcessor {
public:
  PluginHost(const Options& options, int width, int height)
      : m_kind(options.kind), m_inWidth(width), m_inHeight(height) {
    IDewarpRegister* registry = GetRegister();
    const DewarperType::DewarperTypes type = registry->GetModeByName(options.kind.c_str());
    if (type == DewarperType::NoDewarper) {
      BadInput("unknown --kind value '" + options.kind + "' (the plug-in offers: " + KnownKinds(*registry) + ")");
    }
    // The fisheye circle fills the picture: centre and radius as a host would configure them.
    DewarpParams_t params = {0, HostPosition(options.mount), 0, width / 2, height / 2, std::min(width, height) / 2};
    m_dewarper.reset(CreateDewarper(type, params));
    if (!m_dewarper) {
      throw Failure(kExitEngine, "the plug-in could not create a " + options.kind + " dewarper");
    }
    if (!m_dewarper->Check()) {
      throw Failure(kExitEngine, "the " + options.kind + " dewarper is not usable here (its maker's library is missing)");
    }
    if (!m_dewarper->IsSubModeSupported(options.subMode)) {
      BadInput("--sub-mode " + std::to_string(options.subMode) + " is not offered by the " + options.kind + " dewarper");
    }
    m_dewarper->SetSubMode(options.subMode);
    if (options.ptzGiven) {
      m_dewarper->SetPosition(options.ptz.Pan, options.ptz.Tilt, options.ptz.Zoom);
    }
    if (options.width) {
      m_outWidth = options.width;
      m_outHeight = options.height;
    } else {
      // Half the input's width, in the display proportions the dewarper asks for.
      m_outWidth = Even(width / 2.0);
      m_outHeight = Even(m_outWidth / m_dewarper->AdjustAspectRatio(4.0f / 3.0f, 4.0f / 3.0f));
    }
    // A first, grey frame tells the output size the dewarper settles on (it may round or
    // limit the size asked for).
    YuvFrame grey(width, height);
    std::fill(grey.data.begin(), grey.data.end(), static_cast<std::uint8_t>(128));
    YuvFrame out;
    Process(grey, out);
    m_outWidth = out.width;
    m_outHeight = out.height;
  }


  int OutputWidth() const override { return m_outWidth; }
  int OutputHeight() const override { return m_outHeight; }

  void Process(const YuvFrame& in, YuvFrame& out) override {
    unsigned char* buffer = nullptr;
    unsigned int size = 0;
    int format = 0;
    if (!m_dewarper->GetImageInputBuffer(m_inWidth, m_inHeight, &buffer, &size, &format) || !buffer) {
      throw Failure(kExitEngine, "the " + m_kind + " dewarper gave no input buffer");
    }
    Fill(in, buffer, size, format);
    int width = m_outWidth;
    int height = m_outHeight;
    unsigned char* output = nullptr;
    if (!m_dewarper->GetImageOutputBuffer(&width, &height, &output, &size, &format) || !output) {
      throw Failure(kExitEngine, "the " + m_kind + " dewarper could not dewarp the frame");
    }
    Take(output, size, format, width, height, out);
  }

private:
  void CheckLayout(unsigned int size, int format, int width, int height) const {
    const std::size_t wanted = format == kPlanar420 ? YuvFrame::FrameSize(width, height)
                               : format == kThreeBytesPixel ? static_cast<std::size_t>(width) * height * 3 : 0;
    if (!wanted || size < wanted || width % 2 || height % 2) {
      throw Failure(kExitEngine, "the " + m_kind + " dewarper uses pixel format " + std::to_string(format) + " with " +
                                     std::to_string(size) + " bytes for " + std::to_string(width) + "x" +
                                     std::to_string(height) + ", which the tool does not handle");
    }
  }

  void Fill(const YuvFrame& in, unsigned char* buffer, unsigned int size, int format) const {
    CheckLayout(size, format, in.width, in.height);
    if (format == kPlanar420) {
      std::memcpy(buffer, in.data.data(), in.data.size());
    } else {
      const RgbImage rgb = ToRgb(in);
      std::memcpy(buffer, rgb.pixels.data(), rgb.pixels.size());
    }
  }

  void Take(const unsigned char* buffer, unsigned int size, int format, int width, int height, YuvFrame& out) const {
    CheckLayout(size, format, width, height);
    if (format == kPlanar420) {
      out = YuvFrame(width, height);
      std::memcpy(out.data.data(), buffer, out.data.size());
    } else {
      RgbImage rgb(width, height);
      std::memcpy(rgb.pixels.data(), buffer, rgb.pixels.size());
      out = ToYuv420(rgb);
    }
  }

  // The dewarper goes back to the plug-in that made it, also when construction fails half way.
  struct Release {
    void operator()(IDewarper* dewarper) const { DeleteDewarper(dewarper); }
  };

  std::string m_kind;
  std::unique_ptr<IDewarper, Release> m_dewarper;
  int m_inWidth;
  int m_inHeight;
  int m_outWidth = 0;
  int m_outHeight = 0;
};

}  // namespace

std::unique_ptr<FrameProcessor> MakePluginHost(const Options& options, int inputWidth, int inputHeight) {
  return std::unique_ptr<FrameProcessor>(new PluginHost(options, inputWidth, inputHeight));
}

}  // namespace dewarp_tool
