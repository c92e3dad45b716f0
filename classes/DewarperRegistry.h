// The registry of dewarper kinds: describes each kind to the host, picks the kind that suits a
// camera and creates dewarpers.
#ifndef DEWARPWRAPPER_DEWARPERREGISTRY_H
#define DEWARPWRAPPER_DEWARPERREGISTRY_H

#include <map>

#include "IDewarpRegister.h"
#include "IDewarperBase.h"

class DewarperRegistry : public IDewarpRegister {
public:
  // One row of the registration table.
  struct DewarpInfo {
    DewarpInfo(const char* dllName, const char* dewarperName, bool supportsPosition, bool supportsLens,
               bool supportsXYR, bool isCameraSpecific);
    virtual ~DewarpInfo();
    // A new dewarper of this kind, owned by the caller; null when none could be made.
    virtual IDewarper* Create(const DewarpParams_t& params) = 0;

    const char* DllName;  // the maker library the adapter needs (informative; may be null)
    const char* DewarperName;
    bool SupportsPosition;
    bool SupportsLens;
    bool SupportsXYR;
    bool IsCameraSpecific;
    bool Loaded;  // false at registration and never consulted
  };

  template <class T>
  struct DewarpInfoT : DewarpInfo {
    using DewarpInfo::DewarpInfo;
    IDewarper* Create(const DewarpParams_t& params) override { return new T(params); }
  };

  DewarperRegistry();
  ~DewarperRegistry() override;

  DewarperRegistry(const DewarperRegistry&) = delete;
  DewarperRegistry& operator=(const DewarperRegistry&) = delete;

  bool IsCameraSpecific(int type) override;
  void GetSupportedFeatures(int type, bool& lens, bool& xyr, bool& position) override;
  bool IsLoaded(int type) override;
  const char* GetName(int type) override;
  int GetLens(int type, int index, char* buffer, size_t size) override;
  int GetModeCount() override;
  DewarperType::DewarperTypes GetModeByName(const char* name) override;
  DewarperType::DewarperTypes GetModeByCamera(const char* make, const char* model, const char* url) override;

  // A new dewarper of the kind, told its type; null for a kind without a row or on failure.
  virtual IDewarper* Create(DewarperType::DewarperTypes type, const DewarpParams_t& params);

protected:
  template <class T>
  void Register(const char* dllName, const char* dewarperName, bool supportsPosition, bool supportsLens,
                bool supportsXYR, bool isCameraSpecific, DewarperType::DewarperTypes type) {
    DewarpInfo* row = new DewarpInfoT<T>(dllName, dewarperName, supportsPosition, supportsLens, supportsXYR,
                                         isCameraSpecific);
    DewarpInfo*& slot = m_info[type];
    delete slot;
    slot = row;
  }

  // The operating-system version test some kinds were registered under; every version of this
  // platform passes it.
  static bool IsOSVersionOrHigher();

  const DewarpInfo* Find(int type) const;

  std::map<int, DewarpInfo*> m_info;
  std::map<int, IDewarper*> m_dewarpers;
};

#endif
