#include "plugins/gui/Frame.h"

#include "plugins/gui/ActionCalls.h"
#include "plugins/gui/Files.h"
#include "plugins/gui/Languages.h"
#include "plugins/gui/Manager.h"
#include "plugins/gui/Store.h"
#include "plugins/gui/Words.h"
#include "plugins/windows/Translated.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/gui/DocumentView.h"
#include "shell/menus/MenuManager.h"
#include "shell/services/Report.h"
#include "tools/xmlbinc/Harmless.h"

#include <algorithm>
#include <cwchar>

#include <commctrl.h>
#include <shellapi.h>

namespace corvix::gui {

using namespace windows;

namespace {

constexpr UINT kFailed = WM_APP + 1;
constexpr int kWidth = 900, kHeight = 640;  // in 1/96 inch
constexpr wchar_t kPlacement[] = L"Placement", kWhenEmpty[] = L"Open a document with Ctrl+O, or drop a file here";
constexpr const wchar_t* kPartNames[] = {L"ToolBar", L"StatusBar"};
constexpr std::size_t kLongestTitle = 200;

IDocManager* documents() { return IShell::getInstance()->docManager(); }

}  // namespace

Frame::Frame(Manager& manager, const wchar_t* name)
    : manager_(manager),
      name_(orEmpty(name)),
      look_(std::make_unique<Look>(nullptr)),
      menu_([this](const wchar_t* action) { return list(action); }),
      tabs_(*this),
      panels_(*this, *this, name_) {
  const Store store(name_, L"");
  for (int part : {kToolBar, kStatusBar}) isPartShown_[part] = store.number(kPartNames[part]).value_or(1) != 0;
}

Frame::~Frame() {
  if (window_) DestroyWindow(window_);
}

bool Frame::make() {
  const wchar_t* const frames = windowClass(L"CorvixFrame", &Frame::procedure);
  CreateWindowExW(WS_EX_CONTROLPARENT | WS_EX_ACCEPTFILES, frames, programName().c_str(),
                  WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT, look_->scaled(kWidth),
                  look_->scaled(kHeight), nullptr, nullptr, ownModule(), this);
  return window_ != nullptr;
}

bool Frame::makeInside() {
  if (!tabs_.make(window_, kWhenEmpty) || !toolbar_.make(window_) || !status_.make(window_)) return false;
  panels_.setParent(window_);
  ShowWindow(tabs_.window(), SW_SHOWNA);
  adoptLook();
  isReady_ = true;
  refresh();
  return true;
}

void Frame::adoptLook() {
  auto look = std::make_unique<Look>(window_);
  toolbar_.adopt(*look);
  status_.adopt(*look);
  tabs_.adopt(*look);
  panels_.adopt(*look);
  look_ = std::move(look);
}

void Frame::show(bool visible) {
  if (!window_) return;
  if (visible && !isShown_) {
    isShown_ = true;
    restorePlacement(SW_SHOWNORMAL);
  } else {
    ShowWindow(window_, visible ? SW_SHOW : SW_HIDE);
  }
  if (visible) SetForegroundWindow(window_);
}

// Only to where somebody can see it.
void Frame::restorePlacement(int showCommand) {
  WINDOWPLACEMENT placement = {};
  placement.length = sizeof placement;
  RECT& normal = placement.rcNormalPosition;
  int isMaximized = 0;
  const std::wstring kept = Store(name_, L"").text(kPlacement).value_or(L"");
  const bool isKept = std::swscanf(kept.c_str(), L"%ld %ld %ld %ld %d", &normal.left, &normal.top, &normal.right,
                                   &normal.bottom, &isMaximized) == 5 &&
                      widthOf(normal) >= look_->scaled(100) && heightOf(normal) >= look_->scaled(80) &&
                      widthOf(normal) < 0x4000 && heightOf(normal) < 0x4000;
  if (!isKept || !MonitorFromRect(&normal, MONITOR_DEFAULTTONULL)) {
    ShowWindow(window_, showCommand);
  } else {
    placement.showCmd = static_cast<UINT>(isMaximized ? SW_SHOWMAXIMIZED : showCommand);
    SetWindowPlacement(window_, &placement);
  }
  UpdateWindow(window_);
}

void Frame::keepPlacement() {
  WINDOWPLACEMENT placement = {};
  placement.length = sizeof placement;
  if (isShown_ && GetWindowPlacement(window_, &placement)) {
    const RECT& normal = placement.rcNormalPosition;
    wchar_t text[80];
    std::swprintf(text, 80, L"%ld %ld %ld %ld %d", normal.left, normal.top, normal.right, normal.bottom,
                  placement.showCmd == SW_SHOWMAXIMIZED);
    Store(name_, L"").setText(kPlacement, text);
  }
  panels_.keep();
}

// Views.

Frame::DocumentPlace* Frame::front() const noexcept { return front_ < views_.size() ? views_[front_].get() : nullptr; }

IView* Frame::activeView() const noexcept {
  const DocumentPlace* const place = front();
  return place ? place->place->view() : nullptr;
}

IView* Frame::viewAt(i32 index) const noexcept {
  return index >= 0 && index < viewCount() ? views_[static_cast<std::size_t>(index)]->place->view() : nullptr;
}

bool Frame::setActiveView(IView* view) {
  for (std::size_t i = 0; i < views_.size(); ++i) {
    if (views_[i]->place->view() != view) continue;
    turnTo(i);
    return true;
  }
  return false;
}

std::unique_ptr<Place> Frame::makeView(IDocument* document) {
  const std::wstring words = wordsOf(document);
  const auto say = [&](const std::wstring& line) {
    manager_.report()->addLine(line.c_str());
    IShell::getInstance()->changeStatusText(0, line.c_str());
  };
  for (Declared& declared : declaredIn(L"DocumentView.")) {
    if (!whenHolds(declared.attribute(L"For").c_str(), words.c_str())) continue;
    if (failed_.count({document, declared.name()})) continue;
    std::wstring reason;
    auto place = Place::make<IDocumentView>(
        *declared.entry, *this, *this, tabs_.window(), [&](IDocumentView& view) { return view.setDocument(document); },
        reason);
    if (place) return place;
    say(reason.empty() ? sentence(L"%1 cannot show %2.", {declared.name(), document->title()})
                       : sentence(L"%1 cannot show %2: %3.", {declared.name(), document->title(), reason}));
  }
  say(sentence(L"No view can show %1.", {document->title()}));
  return nullptr;
}

IView* Frame::openView(IDocument* document) {
  if (!document || !isReady_) return nullptr;
  for (std::size_t i = 0; i < views_.size(); ++i) {
    if (views_[i]->document != document) continue;
    turnTo(i);
    return views_[i]->place->view();
  }
  auto place = makeView(document);
  if (!place) return nullptr;
  views_.push_back(std::make_unique<DocumentPlace>(DocumentPlace{document, std::move(place)}));
  IView* const view = views_.back()->place->view();
  turnTo(views_.size() - 1);
  return view;
}

bool Frame::closeView(IView* view) {
  const auto found =
      std::find_if(views_.begin(), views_.end(), [&](const auto& one) { return one->place->view() == view; });
  if (!view || found == views_.end()) return false;
  panels_.forgetDocument();
  const auto index = static_cast<std::size_t>(found - views_.begin());
  const std::unique_ptr<DocumentPlace> gone = std::move(*found);
  views_.erase(found);
  if (front_ > index || front_ >= views_.size()) front_ = front_ ? front_ - 1 : 0;
  turnTo(front_);
  return true;
}

void Frame::closeViewsOf(IDocument* document) {
  for (std::size_t i = views_.size(); i-- > 0;) {
    if (i < views_.size() && views_[i]->document == document) closeView(views_[i]->place->view());
  }
  for (auto at = failed_.begin(); at != failed_.end();) at = at->first == document ? failed_.erase(at) : std::next(at);
}

void Frame::turnTo(std::size_t index) {
  const bool hadFocus = GetFocus() == window_ || !panels_.focused();
  if (index < views_.size()) front_ = index;
  for (std::size_t i = 0; i < views_.size(); ++i) {
    const HWND page = views_[i]->place->window();
    if (i == front_) move(page, tabs_.pageArea());
    ShowWindow(page, i == front_ ? SW_SHOW : SW_HIDE);
  }
  if (const DocumentPlace* const place = front()) {
    if (hadFocus && GetActiveWindow() == window_) place->place->focus();
    IDocManager* const manager = documents();
    if (manager && manager->activeDocument() != place->document) manager->setActiveDocument(place->document);
  }
  showTitles();
  manager_.refreshActions();
}

void Frame::showTitles() {
  std::vector<std::wstring> titles;
  for (const auto& one : views_)
    titles.push_back((one->document->isModified() ? L"* " : L"") + std::wstring(one->document->title()));
  tabs_.show(titles, views_.empty() ? -1 : static_cast<int>(front_));
  std::wstring title = front() ? sentence(L"%1 - %2", {titles[front_], programName()}) : programName();
  title = xmlbinc::harmless(title, kLongestTitle);
  if (title == title_) return;
  title_ = title;
  SetWindowTextW(window_, title_.c_str());
}

std::wstring Frame::words() {
  DocumentPlace* const place = front();
  if (!place) return {};
  std::wstring words = wordsOf(place->document);
  place->place->ask([&] {
    if (const wchar_t* const own = place->place->view()->contextWords()) words += std::wstring(L" ") + own;
  });
  return words;
}

void Frame::placeFailed() {
  if (!hasFailedPlace_ && window_) hasFailedPlace_ = PostMessageW(window_, kFailed, 0, 0) != FALSE;
}

// A view that has failed goes, its document stays; not in the middle of a message of it.
void Frame::closeFailed() {
  hasFailedPlace_ = false;
  for (std::size_t i = views_.size(); i-- > 0;) {
    if (i >= views_.size() || !views_[i]->place->hasFailed()) continue;
    const Place& place = *views_[i]->place;
    IDocument* const document = views_[i]->document;
    const std::wstring line = sentence(L"%1 of %2 was closed: %3. The document is still open.",
                                       {place.name(), document->title(), place.reason()});
    failed_.emplace(document, place.name());
    closeView(place.view());
    manager_.report()->addLine(line.c_str());
    IShell& shell = *IShell::getInstance();
    shell.changeStatusText(0, line.c_str());
    shell.messageBox(line.c_str(), programName().c_str(), MB_OK | MB_ICONWARNING, IDOK);
  }
  panels_.closeFailed(*manager_.report());
  arrange();
}

// What the user asks for.

bool Frame::showPanel(const wchar_t* name, bool visible) {
  if (!isReady_ || !panels_.show(name, visible)) return false;
  arrange();
  panels_.keep();
  return true;
}

void Frame::toggle(Part part) {
  isPartShown_[part] = !isPartShown_[part];
  Store(name_, L"").setNumber(kPartNames[part], isPartShown_[part]);
  arrange();
}

void Frame::closeActive() {
  if (DocumentPlace* const place = front()) documents()->closeDocument(place->document);
}

void Frame::turnToNext(bool backwards) {
  if (views_.empty()) return;
  turnTo((front_ + (backwards ? views_.size() - 1 : 1)) % views_.size());
  if (const DocumentPlace* const place = front()) place->place->focus();
}

void Frame::focusNext(bool backwards) {
  if (Place* const next = panels_.after(panels_.focused(), backwards)) return next->focus();
  if (const DocumentPlace* const place = front()) {
    place->place->focus();
  } else {
    SetFocus(window_);
  }
}

bool Frame::takeKey(const MSG& message) {
  if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
  if (message.hwnd != window_ && !IsChild(window_, message.hwnd)) return false;
  if (!IsWindowEnabled(window_)) return false;
  const Stroke stroke = strokePressed(message.wParam);
  const wchar_t* const action = menu_.actionOf(stroke, words().c_str());
  if (action && !isReserved(stroke, message.hwnd)) {
    const std::wstring name = action;  // menus may change meanwhile
    if (!lookOf(name.c_str()).isEnabled) return false;
    process(name.c_str(), L"key");
    return true;
  }
  // The tabulator leads through the controls of a panel; a view has its own keys.
  Place* const panel = panels_.focused();
  if (panel && message.wParam == VK_ESCAPE) return focusNext(false), true;
  MSG copy = message;
  return panel && IsDialogMessageW(panel->window(), &copy);
}

std::vector<ListedRow> Frame::list(const wchar_t* actionName) {
  std::vector<ListedRow> rows;
  const std::wstring_view wanted = actionName;
  const Ref<Frame> self = Ref<Frame>::share(this);
  if (wanted == L"Actions.List.Panels") {
    for (const Panels::Row& row : panels_.rows())
      rows.push_back({row.text, row.isShown, [self, row] { self->showPanel(row.name.c_str(), !row.isShown); }});
  } else if (wanted == L"Actions.List.Documents") {
    for (std::size_t i = 0; i < views_.size(); ++i) {
      IView* const view = views_[i]->place->view();
      rows.push_back(
          {numbered(i, views_[i]->document->title()), i == front_, [self, view] { self->setActiveView(view); }});
    }
  } else if (wanted == L"Actions.List.Languages") {
    rows = languages();
  } else if (wanted == L"Actions.List.Recent" && documents()) {
    for (i32 i = 0; i < documents()->recentCount(); ++i) {
      const std::wstring location = orEmpty(documents()->recentAt(i));
      rows.push_back(
          {numbered(static_cast<std::size_t>(i), shortened(location)), false, [location] { openLocation(location); }});
    }
  }
  return rows;
}

void Frame::refresh() {
  if (!isReady_) return;
  const std::wstring now = words();
  menu_.update(window_, now.c_str());
  toolbar_.update(now.c_str());
  const DocumentPlace* const place = front();
  panels_.update(now.c_str(), place ? place->document : nullptr);
  showTitles();
  arrange();
}

void Frame::changeLanguage() {
  menu_.forget();
  toolbar_.forget();
  refresh();
  RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void Frame::arrange() {
  if (!isReady_ || IsIconic(window_)) return;
  RECT area = clientOf(window_);
  const int bar = isPartShown_[kToolBar] ? toolbar_.height() : 0,
            line = isPartShown_[kStatusBar] ? status_.height() : 0;
  ShowWindow(toolbar_.window(), bar ? SW_SHOWNA : SW_HIDE);
  ShowWindow(status_.window(), line ? SW_SHOWNA : SW_HIDE);
  move(toolbar_.window(), {area.left, area.top, area.right, area.top + bar});
  area.top += bar;
  area.bottom = std::max(area.bottom - line, area.top);
  status_.place({area.left, area.bottom, area.right, area.bottom + line});
  const RECT middle = panels_.place(area);
  move(tabs_.window(), middle);
  if (const DocumentPlace* const place = front()) move(place->place->window(), tabs_.pageArea());
}

void Frame::tabChosen(Tabs&, int index) {
  if (index < 0) return;
  turnTo(static_cast<std::size_t>(index));
  if (const DocumentPlace* const place = front()) place->place->focus();
}

void Frame::tabClosed(Tabs&, int) { closeActive(); }

bool Frame::mayClose() {
  if (!manager_.isLast(*this) || !documents()) return true;
  while (documents()->documentCount() != 0) {
    if (!documents()->closeDocument(documents()->documentAt(0))) return false;
  }
  return true;
}

// The system's shell is loaded when something is dropped first.
void Frame::dropFiles(HANDLE drop) {
  static const auto query = lateFunction<decltype(&DragQueryFileW)>(L"shell32.dll", "DragQueryFileW");
  static const auto finish = lateFunction<decltype(&DragFinish)>(L"shell32.dll", "DragFinish");
  if (!query || !finish) return;
  const auto files = static_cast<HDROP>(drop);
  const UINT count = query(files, 0xFFFFFFFF, nullptr, 0);
  std::vector<std::wstring> paths;
  for (UINT i = 0; i < count; ++i) {
    std::wstring path(query(files, i, nullptr, 0), L'\0');
    query(files, i, path.data(), static_cast<UINT>(path.size()) + 1);
    paths.push_back(std::move(path));
  }
  finish(files);
  for (const std::wstring& path : paths) openLocation(path);
}

LRESULT CALLBACK Frame::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    auto* const self = static_cast<Frame*>(reinterpret_cast<const CREATESTRUCTW*>(lparam)->lpCreateParams);
    self->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  auto* const self = reinterpret_cast<Frame*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  LRESULT result = 0;
  if (!self) return DefWindowProcW(window, message, wparam, lparam);
  if (message == WM_CREATE) return guarded(L"a frame's begin", [&] { return self->makeInside(); }) ? 0 : -1;
  const Ref<Frame> held = Ref<Frame>::share(self);  // what is called may close it
  const bool isDone = guarded(L"a frame", [&] { return self->handle(message, wparam, lparam, result); });
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    self->window_ = nullptr;
    guarded(L"a frame's end", [&] { self->manager_.forget(*self); });
  }
  return isDone ? result : DefWindowProcW(window, message, wparam, lparam);
}

