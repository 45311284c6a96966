#include "plugins/inspector/Frame.h"

#include <commctrl.h>

namespace corvix::inspector {

namespace {

struct TabRow {
  const wchar_t* name;
  std::unique_ptr<Tab> (*make)();
};

constexpr TabRow kTabs[] = {
    {L"Modules", makeModulesTab}, {L"Interfaces", makeInterfacesTab}, {L"Settings", makeSettingsTab},
    {L"Log", makeLogTab},         {L"Events", makeEventsTab},         {L"Memory", makeMemoryTab},
};

constexpr UINT kTimer = 1;
constexpr UINT kRefreshMs = 500;
constexpr int kWidth = 900, kHeight = 480;  // in 1/96 inch

enum Command : WORD { kNext = 1000, kPrevious, kRefresh, kCopy, kFirstTab };

std::vector<ACCEL> keys() {
  std::vector<ACCEL> table = {{FVIRTKEY | FCONTROL, VK_TAB, kNext},
                              {FVIRTKEY | FCONTROL | FSHIFT, VK_TAB, kPrevious},
                              {FVIRTKEY, VK_F5, kRefresh},
                              {FVIRTKEY | FCONTROL, 'C', kCopy}};
  for (std::size_t i = 0; i < std::size(kTabs); ++i)
    table.push_back({FVIRTKEY | FCONTROL, static_cast<WORD>('1' + i), static_cast<WORD>(kFirstTab + i)});
  return table;
}

std::unique_ptr<Frame> frame;

// Closes the window when the shell ends. It stands as long as the module: whoever tells it may still be in it.
class ShellEnd : public IShellListener {
  CORVIX_IDENTITY(ShellEnd, 0x41D47A8F, 0x45919F00, 0xCC09BC0A, 0x5DA620FB, IShellListener)

 public:
  int onInitialize(IShell&) override { return notify::kGoOn; }
  int onUnInitialize(IShell&) override {
    Frame::close();
    return notify::kGoOn;
  }
} shellEnd;

BNotifySender& shellEnds() { return IShell::getInstance()->sender(ShellNotification::UnInitialize); }

}  // namespace

Frame* Frame::current() noexcept { return frame.get(); }

void Frame::close() {
  if (frame) DestroyWindow(frame->window_);
}

Frame* Frame::open() {
  if (!IShell::getInstance()) return nullptr;
  if (!frame) {
    const INITCOMMONCONTROLSEX controls = {sizeof controls,
                                           ICC_TAB_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSW frames = {};
    frames.lpfnWndProc = &Frame::procedure;
    frames.hInstance = ownModule();
    frames.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    frames.hIcon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION));
    frames.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    frames.lpszClassName = L"CorvixInspector";
    RegisterClassW(&frames);
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    frame.reset(new Frame);
    Look& look = *frame->look_;
    const std::wstring title = L"Inspector: " + fileName(program);
    CreateWindowExW(WS_EX_CONTROLPARENT, frames.lpszClassName, title.c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                    CW_USEDEFAULT, CW_USEDEFAULT, look.scaled(kWidth), look.scaled(kHeight), nullptr, nullptr,
                    frames.hInstance, nullptr);
    if (!frame || !frame->window_) {
      frame.reset();
      return nullptr;
    }
    ShowWindow(frame->window_, SW_SHOWNORMAL);
  }
  if (IsIconic(frame->window_)) ShowWindow(frame->window_, SW_RESTORE);
  SetForegroundWindow(frame->window_);
  return frame.get();
}

Frame::~Frame() {
  if (hook_) UnhookWindowsHookEx(hook_);
  if (keys_) DestroyAcceleratorTable(keys_);
  if (IShell* const shell = IShell::getInstance())
    shell->sender(ShellNotification::UnInitialize).removeListener(&shellEnd);
}

void Frame::make() {
  strip_ = CreateWindowExW(0, WC_TABCONTROLW, L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, 0, 0, 0, 0,
                           window_, nullptr, nullptr, nullptr);
  look_ = std::make_unique<Look>(window_);
  for (const TabRow& row : kTabs) {
    std::wstring name = row.name;
    TCITEMW item = {};
    item.mask = TCIF_TEXT;
    item.pszText = name.data();
    TabCtrl_InsertItem(strip_, static_cast<int>(tabs_.size()), &item);
    tabs_.push_back(row.make());
    if (!tabs_.back()->open(window_, *look_)) throw std::bad_alloc();
  }
  SendMessageW(strip_, WM_SETFONT, reinterpret_cast<WPARAM>(look_->font()), TRUE);
  std::vector<ACCEL> table = keys();
  keys_ = CreateAcceleratorTableW(table.data(), static_cast<int>(table.size()));
  // Every message loop of the program gives us our keys, whatever it knows of dialogs.
  hook_ = SetWindowsHookExW(WH_GETMESSAGE, &Frame::takeKeys, nullptr, GetCurrentThreadId());
  if (!keys_ || !hook_) throw std::bad_alloc();
  shellEnds().addListener(&shellEnd);
  SetTimer(window_, kTimer, kRefreshMs, nullptr);
  place();
  turnTo(0);
}

