// One tab of the inspector: a page with a list, and a row of controls under it. A tab of its own is a class with `make`
// and `refresh`, and a row in the table in Frame.cpp. [shell thread]
#pragma once

#include "plugins/windows/List.h"
#include "plugins/windows/Windows.h"
#include "shell/Plugin.h"

#include <atomic>
#include <memory>

namespace corvix::inspector {

using namespace windows;

class Tab {
 public:
  virtual ~Tab() = default;
  Tab(const Tab&) = delete;
  Tab& operator=(const Tab&) = delete;

  // A hidden page in the frame, which owns it.
  bool open(HWND frame, const Look& look);
  void adopt(const Look& look);
  void place(const RECT& area);
  void setVisible(bool visible);
  void focus() const { SetFocus(list_.handle()); }
  HWND page() const noexcept { return page_; }

  // Told while it is visible: that things may have changed, and what the user does with the controls.
  virtual void refresh() = 0;
  virtual void command(int id, int code);
  virtual void changed(const NMHDR& notification);
  virtual void copy();  // what has the focus, to the clipboard

 protected:
  Tab() = default;

  // Once, when the page is there.
  virtual void make() = 0;
  virtual void placeMain(RECT area);  // what is above the row of controls
  virtual void adoptMore(const Look&) {}

  HWND addControl(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id);
  // Under the list, from left to right; `width` is in 1/96 inch, 0 for what takes the rest.
  HWND addToRow(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, int width);
  HWND addButton(const wchar_t* text, int id, int width) {
    return addToRow(L"BUTTON", text, WS_TABSTOP | BS_PUSHBUTTON, id, width);
  }
  void replace();                      // after a control of the row was shown or hidden
  void say(const std::wstring& text);  // in the row's rest

  static constexpr int kList = 100;
  static constexpr int kSaid = 101;
  List list_;

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  bool handle(UINT message, WPARAM wparam, LPARAM lparam);

  struct InRow {
    HWND control;
    int width;
  };
  HWND page_ = nullptr;
  const Look* look_ = nullptr;
  RECT area_ = {};
  std::vector<InRow> row_;
};

// Runs what calls into other modules; false when they closed the inspector meanwhile: then nothing of the tab is there.
template <class Call>
bool staysOpen(HWND page, Call call) {
  call();
  return IsWindow(page) != FALSE;
}

// Has the page of a tab refreshed soon, however often it is asked. It outlives the tab: a listener on another thread
// may be on its way. [any thread]
class Wake {
 public:
  void aimAt(HWND page) noexcept { page_ = page; }
  void ring() noexcept;
  static constexpr UINT kMessage = WM_APP;

 private:
  std::atomic<HWND> page_{nullptr};
};

std::unique_ptr<Tab> makeModulesTab();
std::unique_ptr<Tab> makeInterfacesTab();
std::unique_ptr<Tab> makeSettingsTab();
std::unique_ptr<Tab> makeLogTab();
std::unique_ptr<Tab> makeEventsTab();
std::unique_ptr<Tab> makeMemoryTab();

}  // namespace corvix::inspector
