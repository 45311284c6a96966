#include "plugins/inspector/Tab.h"

#include "tools/xmlbinc/Harmless.h"

#include <algorithm>

namespace corvix::inspector {

bool Tab::open(HWND frame, const Look& look) {
  page_ = makeChild(frame, windowClass(L"CorvixInspectorPage", &Tab::procedure), L"", WS_CLIPCHILDREN, 0,
                    WS_EX_CONTROLPARENT);
  if (!page_) return false;
  SetWindowLongPtrW(page_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  make();
  adopt(look);
  return true;
}

void Tab::adopt(const Look& look) {
  look_ = &look;
  for (HWND control = GetWindow(page_, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT))
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(look.font()), TRUE);
  if (list_.handle()) list_.adopt(look);
  adoptMore(look);
}

void Tab::place(const RECT& area) {
  area_ = area;
  MoveWindow(page_, area.left, area.top, area.right - area.left, area.bottom - area.top, TRUE);
  const int gap = look_->scaled(6), line = look_->lineHeight();
  RECT main = {0, 0, area.right - area.left, area.bottom - area.top};
  InflateRect(&main, -gap, -gap);
  if (!row_.empty()) main.bottom -= line + gap;
  int rest = main.right - main.left, left = main.left;
  const auto isShown = [](const InRow& one) { return (GetWindowLongW(one.control, GWL_STYLE) & WS_VISIBLE) != 0; };
  for (const InRow& one : row_) rest -= one.width && isShown(one) ? look_->scaled(one.width) + gap : 0;
  for (const InRow& one : row_) {
    if (!isShown(one)) continue;
    const int width = one.width ? look_->scaled(one.width) : std::max(rest, 0);
    // A list that drops down has the height of the whole.
    wchar_t windowClass[16];
    GetClassNameW(one.control, windowClass, 16);
    const int height = std::wstring_view(windowClass) == L"ComboBox" ? line * 8 : line;
    MoveWindow(one.control, left, main.bottom + gap, width, height, TRUE);
    left += width + gap;
  }
  placeMain(main);
}

void Tab::replace() { place(area_); }

void Tab::placeMain(RECT area) {
  MoveWindow(list_.handle(), area.left, area.top, area.right - area.left, area.bottom - area.top, TRUE);
}

void Tab::setVisible(bool visible) {
  if (visible) refresh();
  ShowWindow(page_, visible ? SW_SHOW : SW_HIDE);
}

void Tab::command(int, int) {}
void Tab::changed(const NMHDR&) {}

void Tab::copy() {
  if (GetFocus() == list_.handle()) {
    list_.copySelected();
  } else {
    SendMessageW(GetFocus(), WM_COPY, 0, 0);
  }
}

HWND Tab::addControl(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id) {
  const bool isFramed = std::wstring_view(windowClass) == L"EDIT";
  return makeChild(page_, windowClass, text, WS_VISIBLE | style, id, isFramed ? WS_EX_CLIENTEDGE : 0);
}

HWND Tab::addToRow(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, int width) {
  row_.push_back({addControl(windowClass, text, style, id), width});
  return row_.back().control;
}

void Tab::say(const std::wstring& text) {
  const HWND control = GetDlgItem(page_, kSaid);
  const std::wstring shown = xmlbinc::harmless(text, 500);
  if (textOf(control) != shown) SetWindowTextW(control, shown.c_str());
}

LRESULT CALLBACK Tab::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* const self = reinterpret_cast<Tab*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  const bool isDone = self && guarded(L"a window message", [&] { return self->handle(message, wparam, lparam); });
  return isDone ? 0 : DefWindowProcW(window, message, wparam, lparam);
}

bool Tab::handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      command(LOWORD(wparam), HIWORD(wparam));
      return true;
    case WM_NOTIFY:
      changed(*reinterpret_cast<const NMHDR*>(lparam));
      return false;
    case Wake::kMessage:
      if (IsWindowVisible(page_)) refresh();
      return true;
    default:
      return false;
  }
}

void Wake::ring() noexcept {
  if (const HWND page = page_) PostMessageW(page, kMessage, 0, 0);
}

}  // namespace corvix::inspector
