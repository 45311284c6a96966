#pragma once

#include "shell/KClassFactoryLocal.h"
#include "shell/PluginModule_p.h"
#include "shell/UserAlert_p.h"

namespace corvix {

class KPluginManager final : public IPluginManager {
  CORVIX_IDENTITY(KPluginManager, 0x2BD7046F, 0x4E68A9C3, 0x8071F35D, 0xD9163EA2, IPluginManager)

 public:
  // Both outlive the manager.
  KPluginManager(KClassFactoryLocal& registry, IUserAlert& alert) noexcept : registry_(registry), alert_(alert) {}

  IBCollection* findByName(const wchar_t* interfaceName) override;
  IBSmartObject* createObject(const wchar_t* interfaceName) override;
  bool registerDescriptor(void* module, XMLNode* root) override;
  i32 scanFolder(const wchar_t* folder) override;
  IPluginModule* loadModule(const wchar_t* path) override;
  i32 moduleCount() const noexcept override { return static_cast<i32>(modules_.size()); }
  IPluginModule* moduleAt(i32 index) const noexcept override;
  IPluginModule* findModule(const stype_info& identifier) const noexcept override;
  i32 interfaceCount() const noexcept override { return registry_.interfaceCount(); }
  IPluginInterface* interfaceAt(i32 index) const noexcept override { return registry_.interfaceAt(index); }

  // The library's own descriptor, from its own module.
  void registerOwnDescriptor(void* module);

 private:
  // A record with what its file's descriptor declares registered, or failed.
  KPluginModule* addModule(const std::wstring& path);
  void readDescriptor(Ref<KPluginModule> module, const XMLNodeNode& plugin);
  KPluginModule* findByPath(const std::wstring& path) const noexcept;

  KClassFactoryLocal& registry_;
  IUserAlert& alert_;
  std::vector<Ref<KPluginModule>> modules_;
};

}  // namespace corvix
