#include "shell/KShell.h"

#include "core/baselib/system/Log.h"
#include "core/settings/BSettings.h"
#include "shell/Documents.h"
#include "shell/Gui.h"
#include "shell/LibraryModule_p.h"
#include "shell/modules/ModuleFile.h"

namespace corvix {

namespace {

std::atomic<bool> isWithoutUser{false};

constexpr wchar_t kCaption[] = L"Teldane Quill";

}  // namespace

// Starting is apart from making: who is told of the start may ask for the shell.
IShell* IShell::getInstance() {
  static KShell shell;
  shell.start(libraryModule());
  return &shell;
}

void IShell::startUnattended() noexcept { isWithoutUser = true; }

KShell::KShell()
    : settings_(make<BSettings>()),
      pluginManager_(
          make<KPluginManager>(static_cast<KClassFactoryLocal&>(*queryClassFactoryLocal()), *this, settings_)),
      actionManager_(make<KActionManager>(*this)) {
  setMemoryShell(this);
  setInternetAgent(this);
}

void KShell::start(void* module) {
  if (std::exchange(isStarted_, true)) return;
  useSafeModuleSearch();
  pluginManager_->registerOwnDescriptor(module);
  pluginManager_->scanFolder((folderOf(modulePath(nullptr)) + L"\\plugins").c_str());
  pluginManager_->registerInstance(L"IActionManager.Instance", actionManager_);
  pluginManager_->tellAfterInit();
  initialize();
}

void KShell::shutDown() {
  if (std::exchange(isShutDown_, true)) return;
  tasks_.close();
  unInitialize();
  // At the very end of the process the modules' factories are gone.
  if (!isProcessEnding()) pluginManager_->tellBeforeDestroy();
}

// The order counts: objects that plug-ins gave, then the tables of names, then the managers, the one made last
// first, and the senders at last.
KShell::~KShell() {
  shutDown();
  setMemoryShell(nullptr);
  setInternetAgent(nullptr);
  for (Ref<IBSmartObject>& object : held_) object.reset();
  actionManager_->forgetActions();
  pluginManager_->forgetInstances();
  actionManager_.reset();
  pluginManager_.reset();
}

bool KShell::isUnattended() const noexcept { return isWithoutUser; }

void KShell::setUnattended(bool unattended) noexcept { isWithoutUser = unattended; }

template <class Manager>
Manager* KShell::resolve(Held slot, const wchar_t* interfaceName) {
  if (!held_[slot] && !isShutDown_)
    held_[slot] = Ref<IBSmartObject>::adopt(pluginManager_->createObject(interfaceName));
  return corvix::query<Manager>(held_[slot].get());
}

IActionManager* KShell::actionManager() { return resolve<IActionManager>(kActionManager, L"IActionManager.Instance"); }

IGUIManager* KShell::guiManager() { return resolve<IGUIManager>(kGuiManager, L"IGUIManager.Instance"); }

IDocManager* KShell::docManager() { return resolve<IDocManager>(kDocManager, L"IDocManager.Instance"); }

IStateHistory* KShell::stateHistory() { return resolve<IStateHistory>(kStateHistory, L"IStateHistory.GetInstance"); }

// Nobody is told: there is no memory, and the memory manager's lock is held.
bool KShell::askToRetry(u32) {
  constexpr UINT kStyle = MB_RETRYCANCEL | MB_ICONWARNING | MB_TASKMODAL;
  return !isUnattended() && MessageBoxW(nullptr, L"Not enough memory", kCaption, kStyle) == IDRETRY;
}

i32 KShell::messageBox(const wchar_t* text, const wchar_t* caption, u32 style, i32 silentAnswer) {
  MessageBoxRequest request{text, caption, style, silentAnswer};
  if (sysMsgBox(request) != notify::kGoOn) return request.answer;
  if (isUnattended()) {
    sWriteLog(L"%s: %s\n", caption ? caption : L"", text ? text : L"");
    return request.answer;
  }
  return MessageBoxW(nullptr, text, caption, style);
}

void KShell::show(const std::wstring& text, const wchar_t* caption) { messageBox(text.c_str(), caption, MB_OK, IDOK); }

}  // namespace corvix
