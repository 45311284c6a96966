#include "shell/modules/PluginModule_p.h"

#include "core/baselib/system/Log.h"
#include "core/xml/XmlbinReader.h"
#include "shell/guard/GuardedModule_p.h"
#include "shell/guard/UserAlert_p.h"
#include "shell/modules/Contract_p.h"
#include "shell/modules/ModuleFile_p.h"
#include "shell/modules/ObjectWatch_p.h"
#include "shell/modules/Requirements_p.h"

#include <algorithm>

namespace corvix {

namespace {

// A factory that says something else each time does not fill the memory.
constexpr std::ptrdiff_t kMostSaid = 32;
constexpr std::size_t kLongestSentence = 1024;
constexpr wchar_t kCaption[] = L"Teldane Quill";

}  // namespace

const stype_info& DeclaredIdentifier::make(const ClassWords& words) const noexcept {
  alignas(PlainIdentifier) static unsigned char spare[sizeof(PlainIdentifier)];
  void* const place = made_.tryAllocate(1) ? static_cast<void*>(made_.get()) : spare;
  return *new (place) PlainIdentifier(words);
}

std::vector<Attributes> KPluginModule::readDescriptor(const XMLNodeNode& plugin) {
  std::vector<Attributes> interfaces = descriptor_.read(plugin);
  const wchar_t* const text = descriptor_.plugin().find(L"GUID");
  const std::optional<ClassWords> words = text ? parseClassWords(text, std::wcslen(text)) : std::nullopt;
  std::wstring flaws;
  if (words) {
    words_ = *words;
    hasIdentifier_ = true;
  } else {
    flaws = text ? L"Its identifier does not have four numbers; the module cannot be found by identifier."
                 : L"It has no identifier; the module cannot be found by identifier.";
  }
  const std::wstring complaints = descriptor_.complaints();
  if (!flaws.empty() && !complaints.empty()) flaws += L' ';
  flaw_ = keep(flaws + complaints);
  if (state_ == ModuleState::Failed) return interfaces;
  reason_ = flaw_;
  const auto stamp = [&](const wchar_t* name) { return orEmpty(descriptor_.plugin().find(name)); };
  const std::wstring why = whyOtherContract({stamp(L"SdkVersion"), stamp(L"SdkCompiler"), stamp(L"SdkBits")});
  if (!why.empty()) fail(why);
  return interfaces;
}

KPluginModule::History& KPluginModule::history() {
  if (!history_) history_ = std::make_unique<History>();
  return *history_;
}

const wchar_t* KPluginModule::keep(const std::wstring& sentence) noexcept {
  if (sentence.empty()) return flaw_;
  try {
    std::wstring text = sentence.substr(0, kLongestSentence);
    if (*flaw_) text.append(L" ").append(flaw_);
    auto& said = history().said;
    const auto before = std::find(said.begin(), said.end(), text);
    if (before != said.end()) return before->c_str();
    if (state_ != ModuleState::Failed && std::distance(said.begin(), said.end()) >= kMostSaid)
      return L"Its class factory failed, and said too much before to be quoted again.";
    said.push_front(std::move(text));
    return said.front().c_str();
  } catch (const std::bad_alloc&) {
    return L"It failed, and there is not enough memory to say why.";
  }
}

void KPluginModule::fail(const std::wstring& reason) noexcept {
  state_ = ModuleState::Failed;
  factory_ = nullptr;
  isReady_ = false;
  reason_ = keep(reason);
  sWriteLog(L"Module %s failed: %s\n", path_.c_str(), reason_);
}

bool KPluginModule::take(const LoadedFactory& loaded) {
  if (loaded.factory) {
    factory_ = loaded.factory;
    state_ = ModuleState::Loaded;
    return true;
  }
  fail(loaded.reason);
  if (loaded.crashed) alert_.show(L"Can't load module" + path_ + L". Module may be corrupt!", kCaption);
  return false;
}

void KPluginModule::attach(void* handle) {
  attached_ = handle;
  take(findFactory(static_cast<HMODULE>(handle)));
}

XMLNode* KPluginModule::readResource(const wchar_t* name) {
  const std::wstring wanted = name ? name : L"";
  const DescriptorBytes found = readTemplateResource(path_, static_cast<HMODULE>(attached_), wanted);
  XMLNode* const root = readXmlbin(found.bytes.data(), static_cast<u32>(found.bytes.size()));
  const wchar_t* const why = found.bytes.empty() ? found.reason.c_str() : L"It is malformed.";
  if (!root && *why) sWriteLog(L"Resource %s of %s cannot be read: %s\n", wanted.c_str(), path_.c_str(), why);
  return root;
}

void KPluginModule::leaveOut(EarlierStarts& starts, const EndedStart& ended) {
  History& itsHistory = history();
  fail(L"The program ended in it at its start of " + EarlierStarts::describe(ended) +
       L", so it is left out. It is tried again once its file has changed, or this one is deleted: " + ended.file);
  itsHistory.starts = &starts;
}

bool KPluginModule::tryAgain() noexcept { return isLeftOut() && history_->starts->forget(path_); }

StartMark KPluginModule::markedNow(StartPhase phase) noexcept {
  if (history_ && !(history_->stamp == FileStamp())) return {path_, history_->stamp, phase};
  const FileStamp stamp = stampOf(path_);
  try {
    history().stamp = stamp;
  } catch (const std::bad_alloc&) {  // then the file is asked again
  }
  return {path_, stamp, phase};
}

bool KPluginModule::hasWhatItNeeds() {
  if (whyOnlyDescribed_) {
    reason_ = keep(whyOnlyDescribed_);
    return false;
  }
  if (hadWhatItNeeds_) return true;
  if (!descriptor_.requirements().empty()) {
    const std::wstring why = Requirements({this}, registry_).whyUnmet(*this);
    reason_ = why.empty() ? flaw_ : keep(why);
    if (!why.empty()) return false;
  }
  return hadWhatItNeeds_ = true;
}

bool KPluginModule::load() {
  if (state_ == ModuleState::Failed || state_ == ModuleState::NoPlugin || !hasWhatItNeeds()) return false;
  if (state_ == ModuleState::Loaded) return true;
  if (std::exchange(isLoading_, true)) return false;  // its own start asks for its objects
  sWriteLog(L"Load library %s\n", path_.c_str());
  const StartMark mark = startMark(StartPhase::Loading);
  const LoadedFactory loaded = loadFactory(path_);
  isLoading_ = false;
  return take(loaded);
}

IBSmartObject* KPluginModule::loadAndMake(const wchar_t* interfaceName, const stype_info& identifier) {
  if (!load()) return nullptr;
  isReady_ = !startUnderWay;
  const StartMark mark = startMark(StartPhase::Object);
  return makeObject(interfaceName, identifier);
}

IBSmartObject* KPluginModule::makeObject(const wchar_t* interfaceName, const stype_info& identifier) {
  IBSmartObject* object = nullptr;
  const GuardedOutcome outcome = guardedFromAll([&object, factory = factory_, interfaceName, &identifier] {
    object = factory->createObject(interfaceName, identifier);
    if (object) object->typeInfo();  // something that is no object may end here
  });
  if (object && !outcome.fault && !outcome.thrown) {
    reason_ = flaw_;
    return object;
  }
  if (state_ == ModuleState::Failed && (outcome.fault || !object)) return nullptr;  // it asked itself, and that is why
  if (outcome.fault) {
    crashed(interfaceName, object ? L"its class factory made what is no object" : L"its class factory crashed",
            *outcome.fault);
    return nullptr;
  }
  if (outcome.thrown) return cannotCreate(interfaceName, L"threw: " + *outcome.thrown);
  return cannotCreate(interfaceName, L"made no such object");
}

void KPluginModule::crashed(const wchar_t* interfaceName, const wchar_t* what, u32 fault) {
  fail(L"Asked for \"" + std::wstring(interfaceName) + L"\", " + what + L": " + faultText(fault) + L".");
  alert_.show(path_ + L": " + reason_ + L"\n\nSave your work and start the program again.", kCaption);
}

IBSmartObject* KPluginModule::cannotCreate(const wchar_t* interfaceName, const std::wstring& why) {
  reason_ = keep(L"Asked for \"" + std::wstring(interfaceName) + L"\", its class factory " + why + L".");
  return nullptr;
}

IBSmartObject* KPluginInterface::createObject() {
  IBSmartObject* object = module_->createObject(name_, identifier());
  if (object && !isLookedAt_ && !lookAt(*object)) object = nullptr;  // it cannot be released either
  if (object) {
    reason_ = L"";
  } else {
    setReason(*module_->reason() ? module_->reason() : L"Its module is just being loaded.");
  }
  return object;
}

ClassWords KPluginInterface::words() const noexcept {
  const wchar_t* const text = attributes_.find(L"GUID");
  return text ? parseClassWords(text, std::wcslen(text)).value_or(ClassWords{}) : ClassWords{};
}

void KPluginInterface::reject(const wchar_t* why) {
  const std::wstring text = why ? why : L"";
  setReason(module_->keep(L"The object made for \"" + std::wstring(name_) + L"\" is of no use: " + text + L"."));
}

// A program may ask again and again: the log gets each reason once.
void KPluginInterface::setReason(const wchar_t* reason) noexcept {
  reason_ = reason;
  if (std::exchange(logged_, reason) != reason)
    sWriteLog(L"No object \"%s\" from %s: %s\n", name_, module_->path(), reason);
}

// False when it is of no use.
bool KPluginInterface::lookAt(IBSmartObject& object) {
  if (!isIdentityChecked_) isIdentityChecked_ = isSound(object);
  if (!isIdentityChecked_) return false;
  if (objectWatch) {
    guardedFromAll([&] { objectWatch->made(*this, object); });
  } else {
    isLookedAt_ = true;
  }
  return true;
}

// One that answers to something else than what is declared stays as good as it was: those who ask for another of its
// interfaces get it.
bool KPluginInterface::isSound(IBSmartObject& object) {
  constexpr std::size_t kLongestShown = 256;
  std::string className;
  bool answers = false;
  const GuardedOutcome outcome = guardedFromAll([&] {
    const char* const text = object.typeInfo().className();
    className.assign(text, std::find(text, text + kLongestShown, '\0'));
    answers = object.query(identifier()) != nullptr;
  });
  if (outcome.fault)
    module_->crashed(name_, L"it made an object that crashed when it was asked for its identity", *outcome.fault);
  if (outcome.thrown)
    module_->cannotCreate(name_, L"made an object that threw when it was asked for its identity: " + *outcome.thrown);
  if (outcome.fault || outcome.thrown) return false;
  if (!answers)
    sWriteLog(L"Warning: the object \"%s\" from %s, a %hs, does not answer to the identifier declared for it, %hs\n",
              name_, module_->path(), className.c_str(), identifier().text());
  return true;
}

}  // namespace corvix
