#include "shell/modules/KPluginManager_p.h"

#include "core/baselib/objects/GlobalSender.h"
#include "core/baselib/system/ForeignCall_p.h"
#include "core/baselib/system/Log.h"
#include "core/xml/XmlbinReader.h"
#include "shell/DeclaredObjects_p.h"
#include "shell/modules/Catalogue_p.h"
#include "shell/modules/Requirements_p.h"

#include <algorithm>
#include <string_view>

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

// What `ask` writes for the path, of any length; empty when it cannot.
template <class Ask>
std::wstring askedOf(const wchar_t* path, Ask ask) {
  const DWORD size = ask(path, nullptr, 0);
  std::wstring answer(size, 0);
  const DWORD length = size ? ask(path, answer.data(), size) : 0;
  answer.resize(length < size ? length : 0);
  return answer;
}

// One spelling for each file: absolute, with the system's separators, one between two names and none at the end, with
// whole names instead of short ones. Empty when the path cannot be one.
std::wstring absolutePath(const wchar_t* path) {
  if (!path) return {};
  constexpr std::wstring_view kNoLimit = L"\\\\?\\";
  std::wstring absolute = askedOf(
      path, [](const wchar_t* from, wchar_t* to, DWORD size) { return GetFullPathNameW(from, size, to, nullptr); });
  if (absolute.starts_with(kNoLimit) && absolute.size() > 5 && absolute[5] == L':') absolute.erase(0, kNoLimit.size());
  const std::wstring whole = askedOf(
      absolute.c_str(), [](const wchar_t* from, wchar_t* to, DWORD size) { return GetLongPathNameW(from, to, size); });
  if (!whole.empty()) absolute = whole;
  const std::size_t firstName = std::min<std::size_t>(absolute.size(), 2);  // behind the two of a share
  absolute.erase(std::unique(absolute.begin() + static_cast<std::ptrdiff_t>(firstName), absolute.end(),
                             [](wchar_t a, wchar_t b) { return a == L'\\' && b == L'\\'; }),
                 absolute.end());
  while (absolute.size() > firstName && absolute.back() == L'\\') absolute.pop_back();
  return absolute;
}

// Letters count as the file system counts them. The system is asked from the first on that is not ASCII.
u32 hashOfPath(std::wstring_view path) noexcept {
  u32 hash = 0;
  std::size_t at = 0;
  for (; at < path.size() && path[at] < 0x80; ++at)
    hash =
        text::mixHash(hash, path[at] >= L'a' && path[at] <= L'z' ? path[at] - 0x20u : path[at], static_cast<u32>(at));
  while (at < path.size()) {
    wchar_t upper[128];
    const int count = static_cast<int>(std::min(path.size() - at, std::size(upper)));
    const int mapped = LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, path.data() + at, count, upper,
                                     static_cast<int>(std::size(upper)), nullptr, nullptr, 0);
    hash = text::stringHash(upper, static_cast<std::size_t>(mapped), hash, static_cast<u32>(at));
    at += static_cast<std::size_t>(count);
  }
  return hash;
}

bool isSamePath(std::wstring_view a, std::wstring_view b) noexcept {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
         CSTR_EQUAL;
}

// Any of the words may be the one in which the identifiers of a maker's modules differ.
u32 hashOfWords(const ClassWords& words) noexcept {
  u32 hash = 0;
  for (const u32 word : {words.word1, words.word2, words.word3, words.word4}) hash = (hash ^ word) * 0x9E3779B1;
  return hash ^ hash >> 16;
}

constexpr wchar_t kNoMemory[] = L"There is not enough memory to read its descriptor.";

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
  KInterfaceCollection* const found = registry_.findNamed(interfaceName);
  if (found) found->addRef();
  return found;
}

IBSmartObject* KPluginManager::createObject(const wchar_t* interfaceName) {
  const KInterfaceCollection* const found = registry_.findNamed(interfaceName);
  if (!found) return nullptr;
  for (i32 i = 0; i < found->count(); ++i) {
    if (IBSmartObject* object = found->item(i)->createObject()) return object;
  }
  return nullptr;
}

template <class Interface, class Call>
void KPluginManager::forEachObject(KInterfaceCollection* declared, Call call) {
  const auto entries = Ref<KInterfaceCollection>::share(declared);
  auto visit = [&](Interface& told, IPluginInterface&) {
    call(told);
    return true;
  };
  if (!entries) return;
  forEachEntry(*entries, [&](IPluginInterface& entry) {
    const StartMark mark =
        startUnderWay ? query<KPluginModule>(entry.module())->startMark(StartPhase::Told) : StartMark();
    return visitDeclared<Interface>(entry, entry.name(), visit);
  });
}

