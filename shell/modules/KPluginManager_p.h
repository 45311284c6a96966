#pragma once

#include "core/settings/SettingsRegistry_p.h"
#include "shell/GlobalEvent.h"
#include "shell/ModuleCatalogue.h"
#include "shell/guard/UserAlert_p.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/modules/ModuleFile_p.h"
#include "shell/modules/ObjectWatch_p.h"
#include "shell/modules/PluginModule_p.h"
#include "shell/modules/ProgramIni_p.h"

#include <memory>

namespace corvix {

class KPluginManager final : public IPluginManager, public IModuleCatalogue, public IObjectWatch {
  CORVIX_IDENTITY(KPluginManager, 0x2BD7046F, 0x4E68A9C3, 0x8071F35D, 0xD9163EA2, IPluginManager, IModuleCatalogue,
                  IObjectWatch)

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

  const wchar_t* path() const noexcept override { return cataloguePath_.c_str(); }
  i32 takenCount() const noexcept override { return takenCount_; }
  i32 readCount() const noexcept override { return readCount_; }

  bool isWatching() const noexcept override { return watch_ != nullptr; }
  i32 takeStock() override;
  bool rowAt(i32 index, ObjectsLeft& row) const noexcept override;

  // From now on.
  void watchObjects() { watch_ = std::make_unique<ObjectWatch>(); }

  // The library's own descriptor, from its own module.
  void registerOwnDescriptor(void* module);

  // An object of the library that there is one of, found by name behind what plug-ins declare so far.
  void registerInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance);
  void forgetInstances() noexcept { registry_.forgetInstances(); }

  // The code of modules that are found from now on is never loaded, for that reason, which stands for good.
  void describeOnly(const wchar_t* why) noexcept { whyOnlyDescribes_ = why; }

  // Likewise, and each of them says so.
  void goWithoutPlugins(const wchar_t* why) noexcept {
    describeOnly(why);
    isWithoutPlugins_ = true;
  }

  // What it says holds for modules that are found from now on; `ini` outlives the manager.
  void follow(const ProgramIni& ini) noexcept { ini_ = &ini; }

  // Modules in which starts ended are left out from now on; `starts` outlives the manager.
  void leaveOut(EarlierStarts& starts) noexcept { earlierStarts_ = &starts; }

  // As long as it lives, the start under way is busy with the module that holds that code, if it is one.
  StartMark startMarkOf(const void* code);

  // Tell the objects that declare to be told.
  void tellAfterInit();
  void tellBeforeDestroy();

 private:
  // A record with what the descriptor that `read` gives declares registered, or failed.
  template <class Read>
  KPluginModule* addModule(std::wstring path, Read read);
  void takeDescriptor(const Ref<KPluginModule>& module, const DescriptorView& descriptor);
  void registerAll(const Ref<KPluginModule>& module, const XMLNodeNode& plugin);
  // Runs what may throw; an exception makes the module a failed one, with nothing registered.
  template <class Call>
  void orFailed(KPluginModule& module, Call call);
  // A new object of each that offers Interface, released right after; those that are registered meanwhile too.
  template <class Interface, class Call>
  void forEachObject(KInterfaceCollection* declared, Call call);
  void arrangeByNeeds(const wchar_t* interfaceName);
  KPluginModule* findByPath(std::wstring_view path) const noexcept;
  KPluginModule* findByPath(std::wstring_view path, u32 hash) const noexcept;
  KPluginModule* findByIdentifier(const ClassWords& words) const noexcept;
  void addRecord(const Ref<KPluginModule>& module);

  KClassFactoryLocal& registry_;
  IUserAlert& alert_;
  std::vector<Ref<KPluginModule>> modules_;
  // Of two with the same path or identifier the first.
  AddressIndex<KPluginModule, &KPluginModule::pathHash, &KPluginModule::samePathBucket> byPath_;
  AddressIndex<KPluginModule, &KPluginModule::identifierHash, &KPluginModule::sameIdentifierBucket> byIdentifier_;
  bool hasUnlisted_ = false;  // a module failed before it came into the table of identifiers
  Ref<IBSettings> settings_;
  SettingsRegistry settingsRegistry_;
  const wchar_t* whyOnlyDescribes_ = nullptr;  // else null
  bool isWithoutPlugins_ = false;
  EarlierStarts* earlierStarts_ = nullptr;
  const ProgramIni* ini_ = nullptr;
  std::wstring cataloguePath_;
  i32 takenCount_ = 0;
  i32 readCount_ = 0;
  std::unique_ptr<ObjectWatch> watch_;  // null: nobody watches
  std::vector<ObjectsLeft> stock_;
  BNotifySender preEventSender_;
  BNotifySender postEventSender_;
};

}  // namespace corvix
