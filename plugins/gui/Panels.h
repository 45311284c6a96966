// Panels: what stands on the four sides of a frame. A panel is made when it is in front for the first time; where it
// stands is kept by its name, also while its module is away. [shell thread]
#pragma once

#include "plugins/gui/Declared.h"
#include "plugins/gui/Place.h"
#include "plugins/gui/Tabs.h"

#include <array>

namespace corvix {

class IBReport;
class IDocument;

namespace gui {

enum class Side { Left, Right, Top, Bottom };

class Panels final : private ITabsOwner {
 public:
  // `owner` is told when one fails; `frameName` is that of what they keep.
  Panels(IFrameWindow& frame, IPlaceOwner& owner, std::wstring frameName)
      : frame_(frame), owner_(owner), frameName_(std::move(frameName)) {}

  void setParent(HWND parent) noexcept { parent_ = parent; }
  void adopt(const windows::Look& look);

  // Which there are now, what is shown of them for these words, and the document that they are about.
  void update(const wchar_t* words, IDocument* document);
  void forgetDocument();  // before it goes
  void close();           // while the windows are there

  // Takes its sides off the area, and says what is left of it. Between a side and the rest is a bar to drag.
  RECT place(RECT area);
  bool beginDrag(POINT at);
  void drag(POINT at);
  void endDrag();
  bool isDragging() const noexcept { return dragged_ >= 0; }
  LPCWSTR cursorAt(POINT at) const;  // null: the usual one

  bool show(const wchar_t* name, bool visible);
  bool isShown(const wchar_t* name) const noexcept;
  struct Row {
    std::wstring name, text;
    bool isShown;
  };
  std::vector<Row> rows() const;

  // The one with the focus, or null; the next after it that can have it, from none to none.
  Place* focused();
  Place* after(const Place* place, bool backwards);

  // Takes those away that have failed, and says why.
  void closeFailed(IBReport& report);
  void tellAll(UINT message, WPARAM wparam, LPARAM lparam) const;
  void keep();

 private:
  struct Panel {
    Declared declared;
    std::wstring text, when, said;  // the last: why it could not be made, until it is told
    Side side = Side::Left;
    int size = 0;  // in 1/96 inch
    bool isWanted = false, hasFailed = false, holds = true;
    int keptSize = 0;
    bool keptWanted = false;
    std::unique_ptr<Place> place;
    bool isShown() const noexcept { return isWanted && holds && !hasFailed; }
  };
  struct Edge {
    std::unique_ptr<Tabs> tabs;  // once there was something on this side
    std::vector<Panel*> shown;
    std::wstring front;  // by its name
    int size = 200;      // in 1/96 inch
    RECT bar = {};
    bool isVertical() const noexcept { return bar.bottom - bar.top > bar.right - bar.left; }
  };

  void tabChosen(Tabs& tabs, int index) override;
  void tabClosed(Tabs& tabs, int index) override;
  void read();
  Panel* find(const wchar_t* name) noexcept;
  Panel* frontOf(Edge& edge);
  void arrange(Edge& edge);
  void openPlace(Panel& panel, Edge& edge);
  Edge& edgeOf(const Tabs& tabs);

  IFrameWindow& frame_;
  IPlaceOwner& owner_;
  std::wstring frameName_;
  HWND parent_ = nullptr;
  const windows::Look* look_ = nullptr;
  i32 knownInterfaces_ = -1;
  std::vector<std::unique_ptr<Panel>> panels_;
  std::array<Edge, 4> edges_;
  IDocument* document_ = nullptr;
  RECT area_ = {};
  int dragged_ = -1;
};

}  // namespace gui

}  // namespace corvix
