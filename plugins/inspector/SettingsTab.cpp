// The user's options by their declared path. A chosen one gets the control that its declaration asks for; what is
// changed here or elsewhere is seen at once.
#include "plugins/inspector/Tab.h"
#include "plugins/windows/DeclaredSetting.h"

#include <map>

#include <commctrl.h>

namespace corvix::inspector {

namespace {

IBSettings& settings() { return *IShell::getInstance()->settings(); }

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
    for (const DeclaredSetting* one : inFolder_) {
      rows.push_back({one->label, one->current(), one->standard(), one->type,
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
    for (const DeclaredSetting& one : all_) settings().unwatch(one.group, one.item, &settingsWatch);
  }

  void readAll() {
    unwatch();
    inFolder_.clear();
    edited_ = nullptr;
    all_ = DeclaredSetting::all();
    for (const DeclaredSetting& one : all_) settings().watch(one.group, one.item, &settingsWatch, 0);
    fillTree();
    showFolder();
  }

  bool isShown(const DeclaredSetting& one) const {
    return !one.isHidden() || IsDlgButtonChecked(page(), kHidden) == BST_CHECKED;
  }

  void fillTree() {
    isFilling_ = true;
    TreeView_DeleteAllItems(tree_);
    folders_.clear();
    HTREEITEM first = nullptr;
    for (const DeclaredSetting& one : all_) {
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
    for (const DeclaredSetting& one : all_) {
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
    const DeclaredSetting* const chosen = index < inFolder_.size() ? inFolder_[index] : nullptr;
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
  std::vector<DeclaredSetting> all_;
  std::map<std::wstring, HTREEITEM> folders_;
  std::vector<const DeclaredSetting*> inFolder_;
  const DeclaredSetting* edited_ = nullptr;  // null also: nothing is chosen
  std::wstring shownValue_;
};

}  // namespace

std::unique_ptr<Tab> makeSettingsTab() { return std::make_unique<SettingsTab>(); }

}  // namespace corvix::inspector
