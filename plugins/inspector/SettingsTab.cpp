// The user's options by their declared path. A chosen one gets the control that its declaration asks for; what is
// changed here or elsewhere is seen at once.
#include "plugins/inspector/Tab.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <map>
#include <optional>

#include <commctrl.h>

namespace corvix::inspector {

namespace {

IBSettings& settings() { return *IShell::getInstance()->settings(); }

struct Setting {
  const wchar_t* group;  // of the store
  const wchar_t* item;
  std::wstring folder, label, type, visible, comment;
  std::vector<std::wstring> choices;

  Setting(const wchar_t* itsGroup, const wchar_t* itsItem) : group(itsGroup), item(itsItem) {
    type = attribute(L"Type");
    visible = attribute(L"Visible");
    comment = attribute(L"comment");
    const std::wstring path = attribute(L"path");
    const std::size_t cut = path.find_last_of(L'\\');
    folder = cut == std::wstring::npos ? group : path.substr(0, cut);
    label = path.empty() ? item : path.substr(cut + 1);
    const std::wstring values = attribute(L"Values");
    for (std::size_t at = 0; at < values.size();) {
      const std::size_t end = std::min(values.find(L'|', at), values.size());
      choices.push_back(values.substr(at, end - at));
      at = end + 1;
    }
  }

  std::wstring attribute(const wchar_t* name) const {
    WideString text;
    settings().getAttribute(group, item, name, text);
    return std::wstring(text);
  }

  bool isHidden() const { return visible == L"false"; }
  bool isCheck() const { return type == L"bool" && (visible == L"check" || isHidden()); }
  bool isList() const { return !choices.empty() && (visible == L"List" || isHidden()); }

  // As a user would write it.
  std::wstring show(const Variant& value) const {
    const auto number = static_cast<std::size_t>(value.integer());
    if (value.tag() == Variant::Tag::Bool) return value.truth() ? L"true" : L"false";
    if (type == L"enum" && number >= 1 && number <= choices.size()) return choices[number - 1];
    return std::wstring(value.toText());
  }
  std::wstring current() const {
    Variant value;
    settings().getValue(group, item, value);
    return show(value);
  }

  // What a text means for the type; `wanted` says what would mean something when this does not.
  std::optional<Variant> parse(const std::wstring& text, std::wstring& wanted) const {
    wchar_t* end = nullptr;
    errno = 0;
    if (type == L"bool") {
      wanted = L"true or false";
      if (text == L"true" || text == L"false") return Variant(text == L"true");
    } else if (type == L"enum") {
      wanted = attribute(L"Values");
      const auto found = std::find(choices.begin(), choices.end(), text);
      if (found != choices.end()) return Variant(static_cast<i32>(found - choices.begin()) + 1);
    } else if (type == L"integer") {
      wanted = L"a whole number of at most 32 bits";
      const long number = std::wcstol(text.c_str(), &end, 10);
      if (!text.empty() && !*end && errno == 0) return Variant(static_cast<i32>(number));
    } else if (type == L"float") {
      wanted = L"a number";
      const double number = std::wcstod(text.c_str(), &end);
      if (!text.empty() && !*end && errno == 0) return Variant(number);
    } else {
      return Variant(text);
    }
    return std::nullopt;
  }
};

// Follows every item. It stands as long as the module: another thread may be in it while the tab goes.
class SettingsWatch : public ISettingListener {
  CORVIX_IDENTITY(SettingsWatch, 0xBD811CA5, 0xBEC8B0E4, 0x59018390, 0xDA46A5B0, ISettingListener)

 public:
  int onSettingChanged(IBSettings&, const wchar_t*, const wchar_t*) override {
    wake.ring();
    return notify::kGoOn;
  }
  Wake wake;
} settingsWatch;

class SettingsTab : public Tab {
 public:
  ~SettingsTab() override {
    settingsWatch.wake.aimAt(nullptr);
    if (IShell::getInstance()) unwatch();
  }

