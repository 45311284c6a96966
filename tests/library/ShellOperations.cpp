// Modules, the shell, actions and events.
#include "tests/library/PublicOperations.h"

#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/OutputStream.h"
#include "core/settings/BSettings_p.h"
#include "core/suppliers/KFileSupplier_p.h"
#include "shell/Actions.h"
#include "shell/GlobalEvent.h"
#include "shell/Locations.h"
#include "shell/ModuleResources.h"
#include "shell/Progress.h"
#include "shell/history/KStateHistory_p.h"
#include "shell/instance/KShell_p.h"
#include "shell/language/KTranslator_p.h"
#include "shell/menus/KMenuManager_p.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/modules/KPluginManager_p.h"
#include "tests/library/SweptDescriptor.h"

#include <windows.h>

namespace corvix::testing_support {
namespace {

struct Mute final : IUserAlert {
  void show(const std::wstring&, const wchar_t*) override {}
};

class Event final : public IGlobalEvent {
  CORVIX_IDENTITY(Event, 0x6A1D27F3, 0x4B80C95E, 0xA7F3042C, 0xE9165B8D, IGlobalEvent)

 public:
  const wchar_t* name() const noexcept override { return L"Swept"; }
};

// Takes part in everything.
class Guest final : public BSmartObject,
                    public IGlobalEventTarget,
                    public IAction,
                    public IActionTarget,
                    public IActionListener {
  CORVIX_IDENTITY(Guest, 0xD3705E29, 0x41CA86F4, 0x96B21D0E, 0x58F73AC1, BSmartObject, IGlobalEventTarget, IAction,
                  IActionTarget, IActionListener)

 public:
  int onGlobalEvent(IGlobalEvent&) override { return ++told, notify::kGoOn; }
  const wchar_t* name() const noexcept override { return L"Actions.Swept"; }
  int validate(IActionSender*) override { return notify::kTaken; }
  int process(IActionSender*) override { return ++told, notify::kTaken; }
  int onValidateAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int onProcessAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int preValidateAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int postValidateAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int preProcessAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int postProcessAction(IAction&, IActionSender*) override { return notify::kGoOn; }
  int told = 0;
};

// A folder with a file that is no module, in another that is the user's local data.
class ModuleFolder {
 public:
  ModuleFolder() {
    if (GetTempPathW(MAX_PATH, path_) == 0) path_[0] = 0;
    std::wcscat(path_, L"corvix-swept");
    CreateDirectoryW(path_, nullptr);
    SetEnvironmentVariableW(L"LOCALAPPDATA", path_);
    wchar_t library[MAX_PATH];
    if (GetModuleFileNameW(nullptr, library, MAX_PATH) != 0) {
      std::wcscpy(std::wcsrchr(library, L'\\'), L"\\libwinpthread-1.dll");
      CopyFileW(library, file(L"\\library.dll"), FALSE);
    }
    const HANDLE none = CreateFileW(inside(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    if (none == INVALID_HANDLE_VALUE) return;
    WriteFile(none, "MZ no module", 12, &written, nullptr);
    CloseHandle(none);
  }
  ~ModuleFolder() {
    DeleteFileW(inside());
    DeleteFileW(file(L"\\library.dll"));
    for (const wchar_t* const made : {L"\\Marrowby\\Corvix\\Catalogues", L"\\Marrowby\\Corvix", L"\\Marrowby"})
      RemoveDirectoryW(file(made));
    RemoveDirectoryW(path_);
  }
  ModuleFolder(const ModuleFolder&) = delete;
  ModuleFolder& operator=(const ModuleFolder&) = delete;
  const wchar_t* path() const { return path_; }
  const wchar_t* inside() { return file(L"\\none.dll"); }

 private:
  const wchar_t* file(const wchar_t* name) {
    std::wcscpy(inside_, path_);
    return std::wcscat(inside_, name);
  }

  wchar_t path_[2 * MAX_PATH];
  wchar_t inside_[2 * MAX_PATH];
};

struct Manager {
  KClassFactoryLocal factory;
  Mute alert;
  Ref<KPluginManager> own = make<KPluginManager>(factory, alert, make<BSettings>());
  IPluginManager& manager = *own;

  // The program itself as a module.
  bool describe() {
    const auto root = readDescriptor();
    return root && manager.registerDescriptor(GetModuleHandleW(nullptr), root.get());
  }
};

void useDescriptor() {
  Manager its;
  if (!its.describe()) return;
  IPluginManager& manager = its.manager;
  const auto found = Ref<IBCollection>::adopt(manager.findByName(L"Swept.Interface"));
  EXPECT_LE(found ? found->count() : 0, 1);
  EXPECT_TRUE(!found || found->count() == 0 || found->item(0));
  const auto object = Ref<IBSmartObject>::adopt(manager.createObject(L"Swept.Interface"));
  EXPECT_FALSE(object);
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    IPluginInterface& one = *manager.interfaceAt(i);
    EXPECT_EQ(one.module(), manager.moduleAt(0));
    EXPECT_TRUE(one.attribute(L"GUID") && one.identifier().words() == ClassWords({1, 2, 3, 5}) && *one.name());
    EXPECT_FALSE(Ref<IBSmartObject>::adopt(one.createObject()));
    query<ICreationReport>(&one)->reject(L"of no use here");
  }
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    IPluginModule& module = *manager.moduleAt(i);
    if (module.identifier()) {
      EXPECT_EQ(manager.findModule(*module.identifier()), &module);
    }
    EXPECT_TRUE(module.state() != ModuleState::Failed || *module.reason());
    EXPECT_TRUE(module.path() && module.version());
    const IObjectWatch& watch = *query<IObjectWatch>(&manager);
    ObjectsLeft left;
    EXPECT_TRUE(!watch.isWatching() && !query<IObjectWatch>(&manager)->takeStock() && !watch.rowAt(0, left));
    IStartRecord& record = *query<IStartRecord>(&module);
    EXPECT_TRUE(!record.isLeftOut() && !record.tryAgain());
    EXPECT_FALSE(Ref<XMLNode>::adopt(query<IModuleResources>(&module)->readResource(L"MENUTEMPL")));
    if (*module.name()) {
      EXPECT_STREQ(module.attribute(L"name"), L"Swept module");
    }
    for (i32 at = 0; at < module.settingCount(); ++at) {
      EXPECT_TRUE(module.settingAttribute(at, L"Group"));
    }
  }
  EXPECT_LE(manager.saveSettings(), 1);
}

void useMenus() {
  Manager its;
  if (!its.describe()) return;
  const auto menus = make<KMenuManager>(its.manager);
  IMenuManager& manager = *menus;
  EXPECT_EQ(manager.menuCount(), 0);
  EXPECT_FALSE(manager.menuAt(0) || manager.menu(L"Menu.Main") || whenHolds(L"a", L"b"));
  MenuTemplates templates;
  templates.add(read(menuTemplate()).get(), its.manager.moduleAt(0));
  for (const Ref<KMenuItem>& one : templates.finish()) {
    const IMenuItem& item = *one;
    EXPECT_TRUE(item.text() && item.actionName() && item.id() && item.icon() && item.key() && item.when());
    EXPECT_TRUE(item.module() && item.order() == item.group() && item.childCount() == 1 && item.childAt(0));
  }
}

void useLanguages() {
  Manager its;
  const auto settings = make<BSettings>();
  const auto made = make<KTranslator>(its.manager, *settings, L"C:\\no folder");
  IBTranslator& translator = *made;
  EXPECT_STREQ(translator.translate(L"Work"), L"Work");
  EXPECT_STREQ(translator.translateIn(L"Toolbar", L"Work"), L"Work");
  EXPECT_TRUE(translator.setLanguage(L"de") && translator.language() && !translator.setLanguage(L"?"));
  KnownLanguage known;
  EXPECT_FALSE(translator.takeStock() || translator.knownAt(0, known));
  EXPECT_FALSE(translator.sender().hasListeners());
}

class Document final : public BSmartObject, public IDocument {
  CORVIX_IDENTITY(Document, 0x2F81C6D0, 0x4B7E93A5, 0x91D40E68, 0xA35C7F12, BSmartObject, IDocument)

