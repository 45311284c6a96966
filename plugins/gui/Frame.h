// Frame: a window with menus, a toolbar, documents in tabs, panels on its sides and a status bar. [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "plugins/gui/MainMenu.h"
#include "plugins/gui/Panels.h"
#include "plugins/gui/StatusBar.h"
#include "plugins/gui/ToolBar.h"
#include "shell/gui/FrameWindow.h"

#include <set>

namespace corvix {

class IActionTarget;

namespace gui {

class Manager;

class Frame final : public BSmartObject, public IFrameWindow, private IPlaceOwner, private ITabsOwner {
  CORVIX_IDENTITY(Frame, 0x49BB3EE8, 0x4783D0BB, 0x15F5D9D5, 0xB9658C97, BSmartObject, IFrameWindow)

 public:
  Frame(Manager& manager, const wchar_t* name);
  ~Frame() override;

  // False when no window can be made.
  bool make();
  HWND window() const noexcept { return window_; }
  const std::wstring& name() const noexcept { return name_; }

  void* windowHandle() const noexcept override { return window_; }
  void show(bool visible) override;
  IView* activeView() const noexcept override;
  bool setActiveView(IView* view) override;
  i32 viewCount() const noexcept override { return static_cast<i32>(views_.size()); }
  IView* viewAt(i32 index) const noexcept override;
  IView* openView(IDocument* document) override;
  bool closeView(IView* view) override;
  bool showPanel(const wchar_t* name, bool visible) override;
  bool isPanelShown(const wchar_t* name) const noexcept override { return panels_.isShown(name); }

  // Of the manager: a message of the loop on its way to this frame; true when it was a key of ours.
  bool takeKey(const MSG& message);
  void refresh();         // brings all up to date
  void changeLanguage();  // what is shown has other texts now
  void closeViewsOf(IDocument* document);
  StatusBar& statusBar() noexcept { return status_; }

  // What the built-in actions do.
  void closeActive();
  void turnToNext(bool backwards);
  void focusNext(bool backwards);  // document, then panel by panel
  enum Part { kToolBar, kStatusBar };
  bool isShown(Part part) const noexcept { return isPartShown_[part]; }
  void toggle(Part part);
  std::wstring words();

  // Who is asked first, in this order: what has the focus, the view in front.
  template <class Visit>
  int route(Visit visit);

 private:
  struct DocumentPlace {
    IDocument* document;
    std::unique_ptr<Place> place;
  };

  void placeFailed() override;
  void tabChosen(Tabs& tabs, int index) override;
  void tabClosed(Tabs& tabs, int index) override;
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
  bool makeInside();
  void arrange();
  void adoptLook();
  void turnTo(std::size_t index);
  void closeFailed();
  void showTitles();
  bool mayClose();
  void dropFiles(HANDLE drop);
  void keepPlacement();
  void restorePlacement(int showCommand);
  std::vector<ListedRow> list(const wchar_t* actionName);
  DocumentPlace* front() const noexcept;
  std::unique_ptr<Place> makeView(IDocument* document);

  Manager& manager_;
  const std::wstring name_;
  HWND window_ = nullptr;
  HWND focus_ = nullptr;  // while another window is active
  std::unique_ptr<windows::Look> look_;
  MainMenu menu_;
  ToolBar toolbar_;
  StatusBar status_;
  Tabs tabs_;
  Panels panels_;
  std::vector<std::unique_ptr<DocumentPlace>> views_;
  std::size_t front_ = 0;
  std::set<std::pair<IDocument*, std::wstring>> failed_;  // views that are not tried again for a document
  bool isPartShown_[2] = {true, true};
  bool isShown_ = false, isReady_ = false, hasFailedPlace_ = false;
  std::wstring title_;
};

template <class Visit>
int Frame::route(Visit visit) {
  Place* const panel = panels_.focused();
  DocumentPlace* const view = front();
  for (Place* const place : {panel, view ? view->place.get() : nullptr}) {
    if (!place || place->hasFailed()) continue;
    const int answer = place->ask([&] {
      IActionTarget* const target = query<IActionTarget>(place->view());
      return target ? visit(*target) : 0;
    });
    if (answer != 0) return answer;
  }
  return 0;
}

}  // namespace gui

}  // namespace corvix
