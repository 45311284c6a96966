#pragma once

#include "core/settings/SettingsRegistry.h"
#include "shell/GlobalEvent.h"
#include "shell/KClassFactoryLocal.h"
#include "shell/PluginModule_p.h"
#include "shell/UserAlert_p.h"

namespace corvix {

class KPluginManager final : public IPluginManager {
  CORVIX_IDENTITY(KPluginManager, 0x2BD7046F, 0x4E68A9C3, 0x8071F35D, 0xD9163EA2, IPluginManager)

 public:
  // Registry and alert outlive the manager.
  KPluginManager(KClassFactoryLocal& registry, IUserAlert& alert, Ref<IBSettings> settings) noexcept
      : registry_(registry), alert_(alert), settings_(std::move(settings)) {}

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

  i32 saveSettings() override { return settingsRegistry_.saveAll(*settings_); }
  void raiseEvent(IGlobalEvent& event) override;
  BNotifySender& preEventSender() noexcept override { return preEventSender_; }
  BNotifySender& postEventSender() noexcept override { return postEventSender_; }

  // The library's own descriptor, from its own module.
  void registerOwnDescriptor(void* module);

  // An object of the library that there is one of, found by name behind what plug-ins declare so far.
  void registerInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance);
  void forgetInstances() noexcept { registry_.forgetInstances(); }

  // Tell the objects that declare to be told.
  void tellAfterInit();
  void tellBeforeDestroy();

 private:
  // A record with what its file's descriptor declares registered, or failed.
  KPluginModule* addModule(const std::wstring& path);
  void readDescriptor(Ref<KPluginModule> module, const XMLNodeNode& plugin);
  // A new object of each interface of that name which offers Interface, released right after.
  template <class Interface, class Call>
  void forEachObject(const std::wstring& interfaceName, Call call);
  KPluginModule* findByPath(const std::wstring& path) const noexcept;

  KClassFactoryLocal& registry_;
  IUserAlert& alert_;
  std::vector<Ref<KPluginModule>> modules_;
  Ref<IBSettings> settings_;
  SettingsRegistry settingsRegistry_;
  BNotifySender preEventSender_;
  BNotifySender postEventSender_;
};

}  // namespace corvix