void KPluginManager::raiseEvent(IGlobalEvent& event) {
  const auto tell = [&event](IGlobalEventTarget& target) { return target.onGlobalEvent(event); };
  broadcastTo<IGlobalEventTarget>(preEventSender_, tell);
  broadcastTo<IGlobalEventTarget>(preGlobalEvents(), tell);
  const wchar_t* const name = event.name();
  forEachObject<IGlobalEventTarget>(registry_.find(L"GlobalEvent.", name ? name : L""), tell);
  broadcastTo<IGlobalEventTarget>(postEventSender_, tell);
  broadcastTo<IGlobalEventTarget>(postGlobalEvents(), tell);
}

// Those that others need stand before them.
void KPluginManager::arrangeByNeeds(const wchar_t* interfaceName) {
  KInterfaceCollection* const found = registry_.find(interfaceName);
  if (!found) return;
  std::vector<const KPluginModule*> modules;
  for (const Ref<KPluginModule>& module : modules_) modules.push_back(module.get());
  const Requirements requirements(modules, registry_);
  found->arrange([&](const IPluginInterface& entry) {
    return requirements.stepOf(*corvix::query<KPluginModule>(entry.module()));
  });
}

StartMark KPluginManager::startMarkOf(const void* code) {
  KPluginModule* const module = startUnderWay ? findByPath(modulePathOf(code)) : nullptr;
  return module ? module->startMark(StartPhase::Told) : StartMark();
}

void KPluginManager::tellAfterInit() {
  if (whyOnlyDescribes_) return;
  arrangeByNeeds(L"IPluginManagerAfterInit");
  forEachObject<IPluginManagerAfterInit>(registry_.find(L"IPluginManagerAfterInit"),
                                         [this](IPluginManagerAfterInit& told) { told.afterInit(*this); });
}

void KPluginManager::tellBeforeDestroy() {
  if (whyOnlyDescribes_) return;
  forEachObject<IPluginManagerBeforeDestroy>(registry_.find(L"IPluginManagerBeforeDestroy"),
                                             [this](IPluginManagerBeforeDestroy& told) { told.beforeDestroy(*this); });
}

void KPluginManager::registerInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance) {
  if (modules_.empty()) return;
  const Attributes attributes = registry_.declare(interfaceName, instance->typeInfo());
  registry_.registerInterface(make<KPluginInterface>(modules_.front(), attributes));
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
  auto record = make<KPluginModule>(modulePath(static_cast<HMODULE>(module)), registry_, alert_);
  addRecord(record);
  orFailed(*record, [&] {
    record->attach(module);
    registerAll(record, *plugin);
  });
  return true;
}

// Whatever goes wrong is the module's fault alone, and nothing of it is left half registered.
template <class Call>
void KPluginManager::orFailed(KPluginModule& module, Call call) {
  try {
    call();
    return;
  } catch (const std::bad_alloc&) {
    module.fail(kNoMemory);
  } catch (...) {
    module.fail(L"Reading its descriptor failed: " + textOfThrown());
  }
  hasUnlisted_ = true;
  try {
    registry_.forgetInterfaces(module);
  } catch (const std::bad_alloc&) {  // only the table is not as large as it might be
  }
}

void KPluginManager::registerAll(const Ref<KPluginModule>& module, const XMLNodeNode& plugin) {
  const std::vector<Attributes> interfaces = module->readDescriptor(plugin);
  const ClassWords* const words = module->identifierWords();
  if (words && !findByIdentifier(*words)) {
    module->identifierHash = hashOfWords(*words);
    byIdentifier_.enter(module.get());
  }
  for (const Attributes& attributes : interfaces) {
    const wchar_t* const text = attributes.find(L"GUID");
    const auto identifier = text ? parseClassWords(text, std::wcslen(text)) : std::nullopt;
    if (identifier && attributes.find(L"Name")) registry_.registerInterface(make<KPluginInterface>(module, attributes));
  }
  for (const Attributes& declared : module->descriptor().settings()) {
    const wchar_t* const imposed = ini_ ? ini_->option(declared.find(L"Group"), declared.find(L"Item")) : nullptr;
    settingsRegistry_.registerSetting(declared, *settings_, imposed);
  }
}

i32 KPluginManager::scanFolder(const wchar_t* folder) {
  const std::wstring absolute = absolutePath(folder);
  if (absolute.empty()) return 0;
  const std::vector<FolderFile> files = modulesOf(absolute);
  cataloguePath_ = cataloguePathOf(absolute);
  Catalogue catalogue(absolute, files, cataloguePath_);
  i32 added = 0;
  modules_.reserve(modules_.size() + files.size());
  for (const FolderFile& file : files) {
    std::wstring path;
    path.reserve(absolute.size() + 1 + file.name.size());  // it is kept
    path.append(absolute).append(1, L'\\').append(file.name);
    if (findByPath(path)) continue;
    addModule(std::move(path), [&] { return catalogue.descriptorOf(file); });
    ++added;
  }
  catalogue.save();
  takenCount_ += catalogue.takenCount();
  readCount_ += catalogue.readCount();
  return added;
}

