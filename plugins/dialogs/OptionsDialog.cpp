// "Dialog.Options": every setting that its declaration wants shown, made from `path`, `Visible` and `Values` alone. A
// folder of paths is a page.
#include "plugins/dialogs/Dialogs.h"
#include "plugins/dialogs/ModalDialog.h"
#include "plugins/windows/DeclaredSetting.h"
#include "plugins/windows/OwnWindow.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/gui/Dialog.h"
#include "tools/xmlbinc/Harmless.h"

#include <algorithm>
#include <map>
#include <memory>

#include <commctrl.h>

namespace corvix::dialogs {

using namespace windows;

namespace {

constexpr int kTree = 100, kDefaults = 101;
constexpr std::size_t kLongest = 200;

// A third of the way to the background; the system's grey is that of what cannot be used.
COLORREF paler(COLORREF color) {
  const COLORREF back = GetSysColor(COLOR_WINDOW);
  const auto between = [](int a, int b) { return static_cast<BYTE>((2 * a + b) / 3); };
  return RGB(between(GetRValue(color), GetRValue(back)), between(GetGValue(color), GetGValue(back)),
             between(GetBValue(color), GetBValue(back)));
}

// A setting with its control, and what the user has made of it.
struct Option {
  DeclaredSetting setting;
  std::wstring before, now;
  bool isChanged() const { return before != now; }
};

// The options of one folder, from top to bottom.
class Page : public OwnWindow {
 public:
  bool make(HWND parent, const Look& look) {
    look_ = &look;
    return open(parent, L"CorvixOptions", WS_VISIBLE | WS_VSCROLL | WS_CLIPCHILDREN | WS_TABSTOP,
                WS_EX_CONTROLPARENT | WS_EX_CLIENTEDGE, COLOR_WINDOW);
  }

  void show(std::vector<Option*> options) {
    for (const Line& line : lines_) {
      for (const HWND one : {line.label, line.control, line.comment}) {
        if (one) DestroyWindow(one);
      }
    }
    lines_.clear();
    options_ = std::move(options);
    for (std::size_t i = 0; i < options_.size(); ++i) lines_.push_back(makeLine(*options_[i], static_cast<int>(i)));
    scrolled_ = 0;
    arrange();
  }

  void refresh() {
    for (std::size_t i = 0; i < lines_.size(); ++i) showValue(lines_[i], *options_[i]);
  }

  void focus(const Option* option) {
    const auto found = std::find(options_.begin(), options_.end(), option);
    if (found == options_.end()) return;
    const Line& line = lines_[static_cast<std::size_t>(found - options_.begin())];
    SetFocus(line.control);
    SendMessageW(line.control, EM_SETSEL, 0, -1);
  }

 private:
  struct Line {
    HWND label = nullptr, control = nullptr, comment = nullptr;
    int top = 0, bottom = 0;
  };

  HWND add(const wchar_t* windowClass, const std::wstring& text, DWORD style, int id, DWORD exStyle = 0) {
    const HWND control = makeChild(window(), windowClass, text.c_str(), WS_VISIBLE | style, id, exStyle);
    setFont(control, look_->font());
    return control;
  }

  Line makeLine(const Option& option, int index) {
    const DeclaredSetting& setting = option.setting;
    const std::wstring label = xmlbinc::harmless(translated(setting.label), kLongest);
    Line line;
    const int id = kFirst + index;
    if (setting.isCheck()) {
      line.control = add(L"BUTTON", label, WS_TABSTOP | BS_AUTOCHECKBOX | BS_NOTIFY, id);
    } else {
      line.label = add(L"STATIC", label + L":", SS_NOPREFIX | SS_ENDELLIPSIS, -1);
      line.control = setting.isList() ? add(L"COMBOBOX", L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, id)
                                      : add(L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, id, WS_EX_CLIENTEDGE);
      for (const std::wstring& choice : setting.choices)
        SendMessageW(line.control, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(translated(choice)));
    }
    if (!setting.comment.empty() && setting.comment != setting.label)
      line.comment = add(L"STATIC", xmlbinc::harmless(translated(setting.comment), kLongest), SS_NOPREFIX, kComment);
    showValue(line, option);
    return line;
  }

  void showValue(const Line& line, const Option& option) {
    isShowing_ = true;
    if (option.setting.isCheck()) {
      SendMessageW(line.control, BM_SETCHECK, option.now == L"true" ? BST_CHECKED : BST_UNCHECKED, 0);
    } else if (option.setting.isList()) {
      const auto& choices = option.setting.choices;
      const auto at = std::find(choices.begin(), choices.end(), option.now);
      SendMessageW(line.control, CB_SETCURSEL,
                   at == choices.end() ? static_cast<WPARAM>(-1) : static_cast<WPARAM>(at - choices.begin()), 0);
    } else {
      SetWindowTextW(line.control, option.now.c_str());
    }
    isShowing_ = false;
  }