 public:
  const wchar_t* location() const noexcept override { return L""; }
  const wchar_t* title() const noexcept override { return L""; }
  bool isModified() const noexcept override { return false; }
};

class Step final : public BSmartObject, public IState {
  CORVIX_IDENTITY(Step, 0x9B03E57A, 0x46F1D82C, 0xAC7290E4, 0x6D1845BF, BSmartObject, IState)

 public:
  explicit Step(int& done) : done_(done) { ++done_; }
  const wchar_t* text() const noexcept override { return L"step"; }
  bool goBack() override { return --done_, true; }
  bool goForward() override { return ++done_, true; }
  bool mergeWith(IState*) override { return false; }
  u32 sizeBytes() const noexcept override { return 4; }
  bool freeze(IBStream* to) override { return query<BOutputStream>(to)->write(&done_, sizeof done_) == sizeof done_; }
  bool thaw(IBStream* from) override {
    int was = 0;
    return readFully(*query<BInputStream>(from), &was, sizeof was) == sizeof was;
  }

 private:
  int& done_;
};

void useHistory() {
  int done = 0;
  const auto history = make<KStateHistory>();
  IStateHistory& its = *history;
  const auto document = make<Document>();
  its.setActive(document.get());
  IStateList* const list = its.listOf(document.get());
  list->sender().addListener(nullptr);
  list->begin(L"text");
  list->end();
  for (int i = 0; i < 20; ++i) {
    const auto step = make<Step>(done);
    tryOrLook([&] { list->add(step.get()); }, [&] { return !list->canGoForward() && list->canGoBack() == (i > 0); });
  }
  list->markSaved();
  IBHibernatable& sleeper = *query<IBHibernatable>(list);
  sleeper.hibernate(true);
  while (list->canGoBack() && *list->backText() && list->goBack()) {
  }
  EXPECT_TRUE(done < 20 && !its.canGoBack() == !list->canGoBack() && *list->forwardText() && !list->isAtSaved());
  EXPECT_TRUE(its.goForward() && list->goBack() && list->goForward() && its.goBack() && its.canGoForward());
  its.forget(document.get());
}

void useModuleFiles() {
  ModuleFolder folder;
  Manager its;
  EXPECT_LE(its.manager.scanFolder(folder.path()), 2);
  EXPECT_FALSE(its.manager.loadModule(folder.inside()));
  EXPECT_LE(its.manager.moduleCount(), 2);
  const IModuleCatalogue& catalogue = *query<IModuleCatalogue>(&its.manager);
  EXPECT_LE(catalogue.takenCount() + catalogue.readCount(), 2);
  DeleteFileW(catalogue.path());
}

void useEvents() {
  Manager its;
  Guest guest;
  const auto target = static_cast<IGlobalEventTarget*>(&guest);
  const Listens own(its.manager.preEventSender(), target), ownLater(its.manager.postEventSender(), target);
  const Listens all(preGlobalEvents(), target), allLater(postGlobalEvents(), target);
  Event event;
  its.manager.raiseEvent(event);
  EXPECT_EQ(guest.told, 4);
}

void openLocations() {
  Manager its;
  if (!its.describe()) return;
  its.own->registerInstance(L"Supplier.file", make<KFileSupplier>());
  const OwnFile file(L"corvix-swept.txt");
  const HANDLE made = CreateFileW(file.path(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  if (made == INVALID_HANDLE_VALUE) return;
  CloseHandle(made);
  EXPECT_STREQ(supplierNameOf(L"FILE:///C:/x").c_str(), L"Supplier.file");
  const auto stream = Ref<IBStream>::adopt(openLocation(its.manager, file.path()));
}

// The shell of this program is none that `getInstance` makes: it starts with no modules and goes with the operation.
struct Shell {
  Shell() { own->setUnattended(true); }
  Ref<KShell> own = make<KShell>();
  IShell& shell = *own;
};

void useActions() {
  Guest guest;  // outlives the shell, which keeps it
  Shell its;
  IActionManager* const manager = its.shell.actionManager();
  ASSERT_TRUE(manager);
  IAction& action = guest;
  manager->addAction(&action);
  EXPECT_EQ(manager->findAction(L"Swept"), &action);
  EXPECT_EQ(manager->validateAction(L"Swept", nullptr), notify::kTaken);
  EXPECT_EQ(manager->processAction(L"Actions.Swept", nullptr), notify::kTaken);
  EXPECT_EQ(guest.told, 1);
  manager->removeAction(L"Swept");
  EXPECT_FALSE(manager->findAction(L"Swept"));
}

void useNotifications() {
  Shell its;
  IShell& shell = its.shell;
  Guest guest;
  const auto target = static_cast<IActionTarget*>(&guest);
  const auto listener = static_cast<IActionListener*>(&guest);
  const Listens own(shell.sender(ShellNotification::ProcessAction), target);
  const Listens all(shellNotifications(ShellNotification::PreProcessAction), listener);
  IAction& action = guest;
  MessageBoxRequest box = {L"text", L"caption", 0, IDOK};
  CustomDialogRequest dialog = {L"Dialog.Swept", nullptr, 0};
  ConfirmationRequest confirmation = {L"text", L"caption", false};
  const int answers[] = {
      shell.initialize(),
      shell.sysMsgBox(box),
      shell.showCustomDialog(dialog),
      shell.showConfirmation(confirmation),
      shell.changeStatusText(0, L"text"),
      shell.preValidateAction(action, nullptr),
      shell.validateAction(action, nullptr),
      shell.postValidateAction(action, nullptr),
      shell.preProcessAction(action, nullptr),
      shell.processAction(action, nullptr),
      shell.postProcessAction(action, nullptr),
      shell.openDocument(nullptr, L"file:///C:/x"),
      shell.startProgress(shell.newProgressId(), 0, 9, 0, 0),
      shell.changeProgress(1, 0, 9, 1, 0),
      shell.updateProgress(1, 0, 9, 1, 0),
      shell.stopProgress(1, 0, 9, 9, 0),
      shell.unInitialize(),
  };
  for (const int answer : answers) {
    EXPECT_EQ(answer, notify::kGoOn);
  }
}

void useShell() {
  Shell its;
  IShell& shell = its.shell;
  EXPECT_TRUE(shell.pluginManager() && shell.settings() && shell.isUnattended());
  EXPECT_FALSE(shell.guiManager() || shell.docManager() || shell.stateHistory() || shell.askToRetry(0));
  EXPECT_EQ(shell.messageBox(L"text", L"caption", MB_OK, IDOK), IDOK);
  const wchar_t* const arguments[] = {L"--swept"};
  EXPECT_EQ(shell.processCommandLine(arguments, 1), 1);
  int done = 0;
  const bool isAdded = shell.runOnShellThread([](void* count) { ++*static_cast<int*>(count); }, &done);
  shell.runWaitingTasks();
  EXPECT_EQ(done, isAdded ? 1 : 0);
  shell.shutDown();
}

const PublicOperation kOperations[] = {
    {"descriptor of a module", useDescriptor},
    {"files that are no modules, and their catalogue",
     [] {
       useModuleFiles();
       switchCatalogue(isCatalogueSwitchedOn());
     }},
    {"menus", useMenus},
    {"languages", useLanguages},
    {"steps of a document", useHistory},
    {"global events", useEvents},
    {"opening a location", openLocations},
    {"actions", useActions},
    {"shell notifications", useNotifications},
    {"shell", useShell},
};

}  // namespace

std::span<const PublicOperation> shellOperations() { return kOperations; }

}  // namespace corvix::testing_support
