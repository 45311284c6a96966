#include "plugins/gui/ToolBar.h"

#include "plugins/gui/ActionCalls.h"
#include "plugins/gui/Keys.h"
#include "plugins/windows/Translated.h"
#include "plugins/windows/Windows.h"
#include "shell/gui/GUIManager.h"
#include "shell/menus/MenuManager.h"

#include <map>

namespace corvix::gui {

using namespace windows;

namespace {

constexpr wchar_t kName[] = L"Toolbar.Main";
constexpr WORD kFirst = 0x400, kMost = 0x400;

const IMenuItem* itemAt(IBSmartObject* tree, i32 index) {
  const auto* const root = query<IMenuItem>(tree);
  return root ? root->childAt(index) : nullptr;
}

std::wstring plain(std::wstring text) {
  for (std::size_t at = 0; (at = text.find(L'&', at)) != text.npos; ++at) text.erase(at, 1);
  while (!text.empty() && text.back() == L'.') text.pop_back();
  return text;
}

}  // namespace

// Modules as data, each opened once.
class IconFiles {
 public:
  ~IconFiles() {
    for (const auto& [path, module] : modules_) {
      if (module) FreeLibrary(module);
    }
  }

  // From the module that has the template, else one of ours.
  HICON find(const wchar_t* name, const wchar_t* modulePath, int size) {
    auto [known, isNew] = modules_.try_emplace(modulePath, nullptr);
    constexpr DWORD kAsData = LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE;
    if (isNew) known->second = LoadLibraryExW(modulePath, nullptr, kAsData);
    const HMODULE module = known->second;
    const bool isThere = module && FindResourceW(module, name, reinterpret_cast<LPCWSTR>(RT_GROUP_ICON));
    return static_cast<HICON>(
        LoadImageW(isThere ? module : ownModule(), name, IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
  }

 private:
  std::map<std::wstring, HMODULE> modules_;
};

ToolBar::~ToolBar() {
  if (images_) ImageList_Destroy(images_);
}

bool ToolBar::make(HWND parent) {
  window_ = makeChild(parent, TOOLBARCLASSNAMEW, L"",
                      WS_VISIBLE | WS_CLIPSIBLINGS | TBSTYLE_FLAT | TBSTYLE_LIST | TBSTYLE_TOOLTIPS | CCS_NODIVIDER |
                          CCS_NOPARENTALIGN | CCS_NORESIZE);
  if (!window_) return false;
  SendMessageW(window_, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
  SendMessageW(window_, TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_MIXEDBUTTONS);
  return true;
}

void ToolBar::adopt(const Look& look) {
  setFont(window_, look.font());
  iconSize_ = look.scaled(16) >= 32 ? 32 : look.scaled(16) >= 22 ? 24 : 16;
  tree_.reset();  // built anew with other icons
}

int ToolBar::height() const {
  return SendMessageW(window_, TB_BUTTONCOUNT, 0, 0) ? HIWORD(SendMessageW(window_, TB_GETBUTTONSIZE, 0, 0)) + 4 : 0;
}

std::vector<bool> ToolBar::shown(const wchar_t* words) const {
  std::vector<bool> all;
  for (i32 i = 0; const IMenuItem* const item = itemAt(tree_.get(), i); ++i)
    all.push_back(whenHolds(item->when(), words));
  return all;
}

void ToolBar::update(const wchar_t* words) {
  IGUIManager* const manager = IShell::getInstance()->guiManager();
  Ref<IBSmartObject> tree = Ref<IBSmartObject>::adopt(manager ? manager->menu(kName) : nullptr);
  const bool isOther = tree != tree_;
  tree_ = std::move(tree);
  if (isOther || shown(words) != shown_) build(words);
  for (i32 i = 0; const IMenuItem* const item = itemAt(tree_.get(), i); ++i) {
    if (i >= kMost || !shown_[static_cast<std::size_t>(i)]) continue;
    const ActionLook look = lookOf(item->actionName());
    const auto wanted =
        static_cast<LPARAM>((look.isEnabled ? TBSTATE_ENABLED : 0) | (look.isChecked ? TBSTATE_CHECKED : 0));
    const auto id = static_cast<WPARAM>(kFirst + i);
    if (SendMessageW(window_, TB_GETSTATE, id, 0) != wanted) SendMessageW(window_, TB_SETSTATE, id, wanted);
  }
}

void ToolBar::build(const wchar_t* words) {
  while (SendMessageW(window_, TB_DELETEBUTTON, 0, 0)) {
  }
  const HIMAGELIST before = images_;
  images_ = ImageList_Create(iconSize_, iconSize_, ILC_COLOR32 | ILC_MASK, 16, 16);
  SendMessageW(window_, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images_));
  if (before) ImageList_Destroy(before);
  shown_ = shown(words);
  IconFiles files;
  const IMenuItem* last = nullptr;
  for (i32 i = 0; const IMenuItem* const item = itemAt(tree_.get(), i); ++i) {
    if (i >= kMost || !shown_[static_cast<std::size_t>(i)]) continue;
    TBBUTTON button = {};
    if (last && last->group() != item->group()) {
      button.fsStyle = BTNS_SEP;
      SendMessageW(window_, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
    }
    last = item;
    button.iBitmap = imageOf(*item, files);
    button.idCommand = kFirst + i;
    button.fsState = TBSTATE_ENABLED;
    button.fsStyle =
        static_cast<BYTE>(BTNS_BUTTON | BTNS_AUTOSIZE | (button.iBitmap == I_IMAGENONE ? BTNS_SHOWTEXT : 0));
    std::wstring text = plain(translated(item->text(), kName));
    button.iString = reinterpret_cast<INT_PTR>(text.c_str());
    SendMessageW(window_, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
  }
  SendMessageW(window_, TB_AUTOSIZE, 0, 0);
}

int ToolBar::imageOf(const IMenuItem& item, IconFiles& files) {
  const HICON icon = *item.icon() ? files.find(item.icon(), item.module()->path(), iconSize_) : nullptr;
  const int index = icon ? ImageList_AddIcon(images_, icon) : -1;
  if (icon) DestroyIcon(icon);
  return index >= 0 ? index : I_IMAGENONE;
}

bool ToolBar::choose(WORD id) const {
  const IMenuItem* const item = id >= kFirst && id < kFirst + kMost ? itemAt(tree_.get(), id - kFirst) : nullptr;
  if (!item) return false;
  const std::wstring action = item->actionName();
  process(action.c_str(), L"toolbar");
  return true;
}

std::wstring ToolBar::tip(WORD id) const {
  const IMenuItem* const item = id >= kFirst && id < kFirst + kMost ? itemAt(tree_.get(), id - kFirst) : nullptr;
  if (!item) return {};
  const Translation texts;
  return plain(texts.of(item->text(), kName)) + (*item->key() ? L" (" + shownKey(texts, item->key()) + L")" : L"");
}

}  // namespace corvix::gui
