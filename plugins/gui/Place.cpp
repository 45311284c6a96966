#include "plugins/gui/Place.h"

#include "plugins/windows/Translated.h"

namespace corvix::gui {

using namespace windows;

namespace {

constexpr wchar_t kWatched[] = L"CorvixWatched";

// What a watched window had before. It goes with the window.
struct Watch {
  WNDPROC before;
  HWND place;
};

// The system hands out numbers of its own for procedures of the other kind of text; these alone are not to be called as
// they are. All others are: the guard must not be beyond the system's own frames.
LRESULT callBefore(WNDPROC before, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const bool isNumber = (reinterpret_cast<std::uintptr_t>(before) >> 16) == 0xFFFF;
  return isNumber ? CallWindowProcW(before, window, message, wparam, lparam) : before(window, message, wparam, lparam);
}

}  // namespace

bool Place::attach(IFrameWindow& frame, HWND parent) {
  window_ = makeChild(parent, windowClass(L"CorvixPlace", &Place::procedure), L"", WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0,
                      WS_EX_CONTROLPARENT);
  if (!window_) return false;
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  isAttached_ = ask([&] { return view_->attach(&frame, window_); });
  if (!isAttached_) return false;
  EnumChildWindows(window_, &Place::watchEach, reinterpret_cast<LPARAM>(this));
  return true;
}

Place::~Place() {
  if (isAttached_) callGuarded(code_, entry_->name(), [&] { view_->detach(); });
  if (window_) DestroyWindow(window_);
  callGuarded(code_, entry_->name(), [&] { object_.reset(); });
}

void Place::fail(WideString reason) noexcept {
  hasFailed_ = true;
  reason_ = std::move(reason);
  owner_.placeFailed();
}

std::wstring Place::reason() const { return sentence(L"%1 in %2", {reason_, fileName(module().path())}); }

void Place::focus() const {
  const HWND child = GetWindow(window_, GW_CHILD);
  SetFocus(child ? child : window_);
}

void Place::tellChildren(UINT message, WPARAM wparam, LPARAM lparam) const {
  for (HWND child = GetWindow(window_, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    SendMessageW(child, message, wparam, lparam);
}

BOOL CALLBACK Place::watchEach(HWND window, LPARAM place) {
  reinterpret_cast<Place*>(place)->watch(window);
  return TRUE;
}

void Place::watch(HWND window) {
  if (GetPropW(window, kWatched) || GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId()) return;
  auto watch = std::make_unique<Watch>();
  watch->place = window_;
  watch->before = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
  if (!SetPropW(window, kWatched, watch.get())) return;
  static_cast<void>(watch.release());  // the window's property owns it
  SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Place::watched));
}

LRESULT CALLBACK Place::watched(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* const watch = static_cast<Watch*>(GetPropW(window, kWatched));
  if (!watch) return DefWindowProcW(window, message, wparam, lparam);
  const WNDPROC before = watch->before;
  auto* const place = reinterpret_cast<Place*>(GetWindowLongPtrW(watch->place, GWLP_USERDATA));
  const bool isLast = message == WM_NCDESTROY;
  if (isLast) {
    RemovePropW(window, kWatched);
    if (reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)) == &Place::watched)
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(before));
    delete watch;
  }
  // After a failure the view is told of its windows' end alone, so that it can forget them.
  const bool isEnd = isLast || message == WM_DESTROY;
  if (!place || (place->hasFailed_ && !isEnd)) {
    return place ? DefWindowProcW(window, message, wparam, lparam)
                 : callBefore(before, window, message, wparam, lparam);
  }
  LRESULT result = 0;
  const auto call = [&] { result = callBefore(before, window, message, wparam, lparam); };
  if (place->hasFailed_ || isEnd) {
    const void* const code = place->code_;
    callGuarded(code, L"the end of a window", call);
  } else if (!place->guard(call)) {
    result = DefWindowProcW(window, message, wparam, lparam);
  }
  return result;
}

LRESULT CALLBACK Place::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* const self = reinterpret_cast<Place*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self) {
    if (message == WM_SIZE) {
      if (const HWND child = GetWindow(window, GW_CHILD)) move(child, clientOf(window));
    } else if (message == WM_SETFOCUS) {
      self->focus();
      return 0;
    } else if (message == WM_PARENTNOTIFY && LOWORD(wparam) == WM_CREATE) {
      guarded(L"a window of a view", [&] { self->watch(reinterpret_cast<HWND>(lparam)); });
    }
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace corvix::gui
