// KPluginModule: the record of one module. KPluginInterface: one interface that it declares.
#pragma once

#include "shell/ClassFactory.h"
#include "shell/ModuleResources.h"
#include "shell/PluginManager.h"
#include "shell/guard/EarlierStarts_p.h"
#include "shell/guard/StartSentinel_p.h"
#include "shell/modules/ModuleDescriptor_p.h"

#include <forward_list>
#include <memory>
#include <string>

namespace corvix {

// The identifier of something that a descriptor declares. Few are ever asked for it: it is made then.
class DeclaredIdentifier {
 public:
  // Stands as long as this does; without memory for it, until that happens again. `wordsOf` says what it is.
  template <class WordsOf>
  const stype_info& get(WordsOf wordsOf) const noexcept {
    return made_ ? *made_.get() : make(wordsOf());
  }

 private:
  const stype_info& make(const ClassWords& words) const noexcept;

  mutable HeapBuffer<PlainIdentifier> made_;
};

class IUserAlert;
class KClassFactoryLocal;
struct LoadedFactory;

class KPluginModule final : public IPluginModule, public IStartRecord, public IModuleResources {
  CORVIX_IDENTITY(KPluginModule, 0x5C08E3B9, 0x4AD7912F, 0x9E64B1D0, 0x83F72C1A, IPluginModule, IStartRecord,
                  IModuleResources)

 public:
  // `registry`, where what it needs is looked for, and `alert` outlive the module.
  KPluginModule(std::wstring path, const KClassFactoryLocal& registry, IUserAlert& alert)
      : path_(std::move(path)), registry_(registry), alert_(alert) {
    path_.shrink_to_fit();
  }

  bool isLeftOut() const noexcept override { return history_ && history_->starts; }
  bool tryAgain() noexcept override;

  XMLNode* readResource(const wchar_t* name) override;

  // For the plug-in manager's tables.
  u32 pathHash = 0;
  u32 identifierHash = 0;
  KPluginModule* samePathBucket = nullptr;
  KPluginModule* sameIdentifierBucket = nullptr;

  ModuleState state() const noexcept override { return state_; }
  const wchar_t* reason() const noexcept override { return reason_; }
  const wchar_t* path() const noexcept override { return path_.c_str(); }
  const wchar_t* name() const noexcept override { return orEmpty(descriptor_.plugin().find(L"Name")); }
  const wchar_t* version() const noexcept override { return orEmpty(descriptor_.plugin().find(L"Version")); }
  const stype_info* identifier() const noexcept override {
    return hasIdentifier_ ? &identifier_.get([this] { return words_; }) : nullptr;
  }
  const ClassWords* identifierWords() const noexcept { return hasIdentifier_ ? &words_ : nullptr; }
  const wchar_t* attribute(const wchar_t* attributeName) const noexcept override {
    return attributeName ? descriptor_.plugin().findAnyCase(attributeName) : nullptr;
  }
  i32 settingCount() const noexcept override { return static_cast<i32>(descriptor_.settings().size()); }
  const wchar_t* settingAttribute(i32 index, const wchar_t* attributeName) const noexcept override {
    const bool isThere = attributeName && index >= 0 && index < settingCount();
    return isThere ? descriptor_.settings()[static_cast<std::size_t>(index)].findAnyCase(attributeName) : nullptr;
  }

  // Takes in what the element declares and answers its interfaces; the tree is not needed any more afterwards.
  std::vector<Attributes> readDescriptor(const XMLNodeNode& plugin);
  const ModuleDescriptor& descriptor() const noexcept { return descriptor_; }

  // Its code is never loaded, for that reason, which stands for good.
  void describeOnly(const wchar_t* why) noexcept { whyOnlyDescribed_ = why; }

  // An earlier start ended in it.
  void leaveOut(EarlierStarts& starts, const EndedStart& ended);

  // As long as it lives, the module is what a start under way is busy with.
  StartMark startMark(StartPhase phase) noexcept {
    return startUnderWay && !attached_ ? markedNow(phase) : StartMark();
  }

  // Nothing more comes from the module.
  void fail(const std::wstring& reason) noexcept;