  void take(std::size_t index) {
    Option& option = *options_[index];
    const HWND control = lines_[index].control;
    if (option.setting.isCheck()) {
      option.now = SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED ? L"true" : L"false";
    } else if (option.setting.isList()) {
      const LRESULT at = SendMessageW(control, CB_GETCURSEL, 0, 0);
      if (at >= 0) option.now = option.setting.choices[static_cast<std::size_t>(at)];
    } else {
      option.now = textOf(control);
    }
  }

  int commentHeight(HWND comment, int width) {
    RECT area = {0, 0, width, 0};
    const HDC device = GetDC(comment);
    const HGDIOBJ before = SelectObject(device, look_->font());
    DrawTextW(device, textOf(comment).c_str(), -1, &area, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(device, before);
    ReleaseDC(comment, device);
    return area.bottom;
  }

  void arrange() {
    if (isArranging_) return;
    isArranging_ = true;
    const RECT area = clientOf(window());
    const int gap = look_->scaled(12), line = look_->lineHeight(), indent = look_->scaled(18);
    const int width = std::max(static_cast<int>(area.right) - 2 * gap, 10), half = width / 2;
    int top = gap - scrolled_;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      Line& one = lines_[i];
      one.top = top + scrolled_;
      if (one.label) {
        MoveWindow(one.label, gap, top + look_->scaled(4), half - gap / 2, line - look_->scaled(4), TRUE);
        const bool isList = options_[i]->setting.isList();
        MoveWindow(one.control, gap + half, top, width - half, isList ? line * 8 : line, TRUE);
      } else {
        MoveWindow(one.control, gap, top, width, line, TRUE);
      }
      top += line;
      if (one.comment) {
        const int height = commentHeight(one.comment, width - indent);
        MoveWindow(one.comment, gap + (one.label ? 0 : indent), top, width - indent, height, TRUE);
        top += height;
      }
      top += gap / 2;
      one.bottom = top + scrolled_;
    }
    const int whole = top + scrolled_ + gap / 2;
    const SCROLLINFO info = {sizeof info,
                             SIF_PAGE | SIF_POS | SIF_RANGE,
                             0,
                             std::max(whole - 1, 0),
                             static_cast<UINT>(std::max(area.bottom, 0L)),
                             scrolled_,
                             0};
    SetScrollInfo(window(), SB_VERT, &info, TRUE);
    isArranging_ = false;
  }

  void moveTo(int position) {
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    GetScrollInfo(window(), SB_VERT, &info);
    position = std::clamp(position, 0, std::max(info.nMax + 1 - static_cast<int>(info.nPage), 0));
    if (position == scrolled_) return;
    scrolled_ = position;
    arrange();
    InvalidateRect(window(), nullptr, TRUE);
  }

  void bringIntoView(const Line& line) {
    const int height = clientOf(window()).bottom;
    if (line.bottom > scrolled_ + height) moveTo(line.bottom - height);
    if (line.top < scrolled_) moveTo(line.top);
  }

  bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override {
    switch (message) {
      case WM_SIZE:
        if (look_) arrange(), moveTo(scrolled_);
        return true;
      case WM_VSCROLL: {
        SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
        GetScrollInfo(window(), SB_VERT, &info);
        const int page = static_cast<int>(info.nPage);
        const int line = look_->scaled(32), by[] = {-line, line, -page, page};  // SB_LINEUP and those behind it
        const WORD request = LOWORD(wparam);
        moveTo(request <= SB_PAGEDOWN ? scrolled_ + by[request] : request == SB_ENDSCROLL ? scrolled_ : info.nTrackPos);
        return true;
      }
      case WM_MOUSEWHEEL:
        moveTo(scrolled_ - MulDiv(GET_WHEEL_DELTA_WPARAM(wparam), look_->scaled(48), WHEEL_DELTA));
        return true;
      case WM_COMMAND: {
        const std::size_t index = std::size_t{LOWORD(wparam)} - kFirst;
        if (index >= lines_.size() || isShowing_) return true;
        const WORD code = HIWORD(wparam);
        const HWND control = lines_[index].control;
        if (GetFocus() == control) bringIntoView(lines_[index]);
        const bool isCheck = options_[index]->setting.isCheck(), isList = options_[index]->setting.isList();
        if (isCheck ? code == BN_CLICKED : isList ? code == CBN_SELCHANGE : code == EN_CHANGE) take(index);
        return true;
      }
      case WM_CTLCOLORSTATIC:
      case WM_CTLCOLORBTN: {
        const HDC device = reinterpret_cast<HDC>(wparam);
        const bool isComment = GetDlgCtrlID(reinterpret_cast<HWND>(lparam)) == kComment;
        SetTextColor(device, isComment ? paler(GetSysColor(COLOR_WINDOWTEXT)) : GetSysColor(COLOR_WINDOWTEXT));
        SetBkColor(device, GetSysColor(COLOR_WINDOW));
        result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
        return true;
      }
      default:
        return false;
    }
  }