  void refresh() override {
    std::size_t count = 0;
    for (i32 g = 0; g < settings().groupCount(); ++g)
      count += static_cast<std::size_t>(settings().itemCount(settings().groupAt(g)));
    if (count != all_.size()) readAll();
    std::vector<Row> rows;
    for (const Setting* one : inFolder_) {
      Variant standard;
      settings().getDefault(one->group, one->item, standard);
      rows.push_back({one->label, one->current(), one->show(standard), one->type,
                      std::wstring(one->group) + L"\\" + one->item, one->comment});
    }
    list_.show(rows);
    showInEditor();
  }

  void changed(const NMHDR& notification) override {
    if (notification.code == TVN_SELCHANGEDW && !isFilling_) showFolder();
    if (notification.code == LVN_ITEMCHANGED) showInEditor();
  }

  void command(int id, int code) override {
    if (id == kHidden) {
      readAll();
      refresh();
    } else if (id == kSave) {
      say(std::to_wstring(IShell::getInstance()->pluginManager()->saveSettings()) + L" settings saved.");
    } else if (id == kDefault && edited_) {
      Variant standard;
      if (settings().getDefault(edited_->group, edited_->item, standard)) change(standard);
    } else if (id == kCheck && code == BN_CLICKED) {
      changeTo(IsDlgButtonChecked(page(), kCheck) == BST_CHECKED ? L"true" : L"false");
    } else if (id == kChoice && code == CBN_SELCHANGE && edited_) {
      const LRESULT index = SendMessageW(choice_, CB_GETCURSEL, 0, 0);
      if (index >= 0) changeTo(edited_->choices[static_cast<std::size_t>(index)]);
    } else if (id == kSet || id == IDOK) {
      if (IsWindowVisible(text_)) changeTo(textOf(text_));
    }
  }

 private:
  enum { kTree = 1, kCheck, kChoice, kText, kSet, kDefault, kSave, kHidden };

  void make() override {
    tree_ =
        addControl(WC_TREEVIEWW, L"",
                   WS_TABSTOP | WS_BORDER | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS, kTree);
    list_.make(page(), kList,
               {{L"Setting", 190},
                {L"Value", 100},
                {L"Default", 90},
                {L"Type", 65},
                {L"Group and item", 190},
                {L"Comment", 300}});
    addToRow(L"STATIC", L"&Value:", SS_CENTERIMAGE, -1, 45);
    check_ = addToRow(L"BUTTON", L"on", WS_TABSTOP | BS_AUTOCHECKBOX, kCheck, 130);
    choice_ = addToRow(L"COMBOBOX", L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, kChoice, 130);
    text_ = addToRow(L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, kText, 130);
    set_ = addButton(L"&Set", kSet, 60);
    addButton(L"&Default", kDefault, 80);
    addToRow(L"STATIC", L"", SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, kSaid, 0);
    addToRow(L"BUTTON", L"&Hidden too", WS_TABSTOP | BS_AUTOCHECKBOX, kHidden, 95);
    addButton(L"Sa&ve all", kSave, 80);
    settingsWatch.wake.aimAt(page());
  }

  void placeMain(RECT area) override {
    const LONG split = area.left + (area.right - area.left) / 4;
    MoveWindow(tree_, area.left, area.top, split - area.left, area.bottom - area.top, TRUE);
    Tab::placeMain({split, area.top, area.right, area.bottom});
  }

  void unwatch() {
    for (const Setting& one : all_) settings().unwatch(one.group, one.item, &settingsWatch);
  }

  void readAll() {
    unwatch();
    inFolder_.clear();
    edited_ = nullptr;
    all_.clear();
    for (i32 g = 0; g < settings().groupCount(); ++g) {
      const wchar_t* const group = settings().groupAt(g);
      for (i32 i = 0; i < settings().itemCount(group); ++i) all_.emplace_back(group, settings().itemAt(group, i));
    }
    for (const Setting& one : all_) settings().watch(one.group, one.item, &settingsWatch, 0);
    fillTree();
    showFolder();
  }

  bool isShown(const Setting& one) const {
    return !one.isHidden() || IsDlgButtonChecked(page(), kHidden) == BST_CHECKED;
  }

