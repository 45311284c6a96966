// ToolBar: "Toolbar.Main" as a row of buttons. How they look is asked again when nothing else is to be done.
// [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "plugins/windows/Look.h"
#include "shell/gui/MenuItem.h"

#include <string>
#include <vector>

#include <commctrl.h>

namespace corvix::gui {

class IconFiles;

class ToolBar {
 public:
  ~ToolBar();

  bool make(HWND parent);
  HWND window() const noexcept { return window_; }
  int height() const;
  void adopt(const windows::Look& look);

  // Shows what there is now, for a view of those words.
  void update(const wchar_t* words);
  bool choose(WORD id) const;
  void forget() noexcept { tree_.reset(); }  // texts are others now

  // What to say of a button: "Zoom in (Ctrl+Plus)".
  std::wstring tip(WORD id) const;

 private:
  void build(const wchar_t* words);
  int imageOf(const IMenuItem& item, IconFiles& files);
  std::vector<bool> shown(const wchar_t* words) const;

  HWND window_ = nullptr;
  HIMAGELIST images_ = nullptr;
  int iconSize_ = 16;
  Ref<IBSmartObject> tree_;
  std::vector<bool> shown_;
};

}  // namespace corvix::gui
