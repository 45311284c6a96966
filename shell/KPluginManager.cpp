#include "shell/KPluginManager.h"

#include "core/baselib/objects/GlobalSender.h"
#include "core/baselib/system/Log.h"
#include "core/xml/XmlbinReader.h"
#include "shell/Thrown_p.h"
#include "shell/modules/ModuleFile.h"

#include <algorithm>

namespace corvix {

namespace {

// The first child element of this name, or null.
const XMLNodeNode* findElement(const XMLNode* root, std::wstring_view name) {
  if (!root || root->type() != XmlNodeType::Element) return nullptr;
  const auto* const parent = static_cast<const XMLNodeNode*>(root);
  for (i32 i = 0; i < parent->childCount(); ++i) {
    const XMLNode* const child = parent->childAt(i);
    if (child->type() == XmlNodeType::Element && child->nameView() == name)
      return static_cast<const XMLNodeNode*>(child);
  }
  return nullptr;
}

// In the order in which a user would list them, whatever the file system's order is.
std::vector<std::wstring> modulesOf(const std::wstring& folder) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW found;
  const SearchHandle search(
      FindFirstFileExW((folder + L"\\*.dll").c_str(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, 0));
  if (!search) return names;
  do {
    if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.emplace_back(found.cFileName);
  } while (FindNextFileW(search.get(), &found));
  std::sort(names.begin(), names.end(), [](const std::wstring& a, const std::wstring& b) {
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_LESS_THAN;
  });
  return names;
}

// Absolute, with the system's separators; empty when the path cannot be one.
std::wstring absolutePath(const wchar_t* path) {
  const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
  std::wstring absolute(size, 0);
  const DWORD length = size ? GetFullPathNameW(path, size, absolute.data(), nullptr) : 0;
  absolute.resize(length < size ? length : 0);
  return absolute;
}

bool samePath(const wchar_t* a, const std::wstring& b) {
  return CompareStringOrdinal(a, -1, b.c_str(), -1, TRUE) == CSTR_EQUAL;
}

}  // namespace

BNotifySender& preGlobalEvents() {
  static GlobalSender sender(IPluginManager::classInfo(), "preGlobalEvent");
  return sender.get();
}

BNotifySender& postGlobalEvents() {
  static GlobalSender sender(IPluginManager::classInfo(), "postGlobalEvent");
  return sender.get();
}

IBCollection* KPluginManager::findByName(const wchar_t* interfaceName) {
  KInterfaceCollection* const found = registry_.find(interfaceName);
  if (found) found->addRef();
  return found;
}

IBSmartObject* KPluginManager::createObject(const wchar_t* interfaceName) {
  const KInterfaceCollection* const found = registry_.find(interfaceName);
  if (!found) return nullptr;
  for (i32 i = 0; i < found->count(); ++i) {
    if (IBSmartObject* object = found->item(i)->createObject()) return object;
  }
  return nullptr;
}

// The count is read anew each time: an object may have more modules registered. One that throws does not keep
// the others from being told.
template <class Interface, class Call>
void KPluginManager::forEachObject(const std::wstring& interfaceName, Call call) {
  const KInterfaceCollection* const found = registry_.find(interfaceName);
  for (i32 i = 0; found && i < found->count(); ++i) {
    const auto object = Ref<IBSmartObject>::adopt(found->item(i)->createObject());
    Interface* const wanted = corvix::query<Interface>(object.get());
    if (!wanted) continue;
    if (const auto thrown = thrownBy([&] { call(*wanted); }))
      sWriteLog(L"Told as \"%s\", %s threw: %s\n", interfaceName.c_str(), found->item(i)->module()->path(),
                thrown->c_str());
  }
}

void KPluginManager::raiseEvent(IGlobalEvent& event) {
  const auto tell = [&event](IGlobalEventTarget& target) { return target.onGlobalEvent(event); };
  broadcastTo<IGlobalEventTarget>(preEventSender_, tell);
  broadcastTo<IGlobalEventTarget>(preGlobalEvents(), tell);
  forEachObject<IGlobalEventTarget>(std::wstring(L"GlobalEvent.") + event.name(), tell);
  broadcastTo<IGlobalEventTarget>(postEventSender_, tell);
  broadcastTo<IGlobalEventTarget>(postGlobalEvents(), tell);
}

void KPluginManager::tellAfterInit() {
  forEachObject<IPluginManagerAfterInit>(L"IPluginManagerAfterInit",
                                         [this](IPluginManagerAfterInit& told) { told.afterInit(*this); });
}

void KPluginManager::tellBeforeDestroy() {
  forEachObject<IPluginManagerBeforeDestroy>(L"IPluginManagerBeforeDestroy",
                                             [this](IPluginManagerBeforeDestroy& told) { told.beforeDestroy(*this); });
}

void KPluginManager::registerInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance) {
  if (modules_.empty()) return;
  Attributes attributes;
  attributes.add(L"Name", interfaceName);
  const ClassWords identifier = instance->typeInfo().words();
  registry_.registerInterface(make<KPluginInterface>(modules_.front(), std::move(attributes), identifier));
  registry_.setInstance(interfaceName, std::move(instance));
}