template <class Read>
KPluginModule* KPluginManager::addModule(std::wstring path, Read read) {
  const auto module = make<KPluginModule>(std::move(path), registry_, alert_);
  if (whyOnlyDescribes_) module->describeOnly(whyOnlyDescribes_);
  addRecord(module);
  orFailed(*module, [&] { takeDescriptor(module, read()); });
  const EndedStart* const ended = earlierStarts_ ? earlierStarts_->endedIn(module->path()) : nullptr;
  if (ended && module->state() == ModuleState::Described) module->leaveOut(*earlierStarts_, *ended);
  if (ini_ && module->state() == ModuleState::Described && ini_->disables(module->path()))
    module->fail(L"Brisvane.INI beside the program disables it.");
  if (isWithoutPlugins_) module->load();  // which it will not, for a reason
  return module.get();
}

void KPluginManager::takeDescriptor(const Ref<KPluginModule>& module, const DescriptorView& descriptor) {
  constexpr std::size_t kMayLackMemory = 1024 * 1024;
  if (descriptor.isNoPlugin) return module->setNoPlugin(descriptor.reason);
  if (descriptor.bytes.empty()) return module->fail(descriptor.reason);
  const Ref<XMLNode> root =
      Ref<XMLNode>::adopt(readXmlbin(descriptor.bytes.data(), static_cast<u32>(descriptor.bytes.size())));
  if (!root && descriptor.bytes.size() > kMayLackMemory)
    return module->fail(L"Its descriptor is malformed, or there is not enough memory to read it.");
  if (!root) return module->fail(L"Its descriptor is malformed.");
  const XMLNodeNode* const plugin = findElement(root.get(), L"Plugin");
  if (!plugin) return module->fail(L"Its descriptor has no Plugin element.");
  registerAll(module, *plugin);
}

IPluginModule* KPluginManager::loadModule(const wchar_t* path) {
  const std::wstring absolute = absolutePath(path);
  if (absolute.empty()) return nullptr;
  KPluginModule* module = findByPath(absolute);
  if (!module) {
    DescriptorBytes descriptor;
    module = addModule(absolute, [&] {
      descriptor = readDescriptorResource(absolute);
      return DescriptorView{descriptor.bytes, descriptor.reason.c_str(), descriptor.isNoPlugin};
    });
  }
  if (module->load()) return module;
  if (module->state() == ModuleState::Described)
    sWriteLog(L"Module %s is not loaded: %s\n", absolute.c_str(), module->reason());
  return nullptr;
}

i32 KPluginManager::takeStock() {
  stock_ = watch_ ? watch_->left() : std::vector<ObjectsLeft>();
  return static_cast<i32>(stock_.size());
}

bool KPluginManager::rowAt(i32 index, ObjectsLeft& row) const noexcept {
  if (index < 0 || static_cast<std::size_t>(index) >= stock_.size()) return false;
  row = stock_[static_cast<std::size_t>(index)];
  return true;
}

IPluginModule* KPluginManager::moduleAt(i32 index) const noexcept {
  return index >= 0 && index < moduleCount() ? modules_[static_cast<std::size_t>(index)].get() : nullptr;
}

IPluginModule* KPluginManager::findModule(const stype_info& identifier) const noexcept {
  KPluginModule* const found = findByIdentifier(identifier.words());
  if (found || !hasUnlisted_) return found;
  for (const Ref<KPluginModule>& module : modules_) {
    if (module->identifierWords() && *module->identifierWords() == identifier.words()) return module.get();
  }
  return nullptr;
}

KPluginModule* KPluginManager::findByIdentifier(const ClassWords& words) const noexcept {
  const u32 hash = hashOfWords(words);
  KPluginModule* module = byIdentifier_.firstIn(hash);
  while (module && !(module->identifierHash == hash && *module->identifierWords() == words))
    module = module->sameIdentifierBucket;
  return module;
}

KPluginModule* KPluginManager::findByPath(std::wstring_view path) const noexcept {
  return findByPath(path, hashOfPath(path));
}

KPluginModule* KPluginManager::findByPath(std::wstring_view path, u32 hash) const noexcept {
  KPluginModule* module = byPath_.firstIn(hash);
  while (module && !(module->pathHash == hash && isSamePath(module->path(), path))) module = module->samePathBucket;
  return module;
}

void KPluginManager::addRecord(const Ref<KPluginModule>& module) {
  modules_.push_back(module);
  module->pathHash = hashOfPath(module->path());
  if (!findByPath(module->path(), module->pathHash)) byPath_.enter(module.get());
}

}  // namespace corvix
