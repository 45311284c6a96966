// Tabs: a window with a strip of tabs, a button that closes the one in front, and room for its page below. Pages are
// windows of others inside it. [shell thread]
#pragma once

#include "plugins/windows/Look.h"

#include <string>
#include <vector>

namespace corvix::gui {

class Tabs;

class ITabsOwner {
 public:
  virtual void tabChosen(Tabs& tabs, int index) = 0;
  virtual void tabClosed(Tabs& tabs, int index) = 0;

 protected:
  ~ITabsOwner() = default;
};

class Tabs {
 public:
  explicit Tabs(ITabsOwner& owner) noexcept : owner_(owner) {}
  Tabs(const Tabs&) = delete;
  Tabs& operator=(const Tabs&) = delete;

  // `whenEmpty` stands in the middle when there is no tab.
  bool make(HWND parent, const wchar_t* whenEmpty);
  HWND window() const noexcept { return window_; }
  void adopt(const windows::Look& look);

  // Tabs of these titles, that of the index in front; -1: none.
  void show(const std::vector<std::wstring>& titles, int front);

  // Where pages lie, in the window.
  RECT pageArea() const;

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  bool handle(UINT message, WPARAM wparam, LPARAM lparam);
  void arrange();
  void paintEmpty();

  ITabsOwner& owner_;
  HWND window_ = nullptr, strip_ = nullptr, close_ = nullptr;
  const windows::Look* look_ = nullptr;
  std::wstring whenEmpty_;
  std::vector<std::wstring> titles_;
};

}  // namespace corvix::gui
