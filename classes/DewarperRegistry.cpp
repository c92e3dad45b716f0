#include "DewarperRegistry.h"

#include <cstring>
#include <string>
#include <vector>

#include "ActiDewarper.h"
#include "GeovisionDewarper.h"
#include "ImmervisionDewarper.h"
#include "KestrelDewarper.h"
#include "SamsungDewarper.h"
#include "Sentry360Dewarper.h"
#include "VivotekDewarper.h"
#include "StringHelpers.h"

DewarperRegistry::DewarpInfo::DewarpInfo(const char* dllName, const char* dewarperName, bool supportsPosition,
                                         bool supportsLens, bool supportsXYR, bool isCameraSpecific)
    : DllName(dllName),
      DewarperName(dewarperName),
      SupportsPosition(supportsPosition),
      SupportsLens(supportsLens),
      SupportsXYR(supportsXYR),
      IsCameraSpecific(isCameraSpecific),
      Loaded(false) {}

DewarperRegistry::DewarpInfo::~DewarpInfo() {}

// The registration table, one row per kind:
//   Register<Adapter>(library, name, position, lens, xyr, camera-specific, type);
DewarperRegistry::DewarperRegistry() {
  Register<Sentry360Dewarper>("360API.dll", "Sentry360", true, false, true, true, DewarperType::Sentry360);
  if (IsOSVersionOrHigher()) {
    Register<ImmervisionDewarper>("IMV1.dll", "ImmerVision", true, true, false, false, DewarperType::ImmerVision);
  }
  if (IsOSVersionOrHigher()) {
    Register<VivotekDewarper>("fisheyesw.dll", "Vivotek", true, false, false, true, DewarperType::Vivotek);
  }
  if (IsOSVersionOrHigher()) {
    Register<SamsungDewarper>("DewarpingLib.dll", "Samsung", true, false, false, true, DewarperType::Samsung);
  }
  Register<ActiDewarper>("FisheyeSDK.dll", "ACTi", true, false, false, true, DewarperType::Acti);
  Register<ActiDewarper>("FisheyeSDK.dll", "Inaxsys", true, false, false, true, DewarperType::Inaxsys);
  Register<GeovisionDewarper>("GeoFESDK.dll", "Geovision", true, false, false, true, DewarperType::Geovision);
  Register<KestrelDewarper>(nullptr, "Kestrel", true, false, false, true, DewarperType::Kestrel);
}

DewarperRegistry::~DewarperRegistry() {
  for (auto& cached : m_dewarpers) {
    delete cached.second;
  }
  for (auto& row : m_info) {
    delete row.second;
  }
  m_dewarpers.clear();
  m_info.clear();
}

bool DewarperRegistry::IsOSVersionOrHigher() { return true; }

const DewarperRegistry::DewarpInfo* DewarperRegistry::Find(int type) const {
  const auto row = m_info.find(type);
  return row == m_info.end() ? nullptr : row->second;
}

bool DewarperRegistry::IsCameraSpecific(int type) {
  const DewarpInfo* row = Find(type);
  return row != nullptr && row->IsCameraSpecific;
}

// The outputs come in the order lens, XYR, position (not the order of the row's fields).
void DewarperRegistry::GetSupportedFeatures(int type, bool& lens, bool& xyr, bool& position) {
  const DewarpInfo* row = Find(type);
  lens = row != nullptr && row->SupportsLens;
  xyr = row != nullptr && row->SupportsXYR;
  position = row != nullptr && row->SupportsPosition;
}

bool DewarperRegistry::IsLoaded(int type) { return Find(type) != nullptr; }

const char* DewarperRegistry::GetName(int type) {
  const DewarpInfo* row = Find(type);
  return row != nullptr && row->DewarperName != nullptr ? row->DewarperName : "";
}

// The lens names come from one dewarper per kind, made with all-zero parameters on first use
// and kept. A null buffer that claims room for text is answered with 0.
int DewarperRegistry::GetLens(int type, int index, char* buffer, size_t size) {
  const DewarpInfo* row = Find(type);
  if (row == nullptr || !row->SupportsLens || (buffer == nullptr && size != 0)) {
    return 0;
  }
  IDewarper*& cached = m_dewarpers[type];
  if (cached == nullptr) {
    const DewarpParams_t zero = {0, 0, 0, 0, 0, 0};
    cached = Create(static_cast<DewarperType::DewarperTypes>(type), zero);
    if (cached == nullptr) {
      m_dewarpers.erase(type);
      return 0;
    }
  }
  return cached->GetLens(index, buffer, size);
}

int DewarperRegistry::GetModeCount() { return DewarperType::Count; }

