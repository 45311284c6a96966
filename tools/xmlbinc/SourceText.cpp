#include "tools/xmlbinc/SourceText.h"

#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/Limits.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <utf8cpp/utf8.h>

namespace corvix::xmlbinc {

namespace {

bool takePrefix(std::string_view& bytes, std::string_view prefix) {
  if (!bytes.starts_with(prefix)) return false;
  bytes.remove_prefix(prefix.size());
  return true;
}

/// What is wrong with the text, or nothing; `text` gets all that could be decoded.
std::string decodeUtf8(std::string_view bytes, std::string& text) {
  const auto invalid = utf8::find_invalid(bytes.begin(), bytes.end());
  text.assign(bytes.begin(), invalid);
  return invalid == bytes.end() ? "" : "not valid UTF-8; save the file as UTF-8";
}

std::string decodeUtf16(std::string_view bytes, bool bigEndian, std::string& text) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<unsigned char>(bytes[i + (bigEndian ? 1 : 0)]);
    const auto high = static_cast<unsigned char>(bytes[i + (bigEndian ? 0 : 1)]);
    units.push_back(static_cast<char16_t>(high << 8 | low));
  }
  try {
    utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
  } catch (const utf8::exception&) {
    return "not valid UTF-16: half a surrogate pair";
  }
  return bytes.size() % 2 == 0 ? "" : "not valid UTF-16: the file has an odd number of bytes";
}

void normaliseLineEnds(std::string& text) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      text[kept++] = text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      text[kept++] = '\n';
    }
  }
  text.resize(kept);
}

void checkCharacters(const std::string& text) {
  for (auto at = text.begin(); at != text.end();) {
    const auto offset = static_cast<std::size_t>(at - text.begin());
    const char32_t c = utf8::next(at, text.end());
    if (isXmlChar(c)) continue;
    std::array<char, 64> message{};
    std::snprintf(message.data(), message.size(), "the character U+%04X is not allowed in XML",
                  static_cast<unsigned>(c));
    std::string hint = c == 0 ? "; UTF-16 without a byte order mark is not recognised" : "";
    throw InputError(offset, message.data() + hint);
  }
}

}  // namespace

void SourceText::load(std::string_view bytes) {
  if (bytes.size() > kMaxXmlBytes) {
    throw InputError(0, "too large: a descriptor has at most " + std::to_string(kMaxXmlBytes) + " bytes");
  }
  std::string problem;
  if (takePrefix(bytes, "\xFF\xFE")) {
    encoding_ = Encoding::Utf16Le;
    problem = decodeUtf16(bytes, false, text_);
  } else if (takePrefix(bytes, "\xFE\xFF")) {
    encoding_ = Encoding::Utf16Be;
    problem = decodeUtf16(bytes, true, text_);
  } else {
    takePrefix(bytes, "\xEF\xBB\xBF");
    problem = decodeUtf8(bytes, text_);
  }
  normaliseLineEnds(text_);
  checkCharacters(text_);
  if (!problem.empty()) throw InputError(text_.size(), problem);
}

Position SourceText::locate(std::size_t offset) const {
  offset = std::min(offset, text_.size());
  if (offset < locatedOffset_) {
    locatedOffset_ = 0;
    located_ = {1, 1};
  }
  for (; locatedOffset_ < offset; ++locatedOffset_) {
    const char c = text_[locatedOffset_];
    if (c == '\n') {
      ++located_.line;
      located_.column = 1;
    } else if ((c & 0xC0) != 0x80) {
      ++located_.column;
    }
  }
  return located_;
}

}  // namespace corvix::xmlbinc
