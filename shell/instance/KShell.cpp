#include "shell/instance/KShell_p.h"

#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/ProcessEnd_p.h"
#include "core/settings/BSettings_p.h"
#include "shell/DeclaredObjects_p.h"
#include "shell/documents/DocManager.h"
#include "shell/gui/GUIManager.h"
#include "shell/history/KStateHistory_p.h"
#include "shell/instance/LibraryModule_p.h"
#include "shell/language/KTranslator_p.h"
#include "shell/menus/KMenuManager_p.h"
#include "shell/modules/ModuleFile_p.h"

namespace corvix {

namespace {

std::atomic<bool> isWithoutUser{false};
std::atomic<bool> onlyDescribes{false};
std::atomic<bool> watchesObjects{false};

constexpr wchar_t kCaption[] = L"Teldane Quill";
constexpr wchar_t kWithoutPlugins[] =
    L"The last two starts of the program ended before their end, and nobody knows why; so this one goes without "
    L"plug-ins, and keeps their settings. The next start tries them again.";

constexpr wchar_t kSafeMode[] = L"Brisvane.INI beside the program starts it in safe mode, without plug-ins.";

constinit KShell* shellOfProcess = nullptr;

std::wstring pluginFolder(const std::wstring& programFolder, const ProgramIni& ini) {
  const std::wstring& said = ini.pluginFolder();
  const bool isWhole = said.size() > 1 && (said[1] == L':' || said[0] == L'\\' || said[0] == L'/');
  return isWhole ? said : programFolder + L"\\" + (said.empty() ? L"plugins" : said);
}

// From the first call to the library's end; what is made later goes earlier.
struct ShellLife {
  ShellLife() { shellOfProcess = new KShell; }
  ~ShellLife() {
    if (canGo()) {
      delete shellOfProcess;
    } else {
      sWriteLog(
          L"The shell is left as it is: a thread that the end of the process has stopped has the lock of the lists.\n");
    }
    shellOfProcess = nullptr;
  }

  static bool canGo() noexcept {
    if (!isProcessEnding()) return true;
    if (!dataCSProc().tryEnter()) return false;
    dataCSProc().leave();
    return true;
  }
};

}  // namespace

// Starting is apart from making: who is told of the start may ask for the shell.
IShell* IShell::getInstance() {
  if (!shellOfProcess && isProcessEnding()) return nullptr;
  static const ShellLife life;
  if (shellOfProcess) shellOfProcess->start(libraryModule());
  return shellOfProcess;
}

void IShell::startUnattended() noexcept { isWithoutUser = true; }

void IShell::startDescribing() noexcept { onlyDescribes = true; }

void IShell::watchObjects() noexcept { watchesObjects = true; }

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
  if (watchesObjects) pluginManager_->watchObjects();
  const std::wstring folder = folderOf(modulePath(nullptr));
  readEarlierStarts();
  readIni(folder);
  pluginManager_->registerOwnDescriptor(module);
  pluginManager_->scanFolder(pluginFolder(folder, ini_).c_str());
  pluginManager_->registerInstance(L"IActionManager.Instance", actionManager_);
  pluginManager_->registerInstance(L"IMenuManager.Instance", make<KMenuManager>(*pluginManager_));
  pluginManager_->registerInstance(L"IStateHistory.GetInstance", make<KStateHistory>());
  pluginManager_->registerInstance(L"IBTranslator.Instance", make<KTranslator>(*pluginManager_, *settings_, folder));
  {
    const StartSentinel sentinel;
    pluginManager_->tellAfterInit();
    initialize();
  }
  if (onlyDescribes) return;
  earlierStarts_.forgetUnknown();
  tellOfEarlierStarts();
}

void KShell::readIni(const std::wstring& folder) {
  ini_ = ProgramIni::read(folder + L"\\Brisvane.INI");
  pluginManager_->follow(ini_);
  if (ini_.isSafeMode()) pluginManager_->goWithoutPlugins(kSafeMode);
}

void KShell::readEarlierStarts() {
  earlierStarts_.read();
  pluginManager_->leaveOut(earlierStarts_);
  if (onlyDescribes) {
    pluginManager_->describeOnly(L"This program describes its plug-ins and runs none of their code.");
  } else if (earlierStarts_.isUnsafe()) {
    pluginManager_->goWithoutPlugins(kWithoutPlugins);
  }
}

// When the start is over: what a user does at a message box is no fault of a start.
void KShell::tellOfEarlierStarts() {
  for (const EndedStart& ended : earlierStarts_.unknown())
    sWriteLog(L"A start ended before its end, nobody knows why: %s\n", EarlierStarts::describe(ended).c_str());
  if (earlierStarts_.isUnsafe()) show(kWithoutPlugins, kCaption);
  for (i32 i = 0; i < pluginManager_->moduleCount(); ++i) {
    const IPluginModule& module = *pluginManager_->moduleAt(i);
    const EndedStart* const ended = earlierStarts_.endedIn(module.path());
    if (!ended || ended->isTold || !corvix::query<KPluginModule>(&module)->isLeftOut()) continue;
    EarlierStarts::setTold(*ended);
    show(module.path() + std::wstring(L": ") + module.reason(), kCaption);
  }
}

void KShell::shutDown() {
  if (std::exchange(isShutDown_, true)) return;
  tasks_.close();
  unInitialize();
  // At the very end of the process the modules' factories are gone.
  if (!isProcessEnding()) pluginManager_->tellBeforeDestroy();
  logObjectsLeft();
}

void KShell::logObjectsLeft() {
  ObjectsLeft row;
  pluginManager_->takeStock();
  for (i32 i = 0; pluginManager_->rowAt(i, row); ++i)
    sWriteLog(L"Never released: %d of %s, made for \"%s\" by %s\n", row.count, row.className, row.interfaceName,
              row.modulePath);
}

// The order counts: objects that plug-ins gave, then the tables of names, then the managers, the one made last
// first, and the senders at last.
KShell::~KShell() {
  StartSentinel::endInOrder();
  try {
    shutDown();
  } catch (const std::bad_alloc&) {
    sWriteLog("The shell goes without telling everybody: memory is short.\n");
  }
  isGoing_ = true;
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
  if (!held_[slot] && !isGoing_ && !isProcessEnding() && !std::exchange(isBeingMade_[slot], true)) {
    forEachDeclared<Manager>(*pluginManager_, interfaceName, [&](Manager& answers, IPluginInterface&) {
      held_[slot] = Ref<IBSmartObject>::share(corvix::query<IBSmartObject>(&answers));
      if (objectWatch) objectWatch->forget(*held_[slot]);
      return false;
    });
    isBeingMade_[slot] = false;
  }
  return corvix::query<Manager>(held_[slot].get());
}

IActionManager* KShell::actionManager() {
  IActionManager* const found = resolve<IActionManager>(kActionManager, L"IActionManager.Instance");
  return found ? found : actionManager_.get();
}

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
