// Place: a window with one view of a plug-in's in it, at arm's length. Every call of the view, and every message of its
// windows, goes through a guard: what throws or crashes there ends at that call, and the view is closed with a report;
// its document, and all other views, go on. [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "plugins/windows/Translated.h"
#include "plugins/windows/Windows.h"
#include "shell/PluginManager.h"
#include "shell/guard/ForeignGuard.h"
#include "shell/gui/View.h"

#include <memory>

namespace corvix {

class IFrameWindow;

namespace gui {

// Told when a view has failed; it may be in the middle of a message still.
class IPlaceOwner {
 public:
  virtual void placeFailed() = 0;

 protected:
  ~IPlaceOwner() = default;
};

class Place {
 public:
  // Of an interface that is declared; empty when no view can be made, or it refuses in `prepare`. `reason` then says
  // why.
  template <class View, class Prepare>
  static std::unique_ptr<Place> make(IPluginInterface& entry, IPlaceOwner& owner, IFrameWindow& frame, HWND parent,
                                     Prepare prepare, std::wstring& reason);
  ~Place();
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  HWND window() const noexcept { return window_; }
  IView* view() const noexcept { return view_; }
  IPluginModule& module() const noexcept { return *entry_->module(); }
  const wchar_t* name() const noexcept { return entry_->name(); }
  bool hasFailed() const noexcept { return hasFailed_; }
  bool hasFocus() const { return IsChild(window_, GetFocus()) != FALSE; }
  void focus() const;

  // Why it failed: for the user.
  std::wstring reason() const;

  // What the view answers, or nothing, and it has failed.
  template <class Call>
  auto ask(Call call) noexcept -> decltype(call()) {
    using Result = decltype(call());
    if constexpr (std::is_void_v<Result>) {
      guard([&] { call(); });
    } else {
      Result result = Result();
      guard([&] { result = call(); });
      return result;
    }
  }

  void tellChildren(UINT message, WPARAM wparam, LPARAM lparam) const;

 private:
  Place(IPluginInterface& entry, IPlaceOwner& owner) : entry_(Ref<IPluginInterface>::share(&entry)), owner_(owner) {}

  template <class Call>
  bool guard(Call call) noexcept {
    if (hasFailed_) return false;
    const std::weak_ptr<bool> alive = alive_;  // what is called may close the view
    WideString reason;
    const bool isDone = callGuarded(code_, entry_->name(), call, &reason);
    if (!isDone && !alive.expired()) fail(std::move(reason));
    return isDone;
  }
  void fail(WideString reason) noexcept;
  bool attach(IFrameWindow& frame, HWND parent);
  void watch(HWND window);
  static BOOL CALLBACK watchEach(HWND window, LPARAM place);
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK watched(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  Ref<IPluginInterface> entry_;
  IPlaceOwner& owner_;
  Ref<IBSmartObject> object_;
  IView* view_ = nullptr;
  const void* code_ = nullptr;
  HWND window_ = nullptr;
  WideString reason_;
  bool hasFailed_ = false;
  bool isAttached_ = false;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

template <class View, class Prepare>
std::unique_ptr<Place> Place::make(IPluginInterface& entry, IPlaceOwner& owner, IFrameWindow& frame, HWND parent,
                                   Prepare prepare, std::wstring& reason) {
  std::unique_ptr<Place> place(new Place(entry, owner));
  place->object_ = Ref<IBSmartObject>::adopt(entry.createObject());
  if (!place->object_) {
    const auto* const report = query<ICreationReport>(&entry);
    reason = report ? report->reason() : L"";
    return nullptr;
  }
  place->code_ = codeOf(place->object_.get());
  View* view = nullptr;
  place->guard([&] { view = query<View>(place->object_.get()); });
  place->view_ = view;
  if (!view) reason = windows::sentence(L"it is no %1", {View::classNameW()});
  const bool isReady = view && place->ask([&] { return prepare(*view); }) && place->attach(frame, parent);
  if (isReady) return place;
  if (place->hasFailed_) reason = place->reason_;
  return nullptr;
}

}  // namespace gui

}  // namespace corvix