DewarperType::DewarperTypes DewarperRegistry::GetModeByName(const char* name) {
  if (name == nullptr) {
    return DewarperType::NoDewarper;
  }
  for (const auto& row : m_info) {
    if (row.second->DewarperName != nullptr && std::strcmp(row.second->DewarperName, name) == 0) {
      return static_cast<DewarperType::DewarperTypes>(row.first);
    }
  }
  return DewarperType::NoDewarper;
}

IDewarper* DewarperRegistry::Create(DewarperType::DewarperTypes type, const DewarpParams_t& params) {
  DewarpInfo* row = const_cast<DewarpInfo*>(Find(type));
  if (row == nullptr) {
    return nullptr;
  }
  // Nothing thrown while making a dewarper may reach the host.
  IDewarper* dewarper = nullptr;
  try {
    dewarper = row->Create(params);
  } catch (...) {
    return nullptr;
  }
  if (dewarper != nullptr) {
    if (IDewarperBase* base = dynamic_cast<IDewarperBase*>(dewarper)) {
      base->SetDewarperType(type);
    }
  }
  return dewarper;
}

namespace {

enum class MakeTest { Equals, StartsWith };

// One camera-matching rule. The first rule whose make test succeeds decides alone: its type
// when every given model/address condition holds, otherwise no dewarper.
struct CameraRule {
  MakeTest makeTest;
  const char* make;
  std::vector<std::string> modelPrefixes;  // the model starts with any of them (empty: not tested)
  std::string modelSuffix;                 // the model ends with it (empty: not tested)
  std::vector<std::string> urlSuffixes;    // the address ends with any of them (empty: not tested)
  DewarperType::DewarperTypes type;
};

const std::vector<CameraRule>& CameraRules() {
  static const std::vector<CameraRule> rules = {
      {MakeTest::Equals, "Vivotek", {"FE"}, "", {}, DewarperType::Vivotek},
      {MakeTest::Equals, "RTSP", {}, "", {"/h264", "/image.mpg"}, DewarperType::Sentry360},
      {MakeTest::Equals, "Sentry360", {"FS"}, "", {}, DewarperType::Sentry360},
      {MakeTest::Equals, "EVOLUTION", {"EVO"}, "", {}, DewarperType::Oncam},
      {MakeTest::Equals, "ACTi", {"KCM3911", "KCM7911", "B54", "B55", "B56", "E96"}, "", {}, DewarperType::Acti},
      {MakeTest::Equals, "Inaxsys", {"IN-D"}, "MHEM", {}, DewarperType::Inaxsys},
      {MakeTest::StartsWith, "Samsung", {"SNF"}, "", {}, DewarperType::Samsung},
      {MakeTest::StartsWith, "Kestrel", {}, "Fisheye", {}, DewarperType::Kestrel},
      {MakeTest::Equals, "Geovision", {"GV-FE"}, "", {}, DewarperType::Geovision},
      {MakeTest::StartsWith, "AXIS", {"M3007", "M3027"}, "", {}, DewarperType::Axis},
  };
  return rules;
}

bool StartsWithAny(const std::string& text, const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) {
    if (StringHelpers::StartsWith(text, pattern)) return true;
  }
  return false;
}

bool EndsWithAny(const std::string& text, const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) {
    if (StringHelpers::EndsWith(text, pattern)) return true;
  }
  return false;
}

bool MakeMatches(const CameraRule& rule, const std::string& make) {
  return rule.makeTest == MakeTest::Equals ? make == rule.make : StringHelpers::StartsWith(make, rule.make);
}

bool RestMatches(const CameraRule& rule, const std::string& model, const std::string& url) {
  return (rule.modelPrefixes.empty() || StartsWithAny(model, rule.modelPrefixes)) &&
         (rule.modelSuffix.empty() || StringHelpers::EndsWith(model, rule.modelSuffix)) &&
         (rule.urlSuffixes.empty() || EndsWithAny(url, rule.urlSuffixes));
}

}  // namespace

// All tests are case-sensitive. A missing text counts as empty.
DewarperType::DewarperTypes DewarperRegistry::GetModeByCamera(const char* make, const char* model,
                                                              const char* url) {
  const std::string makeText = make != nullptr ? make : "";
  const std::string modelText = model != nullptr ? model : "";
  const std::string urlText = url != nullptr ? url : "";
  for (const CameraRule& rule : CameraRules()) {
    if (MakeMatches(rule, makeText)) {
      return RestMatches(rule, modelText, urlText) ? rule.type : DewarperType::NoDewarper;
    }
  }
  return DewarperType::NoDewarper;
}
