#include "plugins/gui/MainMenu.h"

#include "plugins/gui/ActionCalls.h"
#include "plugins/windows/Translated.h"
#include "shell/gui/GUIManager.h"
#include "shell/menus/MenuManager.h"

#include <string_view>

namespace corvix::gui {

namespace {

constexpr WORD kFirstItem = 0x1000, kFirstListed = 0xC000, kEnd = 0xF000;
constexpr wchar_t kName[] = L"Menu.Main";
constexpr std::wstring_view kListPrefix = L"Actions.List.";

Ref<IBSmartObject> mainTree() {
  IGUIManager* const manager = IShell::getInstance()->guiManager();
  return Ref<IBSmartObject>::adopt(manager ? manager->menu(kName) : nullptr);
}

UINT flagsOf(const ActionLook& look) {
  return MF_STRING | (look.isEnabled ? 0u : UINT{MF_GRAYED}) | (look.isChecked ? UINT{MF_CHECKED} : 0u);
}

const wchar_t* shownText(const IMenuItem& item) { return windows::translated(item.text(), kName); }

void clear(HMENU menu) {
  while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
}

}  // namespace

MainMenu::~MainMenu() {
  if (window_ && IsWindow(window_)) SetMenu(window_, nullptr);
  if (bar_) DestroyMenu(bar_);
}

std::vector<bool> MainMenu::shownInBar(const wchar_t* words) const {
  std::vector<bool> shown;
  const auto* const root = query<IMenuItem>(tree_.get());
  for (i32 i = 0; root && i < root->childCount(); ++i) shown.push_back(whenHolds(root->childAt(i)->when(), words));
  return shown;
}

void MainMenu::update(HWND window, const wchar_t* words) {
  Ref<IBSmartObject> tree = mainTree();
  const bool isOther = tree != tree_ || !bar_;
  tree_ = std::move(tree);
  if (isOther) {
    items_.clear();
    numbers_.clear();
    keys_.clear();
    if (const auto* const root = query<IMenuItem>(tree_.get())) number(*root);
  }
  if (isOther || shownInBar(words) != inBar_) build(window, words);
}

void MainMenu::number(const IMenuItem& item) {
  if (*item.actionName() && kFirstItem + items_.size() < kFirstListed) {
    numbers_[&item] = static_cast<WORD>(kFirstItem + items_.size());
    items_.push_back(&item);
    if (const Stroke stroke = strokeNamed(item.key())) keys_.emplace(stroke, &item);
  }
  for (i32 i = 0; i < item.childCount(); ++i) number(*item.childAt(i));
}

void MainMenu::build(HWND window, const wchar_t* words) {
  const HMENU before = bar_;
  window_ = window;
  popups_.clear();
  bar_ = CreateMenu();
  inBar_ = shownInBar(words);
  if (const auto* const root = query<IMenuItem>(tree_.get())) {
    for (i32 i = 0; i < root->childCount(); ++i) {
      const IMenuItem& item = *root->childAt(i);
      if (!inBar_[static_cast<std::size_t>(i)] || item.childCount() == 0) continue;
      const HMENU popup = CreatePopupMenu();
      popups_[popup] = &item;
      AppendMenuW(bar_, MF_POPUP | MF_STRING, reinterpret_cast<UINT_PTR>(popup), shownText(item));
    }
  }
  SetMenu(window, bar_);
  if (before) DestroyMenu(before);
}

bool MainMenu::opens(HMENU menu, const wchar_t* words) {
  const auto found = popups_.find(menu);
  if (found == popups_.end()) return false;
  const IMenuItem& item = *found->second;
  for (i32 i = 0; i < item.childCount(); ++i) {
    const IMenuItem* const child = item.childAt(i);
    if (child->childCount() != 0) std::erase_if(popups_, [&](const auto& one) { return one.second == child; });
  }
  clear(menu);
  fill(menu, item, words);
  return true;
}

void MainMenu::fill(HMENU menu, const IMenuItem& from, const wchar_t* words) {
  const windows::Translation texts;
  std::unordered_map<std::wstring_view, ActionLook> looks;  // of this moment
  const IMenuItem* before = nullptr;
  std::wstring text;
  for (i32 i = 0; i < from.childCount(); ++i) {
    const IMenuItem& item = *from.childAt(i);
    if (!whenHolds(item.when(), words)) continue;
    if (before && before->group() != item.group()) AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    before = &item;
    if (item.childCount() != 0) {
      const HMENU popup = CreatePopupMenu();
      popups_[popup] = &item;
      AppendMenuW(menu, MF_POPUP | MF_STRING, reinterpret_cast<UINT_PTR>(popup), texts.of(item.text(), kName));
    } else if (std::wstring_view(item.actionName()).substr(0, kListPrefix.size()) == kListPrefix) {
      appendList(menu, item);
    } else if (const auto known = numbers_.find(&item); known != numbers_.end()) {
      const auto [found, isNew] = looks.try_emplace(item.actionName());
      if (isNew) found->second = lookOf(item.actionName());
      const ActionLook& look = found->second;
      text = look.text.empty() ? texts.of(item.text(), kName) : look.text.c_str();
      if (*item.key()) text.append(1, L'\t').append(shownKey(texts, item.key()));
      AppendMenuW(menu, flagsOf(look), known->second, text.c_str());
    }
  }
}

void MainMenu::appendList(HMENU menu, const IMenuItem& item) {
  std::vector<ListedRow> rows = list_(item.actionName());
  if (rows.empty()) AppendMenuW(menu, MF_STRING | MF_GRAYED, 0, shownText(item));
  for (ListedRow& row : rows) {
    if (listed_.size() == std::size_t{kEnd - kFirstListed}) listed_.clear();
    const ActionLook look{true, row.isChecked, {}};
    AppendMenuW(menu, flagsOf(look), kFirstListed + listed_.size(), row.text.c_str());
    listed_.push_back(std::move(row));
  }
}

bool MainMenu::choose(WORD id) {
  if (id >= kFirstListed && std::size_t{id} - kFirstListed < listed_.size()) {
    const auto choose = listed_[std::size_t{id} - kFirstListed].choose;
    listed_.clear();
    choose();
    return true;
  }
  if (id < kFirstItem || std::size_t{id} - kFirstItem >= items_.size()) return false;
  const std::wstring action = items_[std::size_t{id} - kFirstItem]->actionName();  // the menu may go meanwhile
  process(action.c_str(), L"menu");
  return true;
}

std::wstring MainMenu::describe(WORD id) const {
  if (id < kFirstItem || std::size_t{id} - kFirstItem >= items_.size()) return {};
  return gui::describe(items_[std::size_t{id} - kFirstItem]->actionName());
}

const wchar_t* MainMenu::actionOf(Stroke stroke, const wchar_t* words) const {
  const auto range = keys_.equal_range(stroke);
  for (auto at = range.first; at != range.second; ++at) {
    if (whenHolds(at->second->when(), words)) return at->second->actionName();
  }
  return nullptr;
}

}  // namespace corvix::gui