  void fillTree() {
    isFilling_ = true;
    TreeView_DeleteAllItems(tree_);
    folders_.clear();
    HTREEITEM first = nullptr;
    for (const Setting& one : all_) {
      if (isShown(one) && !first) first = folderItem(one.folder);
      if (isShown(one)) folderItem(one.folder);
    }
    TreeView_SelectItem(tree_, first);
    isFilling_ = false;
  }

  HTREEITEM folderItem(const std::wstring& folder) {
    const auto known = folders_.find(folder);
    if (known != folders_.end()) return known->second;
    const std::size_t cut = folder.find_last_of(L'\\');
    std::wstring name = folder.substr(cut + 1);
    TVINSERTSTRUCTW insert = {};
    insert.hParent = cut == std::wstring::npos ? TVI_ROOT : folderItem(folder.substr(0, cut));
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = name.data();
    const HTREEITEM item = TreeView_InsertItem(tree_, &insert);
    TreeView_Expand(tree_, insert.hParent, TVE_EXPAND);
    return folders_[folder] = item;
  }

  void showFolder() {
    const HTREEITEM chosen = TreeView_GetSelection(tree_);
    inFolder_.clear();
    for (const Setting& one : all_) {
      const auto at = folders_.find(one.folder);
      if (at != folders_.end() && at->second == chosen && isShown(one)) inFolder_.push_back(&one);
    }
    edited_ = nullptr;
    refresh();
    list_.select(0);
    showInEditor();
  }

  // The control that the chosen setting asks for, with its value. What the user is writing stays until the value
  // changes.
  void showInEditor() {
    const auto index = static_cast<std::size_t>(list_.selected());
    const Setting* const chosen = index < inFolder_.size() ? inFolder_[index] : nullptr;
    const std::wstring value = chosen ? chosen->current() : L"";
    if (chosen == edited_ && value == shownValue_) return;
    const bool isOther = chosen != edited_;
    edited_ = chosen;
    shownValue_ = value;
    const bool isCheck = chosen && chosen->isCheck(), isList = chosen && !isCheck && chosen->isList();
    if (isOther) {
      ShowWindow(check_, isCheck ? SW_SHOW : SW_HIDE);
      ShowWindow(choice_, isList ? SW_SHOW : SW_HIDE);
      ShowWindow(text_, isCheck || isList ? SW_HIDE : SW_SHOW);
      ShowWindow(set_, isCheck || isList ? SW_HIDE : SW_SHOW);
      EnableWindow(text_, chosen != nullptr);
      SendMessageW(choice_, CB_RESETCONTENT, 0, 0);
      for (const std::wstring& one : chosen ? chosen->choices : std::vector<std::wstring>())
        SendMessageW(choice_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(one.c_str()));
      say(chosen ? chosen->comment : L"");
      replace();
    }
    CheckDlgButton(page(), kCheck, value == L"true" ? BST_CHECKED : BST_UNCHECKED);
    SendMessageW(choice_, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(value.c_str()));
    SetWindowTextW(text_, value.c_str());
  }

  void changeTo(const std::wstring& text) {
    std::wstring wanted;
    if (!edited_) return;
    if (const std::optional<Variant> value = edited_->parse(text, wanted)) {
      const std::wstring comment = edited_->comment;
      if (change(*value)) say(comment);
    } else {
      MessageBeep(MB_ICONWARNING);
      say(L"It takes " + wanted + L".");
    }
  }

  // False when who was told has closed the inspector.
  bool change(const Variant& value) {
    IBSettings& store = settings();
    const bool isOpen = staysOpen(page(), [&] {
      store.onStartChanges();
      store.setValue(edited_->group, edited_->item, value);
      store.onFinishChanges();
    });
    if (isOpen) refresh();
    return isOpen;
  }

  HWND tree_ = nullptr, check_ = nullptr, choice_ = nullptr, text_ = nullptr, set_ = nullptr;
  bool isFilling_ = false;
  std::vector<Setting> all_;
  std::map<std::wstring, HTREEITEM> folders_;
  std::vector<const Setting*> inFolder_;
  const Setting* edited_ = nullptr;  // null also: nothing is chosen
  std::wstring shownValue_;
};

}  // namespace

std::unique_ptr<Tab> makeSettingsTab() { return std::make_unique<SettingsTab>(); }

}  // namespace corvix::inspector
