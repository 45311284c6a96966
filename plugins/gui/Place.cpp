#include "plugins/gui/Place.h"

#include "plugins/windows/Translated.h"

namespace corvix::gui {

using namespace windows;

namespace {

// A window is watched before its first message. Where its own procedure has put another in that place meanwhile, it is
// watched once more, around that.
constexpr const wchar_t* kWatched[] = {L"CorvixWatched", L"CorvixWatchedOnceMore"};

// What a watched window had before. It goes with the window.
struct Watch {
  WNDPROC before;
  HWND place;
};

Watch* watchOf(HWND window, const wchar_t* name) { return static_cast<Watch*>(GetPropW(window, name)); }

WNDPROC procedureOf(HWND window) { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)); }

// Sees each window before it is made, as long as there is a place.
HHOOK hook = nullptr;
int places = 0;

// The system hands out numbers of its own for procedures of the other kind of text; these alone are not to be called as
// they are. All others are: the guard must not be beyond the system's own frames.
LRESULT callBefore(WNDPROC before, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const bool isNumber = (reinterpret_cast<std::uintptr_t>(before) >> 16) == 0xFFFF;
  return isNumber ? CallWindowProcW(before, window, message, wparam, lparam) : before(window, message, wparam, lparam);
}

}  // namespace

Place::Place(IPluginInterface& entry, IPlaceOwner& owner)
    : entry_(Ref<IPluginInterface>::share(&entry)), owner_(owner) {
  if (places++ == 0) hook = SetWindowsHookExW(WH_CBT, &Place::beforeMade, nullptr, GetCurrentThreadId());
}

bool Place::attach(IFrameWindow& frame, HWND parent) {
  window_ = makeChild(parent, windowClass(L"CorvixPlace", &Place::procedure), L"", WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0,
                      WS_EX_CONTROLPARENT);
  if (!window_) return false;
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  isAttached_ = ask([&] { return view_->attach(&frame, window_); });
  if (!isAttached_ || hasFailed_) return false;
  EnumChildWindows(window_, &Place::watchEach, reinterpret_cast<LPARAM>(this));
  return true;
}

Place::~Place() {
  if (isAttached_) callGuarded(code_, entry_->name(), [&] { view_->detach(); });
  if (window_) DestroyWindow(window_);
  callGuarded(code_, entry_->name(), [&] { object_.reset(); });
  if (--places == 0) UnhookWindowsHookEx(hook);
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

// Nothing may be thrown through the system, which is between the making of a window and its first messages.
LRESULT CALLBACK Place::beforeMade(int code, WPARAM wparam, LPARAM lparam) {
  if (code == HCBT_CREATEWND) {
    const CREATESTRUCTW& made = *reinterpret_cast<const CBT_CREATEWNDW*>(lparam)->lpcs;
    if (Place* const place = made.style & WS_CHILD ? placeOf(made.hwndParent) : nullptr)
      guarded(L"a window of a view", [&] { place->watch(reinterpret_cast<HWND>(wparam)); });
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

// That the window, or one around it, is of; null when there is none.
Place* Place::placeOf(HWND window) {
  if (const Watch* const watch = watchOf(window, kWatched[0])) window = watch->place;
  return procedureOf(window) == &Place::procedure ? reinterpret_cast<Place*>(GetWindowLongPtrW(window, GWLP_USERDATA))
                                                  : nullptr;
}

void Place::watch(HWND window) {
  constexpr WNDPROC kProcedures[] = {&Place::watched<0>, &Place::watched<1>};
  if (GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId()) return;
  for (const int depth : {0, 1}) {
    if (procedureOf(window) == kProcedures[depth]) return;
    if (watchOf(window, kWatched[depth])) continue;
    auto watch = std::make_unique<Watch>(Watch{procedureOf(window), window_});
    if (!SetPropW(window, kWatched[depth], watch.get())) return;
    static_cast<void>(watch.release());  // the window's property owns it
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(kProcedures[depth]));
    return;
  }
}

template <int depth>
LRESULT CALLBACK Place::watched(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  Watch* const watch = watchOf(window, kWatched[depth]);
  if (!watch) return DefWindowProcW(window, message, wparam, lparam);
  const WNDPROC before = watch->before;
  auto* const place = reinterpret_cast<Place*>(GetWindowLongPtrW(watch->place, GWLP_USERDATA));
  const bool isLast = message == WM_NCDESTROY;
  if (isLast) {
    RemovePropW(window, kWatched[depth]);
    if (procedureOf(window) == &Place::watched<depth>)
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(before));
    delete watch;
  }
  const LRESULT result = pass(place, before, window, message, wparam, lparam);
  if (isLast && depth) delete static_cast<Watch*>(RemovePropW(window, kWatched[0]));  // who was left out
  return result;
}

LRESULT Place::pass(Place* place, WNDPROC before, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  // After a failure the view is told of its windows' end alone, so that it can forget them.
  const bool isEnd = message == WM_NCDESTROY || message == WM_DESTROY;
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
