// MainMenu: "Menu.Main" as the menu bar of a frame, and its keys. A sub-menu is filled when it is opened: only then are
// its actions asked how they look. [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "plugins/gui/Keys.h"
#include "shell/gui/MenuItem.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace corvix::gui {

// A row that a frame puts in the place of one of the names below: a panel, a document, a file.
struct ListedRow {
  std::wstring text;
  bool isChecked = false;
  std::function<void()> choose;
};

class MainMenu {
 public:
  using List = std::function<std::vector<ListedRow>(const wchar_t* actionName)>;

  // `list` gives the rows for an item of the names "Actions.List. ...".
  explicit MainMenu(List list) : list_(std::move(list)) {}
  ~MainMenu();
  MainMenu(const MainMenu&) = delete;
  MainMenu& operator=(const MainMenu&) = delete;

  // Puts the menu that there is now into the window, if it is another than before, or `words` change what is in the
  // bar.
  void update(HWND window, const wchar_t* words);

  // Messages of the window: the user goes into the menus, a sub-menu opens, a row is chosen, a row is looked at. False
  // for what is none of this menu's.
  void begin() { listed_.clear(); }
  bool opens(HMENU menu, const wchar_t* words);
  bool choose(WORD id);

  // Texts are others now.
  void forget() noexcept { tree_.reset(); }
  std::wstring describe(WORD id) const;

  // The action of a key, if it may be now; null when there is none.
  const wchar_t* actionOf(Stroke stroke, const wchar_t* words) const;

 private:
  void build(HWND window, const wchar_t* words);
  void number(const IMenuItem& item);
  void fill(HMENU menu, const IMenuItem& from, const wchar_t* words);
  void appendList(HMENU menu, const IMenuItem& item);
  std::vector<bool> shownInBar(const wchar_t* words) const;

  List list_;
  Ref<IBSmartObject> tree_;
  HWND window_ = nullptr;
  HMENU bar_ = nullptr;
  std::vector<bool> inBar_;
  std::vector<const IMenuItem*> items_;  // by their number
  std::unordered_map<const IMenuItem*, WORD> numbers_;
  std::unordered_multimap<Stroke, const IMenuItem*> keys_;
  std::unordered_map<HMENU, const IMenuItem*> popups_;
  std::vector<ListedRow> listed_;  // of the sub-menus that were opened
};

}  // namespace corvix::gui
