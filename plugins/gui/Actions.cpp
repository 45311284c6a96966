// What the user can ask for in every program with windows; a row each. Views and panels come before them: see
// Frame::route.
#include "descriptor.h"
#include "plugins/gui/Files.h"
#include "plugins/gui/Manager.h"
#include "plugins/windows/Translated.h"
#include "shell/CommandLine.h"
#include "shell/Plugin.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/FileFilter.h"
#include "shell/gui/ActionState.h"
#include "shell/history/StateList.h"

namespace corvix::gui {

namespace {

Frame* frame() { return Manager::current() ? Manager::current()->activeFrame() : nullptr; }
IDocManager* documents() { return IShell::getInstance()->docManager(); }
IDocument* document() { return documents() ? documents()->activeDocument() : nullptr; }
IStateList* history() { return document() ? document()->history() : nullptr; }

struct Row {
  const wchar_t* name;
  bool (*canBe)();
  void (*act)();
  bool (*isChecked)() = nullptr;
  std::wstring (*text)() = nullptr;
};

bool hasFrame() { return frame() != nullptr; }
bool hasDocuments() { return documents() != nullptr; }
bool hasDocument() { return document() != nullptr; }

// For controls of the system's: a view that is none answers by itself.
bool hasEdit() {
  wchar_t name[16] = L"";
  GetClassNameW(GetFocus(), name, 16);
  return !_wcsicmp(name, L"Edit");
}
template <UINT message, WPARAM wparam = 0, LPARAM lparam = 0>
void send() {
  SendMessageW(GetFocus(), message, wparam, lparam);
}
bool hasSelection() {
  DWORD from = 0, to = 0;
  if (!hasEdit()) return false;
  SendMessageW(GetFocus(), EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
  return from != to;
}
bool canWrite() { return hasEdit() && !(GetWindowLongW(GetFocus(), GWL_STYLE) & ES_READONLY); }

std::wstring stepText(const wchar_t* withStep, bool isBack) {
  IStateList* const steps = history();
  const wchar_t* const step = !steps ? nullptr : isBack ? steps->backText() : steps->forwardText();
  return step && *step ? windows::sentence(withStep, {windows::translated(step)}) : L"";
}

template <Frame::Part part>
constexpr Row toggleRow(const wchar_t* name) {
  return {name, hasFrame, [] { frame()->toggle(part); }, [] { return hasFrame() && frame()->isShown(part); }};
}

bool showDialog(const wchar_t* name) {
  CustomDialogRequest request{name, nullptr, IDCANCEL};
  return IShell::getInstance()->showCustomDialog(request) == notify::kTaken;
}

bool isDeclared(const wchar_t* name) {
  return Ref<IBCollection>::adopt(IShell::getInstance()->pluginManager()->findByName(name)).get() != nullptr;
}

// Of the kind that is in front; else of the first that there are empty ones of.
void beginDocument() {
  const std::wstring own = document() ? document()->formatName() : L"";
  if (!own.empty() && documents()->newDocument(own.c_str())) return;
  const auto kinds = Ref<IBCollection>::adopt(documents()->dialogFilters(true));
  for (i32 i = 0; kinds && i < kinds->count(); ++i) {
    const auto* const kind = query<IFileFilter>(kinds->item(i));
    if (kind && *kind->formatName() && documents()->newDocument(kind->formatName())) return;
  }
}

constexpr Row kNew = {L"Actions.File.New", hasDocuments, beginDocument};
constexpr Row kOpen = {L"Actions.File.Open", hasDocuments, openByDialog};
constexpr Row kSave = {L"Actions.File.Save", [] { return hasDocument() && document()->isModified(); },
                       [] { save(*document()); }};
constexpr Row kSaveAs = {L"Actions.File.SaveAs", hasDocument, [] { saveByDialog(*document()); }};
constexpr Row kClose = {L"Actions.File.Close", hasDocument, [] { documents()->closeDocument(document()); }};
constexpr Row kExit = {L"Actions.File.Exit", hasFrame, [] { PostMessageW(frame()->window(), WM_CLOSE, 0, 0); }};
constexpr Row kUndo = {L"Actions.Edit.Undo", [] { return history() && history()->canGoBack(); },
                       [] { history()->goBack(); }, nullptr, [] { return stepText(L"&Undo %1", true); }};
constexpr Row kRedo = {L"Actions.Edit.Redo", [] { return history() && history()->canGoForward(); },
                       [] { history()->goForward(); }, nullptr, [] { return stepText(L"&Redo %1", false); }};
constexpr Row kCut = {L"Actions.Edit.Cut", [] { return hasSelection() && canWrite(); }, send<WM_CUT>};
constexpr Row kCopy = {L"Actions.Edit.Copy", hasSelection, send<WM_COPY>};
constexpr Row kPaste = {L"Actions.Edit.Paste", [] { return canWrite() && IsClipboardFormatAvailable(CF_UNICODETEXT); },
                        send<WM_PASTE>};
constexpr Row kSelectAll = {L"Actions.Edit.SelectAll", hasEdit, send<EM_SETSEL, 0, -1>};
constexpr Row kToolBarRow = toggleRow<Frame::kToolBar>(L"Actions.View.ToolBar");
constexpr Row kStatusBarRow = toggleRow<Frame::kStatusBar>(L"Actions.View.StatusBar");
constexpr Row kNextPane = {L"Actions.View.NextPane", hasFrame, [] { frame()->focusNext(false); }};
constexpr Row kPreviousPane = {L"Actions.View.PreviousPane", hasFrame, [] { frame()->focusNext(true); }};
constexpr Row kNextDocument = {L"Actions.Window.Next", hasDocument, [] { frame()->turnToNext(false); }};
constexpr Row kPreviousDocument = {L"Actions.Window.Previous", hasDocument, [] { frame()->turnToNext(true); }};
constexpr Row kOptions = {L"Actions.Tools.Options", [] { return isDeclared(L"Dialog.Options"); },
                          [] { showDialog(L"Dialog.Options"); }};
constexpr Row kAbout = {L"Actions.Help.About", [] { return isDeclared(L"Dialog.About"); },
                        [] { showDialog(L"Dialog.About"); }};

class BuiltIn final : public BSmartObject, public IAction, public IActionState {
  CORVIX_IDENTITY(BuiltIn, 0x0D9D8C2B, 0x2ADDBAEE, 0xF096C725, 0x1AC3A1BA, BSmartObject, IAction, IActionState)

 public:
  explicit BuiltIn(const Row& row) noexcept : row_(row) {}
  const wchar_t* name() const noexcept override { return row_.name; }
  int validate(IActionSender*) override { return row_.canBe() ? notify::kTaken : notify::kStop; }
  int process(IActionSender*) override {
    if (!row_.canBe()) return notify::kStop;
    row_.act();
    return notify::kTaken;
  }
  bool isChecked() const noexcept override { return row_.isChecked && row_.isChecked(); }
  const wchar_t* text() const noexcept override {
    text_ = row_.text ? row_.text() : std::wstring();
    return text_.c_str();
  }

 private:
  const Row& row_;
  mutable std::wstring text_;
};

// What is no option is a document to open.
class Locations final : public BSmartObject, public ICommandLine {
  CORVIX_IDENTITY(Locations, 0xEA29E3A8, 0x7FD29C5F, 0xAF0BE03C, 0xEC64C85C, BSmartObject, ICommandLine)

 public:
  i32 takeArguments(const wchar_t* const* arguments, i32) override {
    if (!frame() || arguments[0][0] == L'-') return 0;
    openLocation(arguments[0]);
    return 1;
  }
};

template <const Row& row>
IBSmartObject* makeAction() {
  return new BuiltIn(row);
}

}  // namespace

}  // namespace corvix::gui

namespace gui = corvix::gui;

CORVIX_PLUGIN(corvix::rowFor<descriptor::IGUIManager_Instance, gui::Manager>(),
              {descriptor::CommandLine_Processors::name, corvix::create<gui::Locations>},
              {descriptor::Actions_File_New::name, gui::makeAction<gui::kNew>},
              {descriptor::Actions_File_Open::name, gui::makeAction<gui::kOpen>},
              {descriptor::Actions_File_Save::name, gui::makeAction<gui::kSave>},
              {descriptor::Actions_File_SaveAs::name, gui::makeAction<gui::kSaveAs>},
              {descriptor::Actions_File_Close::name, gui::makeAction<gui::kClose>},
              {descriptor::Actions_File_Exit::name, gui::makeAction<gui::kExit>},
              {descriptor::Actions_Edit_Undo::name, gui::makeAction<gui::kUndo>},
              {descriptor::Actions_Edit_Redo::name, gui::makeAction<gui::kRedo>},
              {descriptor::Actions_Edit_Cut::name, gui::makeAction<gui::kCut>},
              {descriptor::Actions_Edit_Copy::name, gui::makeAction<gui::kCopy>},
              {descriptor::Actions_Edit_Paste::name, gui::makeAction<gui::kPaste>},
              {descriptor::Actions_Edit_SelectAll::name, gui::makeAction<gui::kSelectAll>},
              {descriptor::Actions_View_ToolBar::name, gui::makeAction<gui::kToolBarRow>},
              {descriptor::Actions_View_StatusBar::name, gui::makeAction<gui::kStatusBarRow>},
              {descriptor::Actions_View_NextPane::name, gui::makeAction<gui::kNextPane>},
              {descriptor::Actions_View_PreviousPane::name, gui::makeAction<gui::kPreviousPane>},
              {descriptor::Actions_Window_Next::name, gui::makeAction<gui::kNextDocument>},
              {descriptor::Actions_Window_Previous::name, gui::makeAction<gui::kPreviousDocument>},
              {descriptor::Actions_Tools_Options::name, gui::makeAction<gui::kOptions>},
              {descriptor::Actions_Help_About::name, gui::makeAction<gui::kAbout>})