  static constexpr int kFirst = 100, kComment = 50;
  const Look* look_ = nullptr;
  std::vector<Option*> options_;
  std::vector<Line> lines_;
  int scrolled_ = 0;
  bool isShowing_ = false, isArranging_ = false;
};

class OptionsDialog final : public BSmartObject, public IDialog, private ModalDialog {
  CORVIX_IDENTITY(OptionsDialog, 0x4D1CACED, 0x781FBA34, 0xA2F23A25, 0x3713A1D0, BSmartObject, IDialog)

 public:
  int show(CustomDialogRequest& request) override {
    if (IShell::getInstance()->isUnattended()) return notify::kStop;
    for (DeclaredSetting& setting : DeclaredSetting::all()) {
      if (setting.isHidden()) continue;
      const std::wstring value = setting.current();
      options_.push_back(std::make_unique<Option>(Option{std::move(setting), value, value}));
      byFolder_[options_.back()->setting.folder].push_back(options_.back().get());
    }
    request.answer = run(translated(L"Options"), 660, 420, true) == IDOK ? IDOK : IDCANCEL;
    return notify::kTaken;
  }

 private:
  void make() override {
    tree_ = add(WC_TREEVIEWW, L"", WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS,
                kTree, WS_EX_CLIENTEDGE);
    page_.make(window(), look());
    addButton(L"OK", IDOK);
    addButton(L"Cancel", IDCANCEL);
    addButton(L"&Defaults", kDefaults);
    for (const auto& [folder, options] : byFolder_) itemOf(folder);
    TreeView_SelectItem(tree_, TreeView_GetRoot(tree_));
    turnTo(byFolder_.empty() ? std::wstring() : byFolder_.begin()->first);
  }

  HTREEITEM itemOf(const std::wstring& folder) {
    const auto known = items_.find(folder);
    if (known != items_.end()) return known->second;
    const std::size_t cut = folder.find_last_of(L'\\');
    const HTREEITEM parent = cut == folder.npos ? TVI_ROOT : itemOf(folder.substr(0, cut));
    std::wstring name = xmlbinc::harmless(translated(folder.substr(cut + 1)), kLongest);
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = name.data();
    const HTREEITEM item = TreeView_InsertItem(tree_, &insert);
    if (parent != TVI_ROOT) TreeView_Expand(tree_, parent, TVE_EXPAND);
    return items_[folder] = item;
  }

  void turnTo(const std::wstring& folder) {
    const auto found = byFolder_.find(folder);
    shown_ = folder;
    page_.show(found == byFolder_.end() ? std::vector<Option*>() : found->second);
  }

  void place(RECT area) override {
    const int gap = look().scaled(8), split = look().scaled(180);
    MoveWindow(tree_, area.left, area.top, split, heightOf(area), TRUE);
    MoveWindow(page_.window(), area.left + split + gap, area.top, widthOf(area) - split - gap, heightOf(area), TRUE);
  }

  bool notified(const NMHDR& notification) override {
    if (notification.code != TVN_SELCHANGEDW) return false;
    const HTREEITEM chosen = TreeView_GetSelection(tree_);
    for (const auto& [folder, item] : items_) {
      if (item == chosen && folder != shown_) return turnTo(folder), true;
    }
    return true;
  }

  bool command(int id, int code) override {
    if (id == kDefaults) {
      for (Option* const option : byFolder_[shown_]) option->now = option->setting.standard();
      page_.refresh();
      return true;
    }
    if (id == IDOK && !apply()) return true;
    return ModalDialog::command(id, code);
  }

  // All or nothing: a text that its setting does not take is shown, and nothing is changed.
  bool apply() {
    std::vector<std::pair<const Option*, Variant>> changes;
    for (const auto& option : options_) {
      if (!option->isChanged()) continue;
      std::wstring wanted;
      std::optional<Variant> value = option->setting.parse(option->now, wanted);
      if (!value) return complain(*option, wanted), false;
      changes.emplace_back(option.get(), std::move(*value));
    }
    IBSettings& store = *IShell::getInstance()->settings();
    store.onStartChanges();
    for (const auto& [option, value] : changes) store.setValue(option->setting.group, option->setting.item, value);
    store.onFinishChanges();
    if (!changes.empty()) IShell::getInstance()->pluginManager()->saveSettings();
    return true;
  }

  void complain(const Option& option, const std::wstring& wanted) {
    TreeView_SelectItem(tree_, items_[option.setting.folder]);
    if (shown_ != option.setting.folder) turnTo(option.setting.folder);
    const std::wstring label = xmlbinc::harmless(translated(option.setting.label), kLongest);
    const std::wstring text = sentence(L"%1 takes %2.", {label, translated(wanted)});
    MessageBoxW(window(), text.c_str(), translated(L"Options"), MB_OK | MB_ICONWARNING);
    page_.focus(&option);
  }

  std::vector<std::unique_ptr<Option>> options_;
  std::map<std::wstring, std::vector<Option*>> byFolder_;
  std::map<std::wstring, HTREEITEM> items_;
  std::wstring shown_;
  HWND tree_ = nullptr;
  Page page_;
};

}  // namespace

IBSmartObject* makeOptionsDialog() { return new OptionsDialog; }

}  // namespace corvix::dialogs