  // Nor does anything, and that is no fault.
  void setNoPlugin(const std::wstring& reason) noexcept {
    state_ = ModuleState::NoPlugin;
    reason_ = keep(reason);
  }

  // Finds the class factory of a module whose code is loaded; `handle` is the system's.
  void attach(void* handle);

  // Loads the code if it is not loaded yet and what the module needs is there.
  bool load();

  // Null when it cannot be had; `reason` then says why.
  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier) {
    return isReady_ ? makeObject(interfaceName, identifier) : loadAndMake(interfaceName, identifier);
  }

  // The sentence, behind it what is wrong with the descriptor; stands as long as the module.
  const wchar_t* keep(const std::wstring& sentence) noexcept;

  // What came of an attempt to make an object: a crash, of which the user is told, or anything else.
  void crashed(const wchar_t* interfaceName, const wchar_t* what, u32 fault);
  IBSmartObject* cannotCreate(const wchar_t* interfaceName, const std::wstring& why);

 private:
  // What most modules never have.
  struct History {
    EarlierStarts* starts = nullptr;       // in which it was busy, if it is left out
    FileStamp stamp;                       // of a module that a start was busy with
    std::forward_list<std::wstring> said;  // every reason so far
  };

  static const wchar_t* orEmpty(const wchar_t* text) noexcept { return text ? text : L""; }
  StartMark markedNow(StartPhase phase) noexcept;
  IBSmartObject* loadAndMake(const wchar_t* interfaceName, const stype_info& identifier);
  IBSmartObject* makeObject(const wchar_t* interfaceName, const stype_info& identifier);
  bool take(const LoadedFactory& loaded);
  bool hasWhatItNeeds();
  History& history();

  std::wstring path_;
  const KClassFactoryLocal& registry_;
  IUserAlert& alert_;
  ModuleState state_ = ModuleState::Described;
  bool isLoading_ = false;
  bool isReady_ = false;         // loaded, and no start is under way that would have to know of its objects
  bool hadWhatItNeeds_ = false;  // once, and so for good
  bool hasIdentifier_ = false;
  void* attached_ = nullptr;                   // the system's handle, if its code was there before
  const wchar_t* whyOnlyDescribed_ = nullptr;  // else null
  const wchar_t* flaw_ = L"";                  // what is wrong with the descriptor, though not fatal
  const wchar_t* reason_ = L"";
  std::unique_ptr<History> history_;
  ModuleDescriptor descriptor_;
  ClassWords words_{};
  DeclaredIdentifier identifier_;
  BClassFactory* factory_ = nullptr;
};

class KPluginInterface final : public IPluginInterface, public ICreationReport {
  CORVIX_IDENTITY(KPluginInterface, 0x7A9D51C6, 0x4832F0BE, 0xA36E8D14, 0x0C75E92B, IPluginInterface, ICreationReport)

 public:
  // The attributes are the module's or stand for good; there are a "Name" and a good "GUID" among them.
  KPluginInterface(Ref<KPluginModule> module, const Attributes& attributes) noexcept
      : module_(std::move(module)), attributes_(attributes), name_(attributes.find(L"Name")) {}

  const wchar_t* name() const noexcept override { return name_; }
  const stype_info& identifier() const noexcept override {
    return identifier_.get([this] { return words(); });
  }
  const wchar_t* attribute(const wchar_t* attributeName) const noexcept override {
    return attributeName ? attributes_.findAnyCase(attributeName) : nullptr;
  }
  IPluginModule* module() const noexcept override { return module_.get(); }
  IBSmartObject* createObject() override;

  const wchar_t* reason() const noexcept override { return reason_; }
  void reject(const wchar_t* why) override;

 private:
  ClassWords words() const noexcept;
  void setReason(const wchar_t* reason) noexcept;
  bool lookAt(IBSmartObject& object);
  bool isSound(IBSmartObject& object);

  Ref<KPluginModule> module_;
  Attributes attributes_;
  const wchar_t* name_;  // one of the attributes
  DeclaredIdentifier identifier_;
  const wchar_t* reason_ = L"";     // the module keeps it
  const wchar_t* logged_ = L"";     // the reason that the log has already
  bool isLookedAt_ = false;         // nothing is to be done with further objects
  bool isIdentityChecked_ = false;  // of the first object
};

}  // namespace corvix
