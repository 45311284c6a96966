// Adds a scheme: locations that are the data themselves, as RFC 2397 has them: "data:text/plain,Hello%20there" and
// "data:application/pdf;base64,JVBERi0...".
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/suppliers/Supplier.h"
#include "descriptor.h"
#include "shell/Plugin.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace example {

namespace {

int hexDigit(wchar_t c) {
  const std::wstring_view digits = L"0123456789abcdef";
  const auto found = digits.find(c >= L'A' && c <= L'F' ? static_cast<wchar_t>(c | 0x20) : c);
  return found == std::wstring_view::npos ? -1 : static_cast<int>(found);
}

// The bytes of a text: those that stand there, and those that escapes stand for. Nothing if a character is
// neither.
std::optional<std::string> unescapedBytes(std::wstring_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] > 126 || text[i] < 33) return std::nullopt;
    if (text[i] != L'%') {
      bytes += static_cast<char>(text[i]);
      continue;
    }
    const int high = text.size() - i > 2 ? hexDigit(text[i + 1]) : -1;
    const int low = text.size() - i > 2 ? hexDigit(text[i + 2]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

std::optional<std::string> fromBase64(std::string_view text) {
  const std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  std::string bytes;
  unsigned bits = 0;
  int bitCount = 0;
  for (const char c : text) {
    const auto digit = digits.find(c);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(digit);
    bitCount += 6;
    if (bitCount < 8) continue;
    bitCount -= 8;
    bytes += static_cast<char>(bits >> bitCount & 0xFF);
  }
  return bytes;
}

bool endsWith(std::wstring_view text, std::wstring_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// What a location of the scheme carries; nothing if it is none.
std::optional<std::string> carriedBy(std::wstring_view location) {
  const auto comma = location.find(L',');
  const auto colon = location.find(L':');
  if (comma == std::wstring_view::npos || colon > comma) return std::nullopt;
  std::wstring_view data = location.substr(comma + 1);
  data = data.substr(0, data.find(L'#'));
  std::optional<std::string> bytes = unescapedBytes(data);
  return bytes && endsWith(location.substr(0, comma), L";base64") ? fromBase64(*bytes) : bytes;
}

}  // namespace

class DataSupplier : public corvix::BSmartObject, public corvix::IBSupplier {
  CORVIX_IDENTITY(DataSupplier, 0x6B10E5D8, 0x43F7920C, 0xA4C8376E, 0x15D9B2F3, corvix::BSmartObject,
                  corvix::IBSupplier)

 public:
  bool setLocation(const wchar_t* location) override {
    if (std::optional<std::string> bytes = carriedBy(location)) {
      bytes_ = std::move(*bytes);
      return true;
    }
    return false;
  }

  // There is nothing that could be relative to such a location.
  corvix::IBStream* open(corvix::u32 flags, const wchar_t* relative, corvix::i32 start, corvix::i32 length) override {
    if ((flags & corvix::supply::kWrite) || relative) return nullptr;
    std::string_view part = bytes_;
    if (start > 0) part.remove_prefix(std::min(part.size(), static_cast<std::size_t>(start)));
    if (length >= 0) part = part.substr(0, static_cast<std::size_t>(length));
    using corvix::BMemoryInputStream;
    return new BMemoryInputStream(part.data(), static_cast<corvix::u32>(part.size()), BMemoryInputStream::Bytes::Copy);
  }

 private:
  std::string bytes_;
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Supplier_data, example::DataSupplier>())
