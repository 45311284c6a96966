#include "plugins/format-text/TextCoding_p.h"

#include "shell/documents/TextSource.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleMark = "\xFF\xFE";
constexpr std::string_view kBigMark = "\xFE\xFF";

bool isMarked(i32 encoding) noexcept {
  return encoding == ITextEditor::kUtf8Marked || encoding == ITextEditor::kUtf16LittleMarked ||
         encoding == ITextEditor::kUtf16BigMarked;
}

bool isUtf16(i32 encoding) noexcept {
  return encoding >= ITextEditor::kUtf16Little && encoding <= ITextEditor::kUtf16BigMarked;
}

bool isBig(i32 encoding) noexcept {
  return encoding == ITextEditor::kUtf16Big || encoding == ITextEditor::kUtf16BigMarked;
}

// Where the system's own is UTF-8 there is no text of bytes that is none: what Western Europe had then.
UINT codePageOf(i32 encoding) noexcept {
  if (encoding != ITextEditor::kAnsi) return CP_UTF8;
  constexpr UINT kWesternEuropean = 1252;
  const UINT own = GetACP();
  return own == CP_UTF8 ? kWesternEuropean : own;
}

// Much of every other byte of Latin text in UTF-16 is zero, and none of the rest.
bool hasZeros(std::string_view bytes, std::size_t first) noexcept {
  constexpr std::size_t kLooked = 1024;
  std::size_t zeros = 0, others = 0;
  for (std::size_t i = 0; i + 1 < std::min(bytes.size(), kLooked); i += 2) {
    zeros += bytes[i + first] == 0;
    others += bytes[i + 1 - first] == 0;
  }
  return others == 0 && zeros > 0 && zeros * 4 >= std::min(bytes.size(), kLooked);
}

// In one pass: no encoding has more units than bytes.
bool convert(std::string_view bytes, UINT codePage, TextUnits& units) {
  const auto size = static_cast<int>(bytes.size());
  if (!size) return true;
  units.resize(bytes.size());
  const int count = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), size, units.data(), size);
  units.resize(static_cast<std::size_t>(std::max(count, 0)));
  return count > 0;
}

std::string_view markOf(i32 encoding) noexcept {
  if (!isMarked(encoding)) return {};
  return !isUtf16(encoding) ? kUtf8Mark : isBig(encoding) ? kBigMark : kLittleMark;
}

std::wstring_view endOf(u8 kind) noexcept {
  return kind == ITextEditor::kCrLf ? L"\r\n" : kind == ITextEditor::kCr ? L"\r" : L"\n";
}

}  // namespace

i32 encodingOf(std::string_view bytes) noexcept {
  if (bytes.starts_with(kUtf8Mark)) return ITextEditor::kUtf8Marked;
  if (bytes.starts_with(kLittleMark)) return ITextEditor::kUtf16LittleMarked;
  if (bytes.starts_with(kBigMark)) return ITextEditor::kUtf16BigMarked;
  if (hasZeros(bytes, 1)) return ITextEditor::kUtf16Little;
  if (hasZeros(bytes, 0)) return ITextEditor::kUtf16Big;
  return ITextEditor::kUtf8;
}

void appendLines(std::wstring_view raw, TextUnits& text, LineEnds& ends) {
  text.reserve(text.size() + raw.size());
  const wchar_t* at = raw.data();
  const wchar_t* const end = at + raw.size();
  for (const wchar_t* start = at;; start = at) {
    while (at != end && *at != L'\n' && *at != L'\r') ++at;
    text.append(start, at);
    if (at == end) return;
    const bool isPair = *at == L'\r' && at + 1 != end && at[1] == L'\n';
    ends.push_back(static_cast<u8>(isPair ? ITextEditor::kCrLf : *at == L'\r' ? ITextEditor::kCr : ITextEditor::kLf));
    text += L'\n';
    at += isPair ? 2 : 1;
  }
}

const wchar_t* decodeText(std::string_view bytes, i32 encoding, TextUnits& text, LineEnds& ends) {
  bytes.remove_prefix(markOf(encoding).size());
  TextUnits raw;
  if (isUtf16(encoding)) {
    if (bytes.size() % 2) return L"it is UTF-16 and ends in the middle of a unit";
    raw.resize(bytes.size() / 2);
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(raw.data()));
    if (isBig(encoding)) {
      for (wchar_t& unit : raw) unit = static_cast<wchar_t>(unit << 8 | unit >> 8);
    }
  } else if (!convert(bytes, codePageOf(encoding), raw)) {
    return L"it is neither UTF-8 nor text of the system's code page";
  }
  if (raw.find(L'\0') != raw.npos) return L"there are zeros in it: it is no text";
  appendLines(raw, text, ends);
  return nullptr;
}

bool toUtf8(std::wstring_view text, Bytes& bytes) {
  const auto size = static_cast<int>(text.size());
  if (!size) return true;
  const int count = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(), size, nullptr, 0, nullptr, nullptr);
  if (count <= 0) return false;
  const std::size_t before = bytes.size();
  bytes.resize(before + static_cast<std::size_t>(count));
  return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(), size, bytes.data() + before, count, nullptr,
                             nullptr) == count;
}

const wchar_t* encodeText(std::wstring_view text, const LineEnds& ends, i32 encoding, Bytes& bytes) {
  TextUnits raw;
  raw.reserve(text.size() + ends.size());
  auto end = ends.begin();
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t next = std::min(text.find(L'\n', at), text.size());
    raw.append(text.substr(at, next - at));
    if (next < text.size()) raw.append(endOf(end != ends.end() ? *end++ : u8{ITextEditor::kLf}));
    at = next + 1;
  }
  bytes = markOf(encoding);
  if (isUtf16(encoding)) {
    if (isBig(encoding)) {
      for (wchar_t& unit : raw) unit = static_cast<wchar_t>(unit << 8 | unit >> 8);
    }
    bytes.append(reinterpret_cast<const char*>(raw.data()), raw.size() * sizeof(wchar_t));
    return nullptr;
  }
  if (encoding != ITextEditor::kAnsi)
    return toUtf8(raw, bytes) ? nullptr : L"there is half a character in it, which UTF-8 cannot hold";
  if (raw.empty()) return nullptr;
  const UINT page = codePageOf(encoding);
  const auto size = static_cast<int>(raw.size());
  BOOL isLossy = FALSE;
  const int count = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, raw.data(), size, nullptr, 0, nullptr, &isLossy);
  if (count <= 0 || isLossy) return L"there are characters in it that the system's code page has not: save it as UTF-8";
  bytes.resize(static_cast<std::size_t>(count));
  WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, raw.data(), size, bytes.data(), count, nullptr, nullptr);
  return nullptr;
}

}  // namespace corvix
