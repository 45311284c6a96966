// KPluginModule: the record of one module. KPluginInterface: one interface that it declares.
#pragma once

#include "core/xml/Attributes.h"
#include "shell/ClassFactory.h"
#include "shell/PluginManager.h"

#include <optional>
#include <string>

namespace corvix {

class IUserAlert;

class KPluginModule final : public IPluginModule {
  CORVIX_IDENTITY(KPluginModule, 0x5C08E3B9, 0x4AD7912F, 0x9E64B1D0, 0x83F72C1A, IPluginModule)

 public:
  // `alert` outlives the module.
  KPluginModule(std::wstring path, IUserAlert& alert) : path_(std::move(path)), alert_(alert) {}

  ModuleState state() const noexcept override { return state_; }
  const wchar_t* reason() const noexcept override { return reason_.c_str(); }
  const wchar_t* path() const noexcept override { return path_.c_str(); }
  const wchar_t* name() const noexcept override { return orEmpty(plugin_.find(L"Name")); }
  const wchar_t* version() const noexcept override { return orEmpty(plugin_.find(L"Version")); }
  const stype_info* identifier() const noexcept override { return identifier_ ? &*identifier_ : nullptr; }
  const wchar_t* attribute(const wchar_t* attributeName) const noexcept override {
    return plugin_.findAnyCase(attributeName);
  }
  i32 settingCount() const noexcept override { return static_cast<i32>(settings_.size()); }
  const wchar_t* settingAttribute(i32 index, const wchar_t* attributeName) const noexcept override {
    return settings_[static_cast<std::size_t>(index)].findAnyCase(attributeName);
  }

  // What the descriptor says of the module itself.
  void setPlugin(const XMLNodeNode& element);
  void addSetting(Attributes declared) { settings_.push_back(std::move(declared)); }

  void fail(std::wstring reason);

  // Resolves the class factory of a module whose code is loaded; `handle` is the system's.
  bool attach(void* handle);

  // Loads the code if it is not loaded yet.
  bool load();

  // Null when it cannot be had; `reason` then says why.
  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier);

 private:
  static const wchar_t* orEmpty(const wchar_t* text) noexcept { return text ? text : L""; }
  IBSmartObject* cannotCreate(const wchar_t* interfaceName, const std::wstring& why);

  std::wstring path_;
  IUserAlert& alert_;
  ModuleState state_ = ModuleState::Described;
  std::wstring reason_;
  Attributes plugin_;
  std::optional<PlainIdentifier> identifier_;
  std::vector<Attributes> settings_;
  BClassFactory* factory_ = nullptr;
};

class KPluginInterface final : public IPluginInterface {
  CORVIX_IDENTITY(KPluginInterface, 0x7A9D51C6, 0x4832F0BE, 0xA36E8D14, 0x0C75E92B, IPluginInterface)

 public:
  KPluginInterface(Ref<KPluginModule> module, Attributes attributes, const ClassWords& identifier)
      : module_(std::move(module)), attributes_(std::move(attributes)), identifier_(identifier) {
    const wchar_t* const declared = attributes_.find(L"Name");
    name_ = declared ? declared : L"";
  }

  const wchar_t* name() const noexcept override { return name_; }
  const stype_info& identifier() const noexcept override { return identifier_; }
  const wchar_t* attribute(const wchar_t* attributeName) const noexcept override {
    return attributes_.findAnyCase(attributeName);
  }
  IPluginModule* module() const noexcept override { return module_.get(); }
  IBSmartObject* createObject() override { return module_->createObject(name_, identifier_); }

 private:
  Ref<KPluginModule> module_;
  Attributes attributes_;
  const wchar_t* name_;  // one of the attributes
  PlainIdentifier identifier_;
};

}  // namespace corvix