void KPluginManager::registerOwnDescriptor(void* module) {
  const DescriptorBytes descriptor = readDescriptorResource(static_cast<HMODULE>(module));
  const Ref<XMLNode> root =
      Ref<XMLNode>::adopt(readXmlbin(descriptor.bytes.data(), static_cast<u32>(descriptor.bytes.size())));
  registerDescriptor(module, root.get());
}

bool KPluginManager::registerDescriptor(void* module, XMLNode* root) {
  const XMLNodeNode* const plugin = findElement(root, L"Plugin");
  if (!plugin) return false;
  auto record = make<KPluginModule>(modulePath(static_cast<HMODULE>(module)), alert_);
  modules_.push_back(record);
  record->attach(module);
  readDescriptor(std::move(record), *plugin);
  return true;
}

void KPluginManager::readDescriptor(Ref<KPluginModule> module, const XMLNodeNode& plugin) {
  module->setPlugin(plugin);
  for (i32 i = 0; i < plugin.childCount(); ++i) {
    const XMLNode* const child = plugin.childAt(i);
    if (child->type() != XmlNodeType::Element) continue;
    const auto& element = static_cast<const XMLNodeNode&>(*child);
    if (element.nameView() == L"Setting") {
      Attributes declared(element);
      settingsRegistry_.registerSetting(declared, *settings_);
      module->addSetting(std::move(declared));
    } else if (element.nameView() == L"Interface") {
      Attributes attributes(element);
      const wchar_t* const name = attributes.find(L"Name");
      const wchar_t* const text = attributes.find(L"GUID");
      const auto identifier = name && text ? parseClassWords(text, std::wcslen(text)) : std::nullopt;
      if (identifier) registry_.registerInterface(make<KPluginInterface>(module, std::move(attributes), *identifier));
    }
  }
}

i32 KPluginManager::scanFolder(const wchar_t* folder) {
  const std::wstring absolute = absolutePath(folder);
  i32 added = 0;
  for (const std::wstring& name : modulesOf(absolute)) {
    const std::wstring path = absolute + L"\\" + name;
    if (findByPath(path)) continue;
    addModule(path);
    ++added;
  }
  return added;
}

KPluginModule* KPluginManager::addModule(const std::wstring& path) {
  auto module = make<KPluginModule>(path, alert_);
  KPluginModule* const record = module.get();
  modules_.push_back(module);
  const DescriptorBytes descriptor = readDescriptorResource(path);
  if (descriptor.bytes.empty()) {
    record->fail(descriptor.reason);
    return record;
  }
  const Ref<XMLNode> root =
      Ref<XMLNode>::adopt(readXmlbin(descriptor.bytes.data(), static_cast<u32>(descriptor.bytes.size())));
  const XMLNodeNode* const plugin = findElement(root.get(), L"Plugin");
  if (!root) {
    record->fail(L"Its descriptor is malformed.");
  } else if (!plugin) {
    record->fail(L"Its descriptor has no Plugin element.");
  } else {
    readDescriptor(std::move(module), *plugin);
  }
  return record;
}

IPluginModule* KPluginManager::loadModule(const wchar_t* path) {
  const std::wstring absolute = absolutePath(path);
  KPluginModule* module = findByPath(absolute);
  if (!module) module = addModule(absolute);
  return module->load() ? module : nullptr;
}

IPluginModule* KPluginManager::moduleAt(i32 index) const noexcept {
  return index >= 0 && index < moduleCount() ? modules_[static_cast<std::size_t>(index)].get() : nullptr;
}

IPluginModule* KPluginManager::findModule(const stype_info& identifier) const noexcept {
  for (const Ref<KPluginModule>& module : modules_) {
    if (module->identifier() && *module->identifier() == identifier) return module.get();
  }
  return nullptr;
}

KPluginModule* KPluginManager::findByPath(const std::wstring& path) const noexcept {
  for (const Ref<KPluginModule>& module : modules_) {
    if (samePath(module->path(), path)) return module.get();
  }
  return nullptr;
}

}  // namespace corvix
