#include "plugins/gui/Tabs.h"

#include "plugins/windows/Translated.h"
#include "plugins/windows/Windows.h"
#include "tools/xmlbinc/Harmless.h"

#include <algorithm>

#include <commctrl.h>

namespace corvix::gui {

using namespace windows;

namespace {

constexpr WORD kClose = 1;
constexpr std::size_t kLongestTitle = 60;

std::wstring shownTitle(const std::wstring& title) { return withoutMnemonic(xmlbinc::harmless(title, kLongestTitle)); }

}  // namespace

bool Tabs::make(HWND parent, const wchar_t* whenEmpty) {
  whenEmpty_ = whenEmpty;
  window_ = makeChild(parent, windowClass(L"CorvixTabs", &Tabs::procedure), L"", WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0,
                      WS_EX_CONTROLPARENT);
  if (!window_) return false;
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  strip_ = makeChild(window_, WC_TABCONTROLW, L"", WS_CLIPSIBLINGS | WS_TABSTOP | TCS_FOCUSNEVER | TCS_TOOLTIPS);
  close_ = makeChild(window_, L"BUTTON", L"\xD7", WS_CLIPSIBLINGS | BS_PUSHBUTTON | BS_FLAT, kClose);
  return strip_ && close_;
}

void Tabs::adopt(const Look& look) {
  look_ = &look;
  setFont(strip_, look.font());
  setFont(close_, look.font());
  arrange();
}

void Tabs::show(const std::vector<std::wstring>& titles, int front) {
  const bool isOtherCount = titles.size() != titles_.size();
  for (; titles_.size() > titles.size(); titles_.pop_back())
    TabCtrl_DeleteItem(strip_, static_cast<int>(titles_.size()) - 1);
  for (std::size_t i = 0; i < titles.size(); ++i) {
    if (i < titles_.size() && titles_[i] == titles[i]) continue;
    std::wstring text = shownTitle(titles[i]);
    TCITEMW item = {};
    item.mask = TCIF_TEXT;
    item.pszText = text.data();
    if (i < titles_.size()) {
      TabCtrl_SetItem(strip_, static_cast<int>(i), &item);
      titles_[i] = titles[i];
    } else {
      TabCtrl_InsertItem(strip_, static_cast<int>(i), &item);
      titles_.push_back(titles[i]);
    }
  }
  if (TabCtrl_GetCurSel(strip_) != front) TabCtrl_SetCurSel(strip_, front);
  if (isOtherCount) {
    ShowWindow(strip_, titles_.empty() ? SW_HIDE : SW_SHOWNA);
    ShowWindow(close_, titles_.empty() ? SW_HIDE : SW_SHOWNA);
    InvalidateRect(window_, nullptr, TRUE);
  }
}

RECT Tabs::pageArea() const {
  RECT area = clientOf(window_);
  area.top += look_ ? look_->lineHeight() + look_->scaled(3) : 0;
  area.top = std::min(area.top, area.bottom);
  return area;
}

void Tabs::arrange() {
  if (!look_) return;
  const RECT area = clientOf(window_);
  const int top = static_cast<int>(pageArea().top), side = top - look_->scaled(4);
  MoveWindow(strip_, 0, 0, std::max(static_cast<int>(area.right) - side - 2, 0), top, TRUE);
  MoveWindow(close_, static_cast<int>(area.right) - side, look_->scaled(2), side, side, TRUE);
}

void Tabs::paintEmpty() {
  PAINTSTRUCT painting;
  const HDC device = BeginPaint(window_, &painting);
  if (titles_.empty() && look_) {
    RECT area = clientOf(window_);
    FillRect(device, &area, GetSysColorBrush(COLOR_APPWORKSPACE));
    const HGDIOBJ before = SelectObject(device, look_->font());
    SetBkMode(device, TRANSPARENT);
    SetTextColor(device, GetSysColor(COLOR_WINDOW));
    DrawTextW(device, translated(whenEmpty_), -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
    SelectObject(device, before);
  }
  EndPaint(window_, &painting);
}

LRESULT CALLBACK Tabs::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* const self = reinterpret_cast<Tabs*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  const bool isDone = self && guarded(L"tabs", [&] { return self->handle(message, wparam, lparam); });
  return isDone ? 0 : DefWindowProcW(window, message, wparam, lparam);
}

bool Tabs::handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      arrange();
      return false;
    case WM_PAINT:
      paintEmpty();
      return true;
    case WM_COMMAND:
      if (LOWORD(wparam) != kClose || titles_.empty()) return false;
      owner_.tabClosed(*this, TabCtrl_GetCurSel(strip_));
      return true;
    case WM_NOTIFY: {
      auto& notification = *reinterpret_cast<NMHDR*>(lparam);
      if (notification.code == TCN_SELCHANGE) {
        owner_.tabChosen(*this, TabCtrl_GetCurSel(strip_));
      } else if (notification.code == TTN_GETDISPINFOW) {
        const std::size_t index = notification.idFrom;
        if (index < titles_.size()) reinterpret_cast<NMTTDISPINFOW&>(notification).lpszText = titles_[index].data();
      }
      return false;
    }
    default:
      return false;
  }
}

}  // namespace corvix::gui
