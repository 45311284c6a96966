#include "shell/PluginModule_p.h"

#include "core/baselib/system/Log.h"
#include "shell/Thrown_p.h"
#include "shell/UserAlert_p.h"
#include "shell/modules/ModuleFile.h"

namespace corvix {

namespace {

constexpr char kFactoryFunction[] = "queryClassFactoryLocal";

}  // namespace

void KPluginModule::setPlugin(const XMLNodeNode& element) {
  plugin_ = Attributes(element);
  const wchar_t* const text = plugin_.find(L"GUID");
  const std::optional<ClassWords> words = text ? parseClassWords(text, std::wcslen(text)) : std::nullopt;
  if (words) {
    identifier_.emplace(*words);
  } else {
    reason_ = text ? L"Its identifier does not have four numbers; the module cannot be found by identifier."
                   : L"It has no identifier; the module cannot be found by identifier.";
  }
}

void KPluginModule::fail(std::wstring reason) {
  state_ = ModuleState::Failed;
  reason_ = std::move(reason);
  sWriteLog(L"Module %s failed: %s\n", path_.c_str(), reason_.c_str());
}

bool KPluginModule::attach(void* handle) {
  FARPROC const found = GetProcAddress(static_cast<HMODULE>(handle), kFactoryFunction);
  if (!found) {
    fail(L"It does not export queryClassFactoryLocal.");
    return false;
  }
  const auto query = reinterpret_cast<QueryClassFactory>(reinterpret_cast<void*>(found));
  if (const auto thrown = thrownBy([&] { factory_ = query(); })) {
    fail(L"Its queryClassFactoryLocal threw: " + *thrown);
    return false;
  }
  if (!factory_) {
    fail(L"Its queryClassFactoryLocal returned no class factory.");
    return false;
  }
  state_ = ModuleState::Loaded;
  return true;
}

bool KPluginModule::load() {
  if (state_ != ModuleState::Described) return state_ == ModuleState::Loaded;
  sWriteLog(L"Load library %s\n", path_.c_str());
  const LoadedModule loaded = loadModuleCode(path_);
  if (loaded.module) return attach(loaded.module);
  fail(loaded.reason);
  if (loaded.crashed) {
    alert_.show(L"Can't load module" + path_ + L". Module may be corrupt!", L"Teldane Quill");
  }
  return false;
}

IBSmartObject* KPluginModule::createObject(const wchar_t* interfaceName, const stype_info& identifier) {
  if (!factory_ && !load()) return nullptr;
  IBSmartObject* object = nullptr;
  if (const auto thrown = thrownBy([&] { object = factory_->createObject(interfaceName, identifier); })) {
    return cannotCreate(interfaceName, L"threw: " + *thrown);
  }
  return object ? object : cannotCreate(interfaceName, L"made no such object");
}

IBSmartObject* KPluginModule::cannotCreate(const wchar_t* interfaceName, const std::wstring& why) {
  reason_ = L"Asked for \"" + std::wstring(interfaceName) + L"\", its class factory " + why + L".";
  return nullptr;
}

}  // namespace corvix
