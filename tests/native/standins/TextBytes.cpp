// MultiByteToWideChar and its reverse; as the system's, they count when there is no room, and answer 0 for what is
// none.
#include <windows.h>
#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <utf8.h>

namespace {

template <class From, class To>
int handOut(const std::vector<From>& made, To* to, int most) {
  const int count = static_cast<int>(made.size());
  if (most == 0) return count;
  if (count > most) return 0;
  std::copy(made.begin(), made.end(), to);
  return count;
}

}  // namespace

int MultiByteToWideChar(UINT page, DWORD, const char* bytes, int size, wchar_t* text, int most) {
  std::vector<std::uint16_t> units;
  if (page != CP_UTF8) {
    std::transform(bytes, bytes + size, std::back_inserter(units), [](char one) { return static_cast<BYTE>(one); });
  } else {
    if (!utf8::is_valid(bytes, bytes + size)) return 0;
    utf8::utf8to16(bytes, bytes + size, std::back_inserter(units));
  }
  return handOut(units, text, most);
}

int WideCharToMultiByte(UINT page, DWORD, const wchar_t* text, int size, char* bytes, int most, const char*,
                        BOOL* isLossy) {
  std::vector<char> made;
  if (page != CP_UTF8) {
    if (isLossy) *isLossy = std::any_of(text, text + size, [](wchar_t unit) { return unit > 0xFF; });
    std::transform(text, text + size, std::back_inserter(made), [](wchar_t unit) { return static_cast<char>(unit); });
    return handOut(made, bytes, most);
  }
  try {
    utf8::utf16to8(text, text + size, std::back_inserter(made));
  } catch (const utf8::exception&) {
    return 0;
  }
  return handOut(made, bytes, most);
}
