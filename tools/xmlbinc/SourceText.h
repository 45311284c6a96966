// An XML file as text: decoded to UTF-8, line ends made one LF each, every character one that XML allows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

enum class Encoding { Utf8, Utf16Le, Utf16Be };

/// Both counted from 1; the column in characters.
struct Position {
  std::size_t line;
  std::size_t column;
};

class SourceText {
 public:
  /// Takes UTF-8 with or without a byte order mark, or UTF-16 with one. Throws InputError; the offset is then into
  /// what could be decoded, which positions can be asked for.
  void load(std::string_view bytes);

  const std::string& text() const { return text_; }
  Encoding encoding() const { return encoding_; }

  /// Cheap when asked for growing offsets.
  Position locate(std::size_t offset) const;

 private:
  std::string text_;
  Encoding encoding_ = Encoding::Utf8;
  mutable std::size_t locatedOffset_ = 0;
  mutable Position located_{1, 1};
};

}  // namespace corvix::xmlbinc