LRESULT CALLBACK Frame::takeKeys(int code, WPARAM wparam, LPARAM lparam) {
  auto& message = *reinterpret_cast<MSG*>(lparam);
  const bool isKey =
      code >= 0 && wparam == PM_REMOVE && message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
  if (isKey && frame && (message.hwnd == frame->window_ || IsChild(frame->window_, message.hwnd))) {
    const HWND window = frame->window_;  // either of these may close it
    if (TranslateAcceleratorW(window, frame->keys_, &message) || IsDialogMessageW(window, &message))
      message.message = WM_NULL;
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

LRESULT CALLBACK Frame::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE && frame) frame->window_ = window;
  if (message == WM_NCDESTROY) {
    guarded(L"the window's end", [] { frame.reset(); });
    return 0;
  }
  if (message == WM_CREATE) {
    const bool isMade = frame && guarded(L"the window's begin", [] {
                          frame->make();
                          return true;
                        });
    return isMade ? 0 : -1;
  }
  const bool isDone =
      frame && frame->hook_ && guarded(L"a window message", [&] { return frame->handle(message, wparam, lparam); });
  return isDone ? 0 : DefWindowProcW(window, message, wparam, lparam);
}

// Whether the message is dealt with. Nothing is touched after what may close the window.
bool Frame::handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (wparam != SIZE_MINIMIZED) place();
      return true;
    case WM_TIMER:
      if (wparam == kTimer && !IsIconic(window_)) visibleTab().refresh();
      return true;
    case WM_NOTIFY:
      if (reinterpret_cast<const NMHDR*>(lparam)->code == TCN_SELCHANGE)
        turnTo(static_cast<std::size_t>(TabCtrl_GetCurSel(strip_)));
      return false;
    case WM_ACTIVATE:
      if (LOWORD(wparam) == WA_INACTIVE) focus_ = GetFocus();
      return false;
    case WM_SETFOCUS:
      SetFocus(focus_ && IsWindowVisible(focus_) ? focus_ : strip_);
      return true;
    case WM_DPICHANGED: {
      const RECT& wanted = *reinterpret_cast<const RECT*>(lparam);
      adoptLook();
      SetWindowPos(window_, nullptr, wanted.left, wanted.top, wanted.right - wanted.left, wanted.bottom - wanted.top,
                   SWP_NOZORDER | SWP_NOACTIVATE);
      return true;
    }
    case WM_SETTINGCHANGE:
      adoptLook();
      place();
      return false;
    case WM_COMMAND:
      command(LOWORD(wparam), HIWORD(wparam));
      return true;
    case WM_CLOSE:
      DestroyWindow(window_);
      return true;
    default:
      return false;
  }
}

void Frame::command(WORD id, WORD code) {
  const std::size_t count = tabs_.size();
  if (id == IDCANCEL) {
    DestroyWindow(window_);
  } else if (id == kNext || id == kPrevious) {
    turnTo((visible_ + (id == kNext ? 1 : count - 1)) % count);
  } else if (id >= kFirstTab && id < kFirstTab + count) {
    turnTo(id - std::size_t{kFirstTab});
  } else if (id == kRefresh) {
    visibleTab().refresh();
  } else if (id == kCopy) {
    visibleTab().copy();
  } else {
    visibleTab().command(id, code);  // "OK" of the return key
  }
}

void Frame::place() {
  RECT area;
  GetClientRect(window_, &area);
  const int margin = look_->scaled(8);
  InflateRect(&area, -margin, -margin);
  SetWindowPos(strip_, HWND_BOTTOM, area.left, area.top, area.right - area.left, area.bottom - area.top, 0);
  TabCtrl_AdjustRect(strip_, FALSE, &area);
  for (const auto& tab : tabs_) tab->place(area);
}

void Frame::adoptLook() {
  auto look = std::make_unique<Look>(window_);
  SendMessageW(strip_, WM_SETFONT, reinterpret_cast<WPARAM>(look->font()), TRUE);
  for (const auto& tab : tabs_) tab->adopt(*look);
  look_ = std::move(look);
}

void Frame::turnTo(std::size_t index) {
  // The focus stays on the tabs when it is there, else it is in the new page.
  const bool focusIsInside = IsChild(window_, GetFocus()) && GetFocus() != strip_;
  for (std::size_t i = 0; i < tabs_.size(); ++i) tabs_[i]->setVisible(i == index);
  visible_ = index;
  TabCtrl_SetCurSel(strip_, static_cast<int>(index));
  if (focusIsInside) SetFocus(GetNextDlgTabItem(tabs_[index]->page(), nullptr, FALSE));
}

bool Frame::showTab(std::wstring_view name) {
  for (std::size_t i = 0; i < std::size(kTabs); ++i) {
    if (kTabs[i].name != name) continue;
    turnTo(i);
    tabs_[i]->focus();
    return true;
  }
  return false;
}

}  // namespace corvix::inspector