bool Frame::handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
  switch (message) {
    case WM_SIZE:
      arrange();
      return true;
    case kFailed:
      closeFailed();
      return true;
    case WM_ACTIVATE:
      if (LOWORD(wparam) == WA_INACTIVE) {
        focus_ = GetFocus();
      } else {
        manager_.refreshActions();
      }
      return false;
    case WM_SETFOCUS:
      if (focus_ && IsChild(window_, focus_) && IsWindowVisible(focus_)) {
        SetFocus(focus_);
      } else if (const DocumentPlace* const place = front()) {
        place->place->focus();
      }
      return true;
    case WM_ENTERMENULOOP:
      menu_.begin();
      return false;
    case WM_INITMENUPOPUP:
      return !HIWORD(lparam) && menu_.opens(reinterpret_cast<HMENU>(wparam), words().c_str());
    case WM_MENUSELECT:
      if (HIWORD(wparam) == 0xFFFF) {
        status_.setText(0, L"");
      } else if (!(HIWORD(wparam) & (MF_POPUP | MF_SYSMENU))) {
        status_.setText(0, menu_.describe(LOWORD(wparam)).c_str());
      }
      return false;
    case WM_COMMAND:
      if (LOWORD(wparam) == StatusBar::kStop) return status_.stopPressed(), true;
      return menu_.choose(LOWORD(wparam)) || toolbar_.choose(LOWORD(wparam));
    case WM_NOTIFY:
      if (auto& notification = *reinterpret_cast<NMHDR*>(lparam); notification.code == TTN_GETDISPINFOW) {
        auto& tip = reinterpret_cast<NMTTDISPINFOW&>(notification);
        wcsncpy(tip.szText, toolbar_.tip(static_cast<WORD>(notification.idFrom)).c_str(), std::size(tip.szText) - 1);
        return true;
      }
      return false;
    case WM_SETCURSOR: {
      POINT at = {};
      GetCursorPos(&at);
      ScreenToClient(window_, &at);
      const LPCWSTR cursor = LOWORD(lparam) == HTCLIENT ? panels_.cursorAt(at) : nullptr;
      if (!cursor) return false;
      SetCursor(LoadCursorW(nullptr, cursor));
      result = TRUE;
      return true;
    }
    case WM_LBUTTONDOWN:
    case WM_MOUSEMOVE: {
      const POINT at = {static_cast<short>(LOWORD(lparam)), static_cast<short>(HIWORD(lparam))};
      if (message == WM_LBUTTONDOWN && panels_.beginDrag(at)) SetCapture(window_);
      if (message == WM_MOUSEMOVE && panels_.isDragging()) panels_.drag(at), arrange();
      return true;
    }
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
      if (panels_.isDragging()) {
        panels_.endDrag();
        panels_.keep();
        if (message == WM_LBUTTONUP) ReleaseCapture();
      }
      return true;
    case WM_DROPFILES:
      dropFiles(reinterpret_cast<HANDLE>(wparam));
      return true;
    case WM_DPICHANGED: {
      const RECT wanted = *reinterpret_cast<const RECT*>(lparam);
      adoptLook();
      SetWindowPos(window_, nullptr, wanted.left, wanted.top, widthOf(wanted), heightOf(wanted),
                   SWP_NOZORDER | SWP_NOACTIVATE);
      refresh();
      return true;
    }
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
      adoptLook();
      refresh();
      panels_.tellAll(message, wparam, lparam);
      for (const auto& one : views_) one->place->tellChildren(message, wparam, lparam);
      return false;
    case WM_QUERYENDSESSION:
      result = mayClose();
      return true;
    case WM_CLOSE:
      if (mayClose()) DestroyWindow(window_);
      return true;
    case WM_DESTROY:
      keepPlacement();
      isReady_ = false;
      panels_.close();
      views_.clear();
      return true;
    default:
      return false;
  }
}

}  // namespace corvix::gui
