#include "plugins/dialogs/ModalDialog.h"

#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"

#include <algorithm>

namespace corvix::dialogs {

using namespace windows;

namespace {

constexpr int kMargin = 12, kButton = 88;

// The system's form of an empty dialog: no menu, its own class, no title, no controls.
struct Template {
  DLGTEMPLATE head;
  WORD menu, windowClass, title;
};

// The system's way of giving dialogs another resolution knows nothing of controls that came by code.
void letNobodyElseScale(HWND dialog) {
  constexpr DWORD kAll = 7;
  static const auto set = lateFunction<BOOL(WINAPI*)(HWND, DWORD, DWORD)>(L"user32.dll", "SetDialogDpiChangeBehavior");
  if (set) set(dialog, kAll, kAll);
}

BOOL CALLBACK setFontOfEach(HWND control, LPARAM font) {
  setFont(control, reinterpret_cast<HFONT>(font));
  return TRUE;
}

}  // namespace

HWND ownerOfDialogs() {
  if (const HWND active = GetActiveWindow()) return active;
  IGUIManager* const manager = IShell::getInstance()->guiManager();
  IFrameWindow* const frame = manager ? manager->mainWindow() : nullptr;
  return frame ? static_cast<HWND>(frame->windowHandle()) : nullptr;
}

int ModalDialog::run(const std::wstring& title, int width, int height, bool isSizeable) {
  title_ = title;
  width_ = width;
  height_ = height;
  alignas(4) Template form = {};
  form.head.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | (isSizeable ? DWORD{WS_THICKFRAME} : 0u);
  form.head.dwExtendedStyle = WS_EX_CONTROLPARENT;
  return static_cast<int>(DialogBoxIndirectParamW(ownModule(), &form.head, ownerOfDialogs(), &ModalDialog::procedure,
                                                  reinterpret_cast<LPARAM>(this)));
}

bool ModalDialog::command(int id, int) {
  if (id != IDOK && id != IDCANCEL) return false;
  end(id);
  return true;
}

HWND ModalDialog::add(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, DWORD exStyle) {
  const HWND control = makeChild(window_, windowClass, text, WS_VISIBLE | style, id, exStyle);
  setFont(control, look_->font());
  return control;
}

void ModalDialog::addButton(const wchar_t* text, int id) {
  const DWORD kind = buttons_.empty() ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
  buttons_.push_back(add(L"BUTTON", translated(text), WS_TABSTOP | kind, id));
}

bool ModalDialog::begin(HWND window) {
  window_ = window;
  look_.emplace(window);
  letNobodyElseScale(window);
  SetWindowTextW(window, title_.c_str());
  setFont(window, look_->font());
  make();
  measure();
  RECT over = {};
  const HWND owner = GetWindow(window, GW_OWNER);
  if (!owner || !GetWindowRect(owner, &over)) SystemParametersInfoW(SPI_GETWORKAREA, 0, &over, 0);
  SetWindowPos(window, nullptr, std::max((over.left + over.right - leastWidth_) / 2, 0L),
               std::max((over.top + over.bottom - leastHeight_) / 2, 0L), leastWidth_, leastHeight_, SWP_NOZORDER);
  arrange();
  const HWND first = GetNextDlgTabItem(window, nullptr, FALSE);
  if (first) SetFocus(first);
  return false;  // the focus is set
}

void ModalDialog::measure() {
  RECT area = {0, 0, look_->scaled(width_), look_->scaled(height_)};
  AdjustWindowRectEx(&area, static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongW(window_, GWL_EXSTYLE)));
  leastWidth_ = widthOf(area);
  leastHeight_ = heightOf(area);
}

void ModalDialog::changeResolution(const RECT& wanted) {
  look_.emplace(window_);
  const auto font = reinterpret_cast<LPARAM>(look_->font());
  setFont(window_, look_->font());
  EnumChildWindows(window_, &setFontOfEach, font);
  adopt();
  measure();
  SetWindowPos(window_, nullptr, wanted.left, wanted.top, std::max(widthOf(wanted), leastWidth_),
               std::max(heightOf(wanted), leastHeight_), SWP_NOZORDER | SWP_NOACTIVATE);
  arrange();
}

void ModalDialog::arrange() {
  RECT area = clientOf(window_);
  const int margin = look_->scaled(kMargin), line = look_->lineHeight(), width = look_->scaled(kButton);
  InflateRect(&area, -margin, -margin);
  int left = area.right;
  for (auto at = buttons_.rbegin(); at != buttons_.rend(); ++at) {
    left -= width;
    MoveWindow(*at, left, area.bottom - line, width, line, TRUE);
    left -= margin / 2;
  }
  if (!buttons_.empty()) area.bottom -= line + margin;
  place(area);
}

INT_PTR CALLBACK ModalDialog::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, static_cast<LONG_PTR>(lparam));
    return guarded(L"a dialog's begin", [&] { return reinterpret_cast<ModalDialog*>(lparam)->begin(window); });
  }
  auto* const self = reinterpret_cast<ModalDialog*>(GetWindowLongPtrW(window, DWLP_USER));
  if (!self || !self->look_) return FALSE;
  return guarded(L"a dialog", [&]() -> INT_PTR {
    switch (message) {
      case WM_SIZE:
        self->arrange();
        return TRUE;
      case WM_DPICHANGED:
        self->changeResolution(*reinterpret_cast<const RECT*>(lparam));
        return TRUE;
      case WM_GETMINMAXINFO:
        reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {self->leastWidth_, self->leastHeight_};
        return TRUE;
      case WM_COMMAND:
        return self->command(LOWORD(wparam), HIWORD(wparam));
      case WM_NOTIFY:
        return self->notified(*reinterpret_cast<const NMHDR*>(lparam));
      default:
        return FALSE;
    }
  });
}

}  // namespace corvix::dialogs
