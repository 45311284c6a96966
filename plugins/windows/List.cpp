#include "plugins/windows/List.h"

#include "tools/xmlbinc/Harmless.h"

#include <cstring>

#include <commctrl.h>

namespace corvix::windows {

namespace {

constexpr std::size_t kMostLetters = 250;  // the system's lists show no more than 259

}  // namespace

void List::make(HWND parent, int id, std::vector<Column> columns) {
  columns_ = std::move(columns);
  handle_ = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                            WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_SHOWSELALWAYS |
                                (columns_.size() == 1 ? LVS_NOCOLUMNHEADER : 0),
                            0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
  ListView_SetExtendedListViewStyle(handle_, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::wstring title = columns_[i].title;
    LVCOLUMNW column = {};
    column.mask = LVCF_TEXT;
    column.pszText = title.data();
    ListView_InsertColumn(handle_, static_cast<int>(i), &column);
  }
}

void List::adopt(const Look& look) {
  SendMessageW(handle_, WM_SETFONT, reinterpret_cast<WPARAM>(look.font()), TRUE);
  for (std::size_t i = 0; i < columns_.size(); ++i)
    ListView_SetColumnWidth(handle_, static_cast<int>(i), look.scaled(columns_[i].width));
}

void List::show(const std::vector<Row>& rows) {
  for (; shown_.size() > rows.size(); shown_.pop_back())
    ListView_DeleteItem(handle_, static_cast<int>(shown_.size()) - 1);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (row == shown_.size()) {
      LVITEMW item = {};
      item.iItem = static_cast<int>(row);
      ListView_InsertItem(handle_, &item);
      shown_.emplace_back(columns_.size());
    }
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      if (shown_[row][column] == rows[row][column]) continue;
      shown_[row][column] = rows[row][column];
      std::wstring text = xmlbinc::harmless(rows[row][column], kMostLetters);
      ListView_SetItemText(handle_, static_cast<int>(row), static_cast<int>(column), text.data());
    }
  }
}

bool List::isAtEnd() const {
  return ListView_GetTopIndex(handle_) + ListView_GetCountPerPage(handle_) >= ListView_GetItemCount(handle_);
}

void List::showEnd() const { ListView_EnsureVisible(handle_, ListView_GetItemCount(handle_) - 1, FALSE); }

int List::selected() const { return ListView_GetNextItem(handle_, -1, LVNI_SELECTED); }

void List::select(int index) const {
  ListView_SetItemState(handle_, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

void List::copySelected() const {
  std::wstring text;
  for (int i = -1; (i = ListView_GetNextItem(handle_, i, LVNI_SELECTED)) >= 0;) {
    for (const std::wstring& cell : shown_[static_cast<std::size_t>(i)]) text += cell + L'\t';
    text.replace(text.size() - 1, 1, L"\r\n");
  }
  if (text.empty() || !OpenClipboard(handle_)) return;
  EmptyClipboard();
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  if (const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
    std::memcpy(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    if (!SetClipboardData(CF_UNICODETEXT, memory)) GlobalFree(memory);
  }
  CloseClipboard();
}

}  // namespace corvix::windows
