// The end of the program's log, read while it is written.
#include "plugins/inspector/Tab.h"

#include "core/baselib/system/Log.h"

#include <algorithm>

namespace corvix::inspector {

namespace {

constexpr i64 kTailBytes = i64{64} * 1024;

// The last bytes of a file; `size` is that of the whole, -1 when there is none.
std::string tailOf(const wchar_t* path, i64& size) {
  std::string tail;
  size = -1;
  const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  LARGE_INTEGER whole = {};
  if (file == INVALID_HANDLE_VALUE) return tail;
  if (GetFileSizeEx(file, &whole)) {
    size = whole.QuadPart;
    LARGE_INTEGER start;
    start.QuadPart = std::max<i64>(0, size - kTailBytes);
    tail.resize(static_cast<std::size_t>(size - start.QuadPart));
    DWORD read = 0;
    if (!SetFilePointerEx(file, start, nullptr, FILE_BEGIN) ||
        !ReadFile(file, tail.data(), static_cast<DWORD>(tail.size()), &read, nullptr))
      read = 0;
    tail.resize(read);
    // Not from the middle of a line.
    if (start.QuadPart > 0) tail.erase(0, tail.find('\n') + 1);
  }
  CloseHandle(file);
  return tail;
}

// The log is in the system's code page.
std::wstring wideText(std::string_view text) {
  std::wstring wide(text.size(), L'\0');
  const int size = static_cast<int>(text.size());
  wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size)));
  return wide;
}

class LogTab : public Tab {
 public:
  void refresh() override {
    CheckDlgButton(page(), kWritten, isLogSwitchedOn() ? BST_CHECKED : BST_UNCHECKED);
    i64 size = 0;
    const WideString path = logPath();
    const std::string tail = tailOf(path.c_str(), size);
    if (size == seenBytes_) return;
    seenBytes_ = size;
    const bool followsEnd = list_.isAtEnd();
    std::vector<Row> rows;
    for (std::size_t at = 0; at < tail.size();) {
      const std::size_t end = std::min(tail.find('\n', at), tail.size());
      rows.push_back({wideText(std::string_view(tail).substr(at, end - at - (end > at && tail[end - 1] == '\r')))});
      at = end + 1;
    }
    list_.show(rows);
    if (followsEnd) list_.showEnd();
    say(size < 0 ? L"There is no log yet: " + std::wstring(path) : std::wstring(path));
  }

  void command(int id, int) override {
    if (id != kWritten) return;
    if (!switchLog(IsDlgButtonChecked(page(), kWritten) == BST_CHECKED)) say(L"The registry does not let us.");
  }

 private:
  static constexpr int kWritten = 1;

  void make() override {
    list_.make(page(), kList, {{L"Log", 1600}});
    addToRow(L"BUTTON", L"Write a &log from the next start on", WS_TABSTOP | BS_AUTOCHECKBOX, kWritten, 230);
    addToRow(L"STATIC", L"", SS_NOPREFIX | SS_PATHELLIPSIS | SS_CENTERIMAGE, kSaid, 0);
  }

  i64 seenBytes_ = -2;
};

}  // namespace

std::unique_ptr<Tab> makeLogTab() { return std::make_unique<LogTab>(); }

}  // namespace corvix::inspector
