// stype_info: the identifier of a class, four 32-bit words that hold over every module of the process, with
// the class's name and the words as text. Two identifiers are the same class when their words are equal:
// never compare addresses, each module has instances of its own. Static, immutable. [any thread]
#pragma once

#include "core/baselib/Api.h"

#include <initializer_list>
#include <optional>

namespace corvix {

class IBRTTISupport;
class QueryVisitor;

// The four words alone; what a class declares at compile time.
struct ClassWords {
  u32 word1;
  u32 word2;
  u32 word3;
  u32 word4;

  friend constexpr bool operator==(const ClassWords& a, const ClassWords& b) noexcept {
    return a.word1 == b.word1 && a.word2 == b.word2 && a.word3 == b.word3 && a.word4 == b.word4;
  }
  friend constexpr bool operator!=(const ClassWords& a, const ClassWords& b) noexcept { return !(a == b); }
};

// Reads "0xD922852A, 0x279643b9, 188, 0755": four numbers, each decimal, hexadecimal after "0x" or octal
// after "0", with blanks and a sign allowed before it and a comma right behind all but the last. Nothing
// unless all four are there; what follows the fourth is ignored. Only the low 32 bits of a number are kept.
CORVIX_API std::optional<ClassWords> parseClassWords(const wchar_t* text, std::size_t length) noexcept;

class stype_info {
 public:
  // 47 characters and a zero: "0x" and eight upper-case digits four times, each but the last followed by a
  // comma, every one by a blank.
  static constexpr std::size_t kTextLength = 47;

  // For static objects only: a text that a former construction of the same object built is kept.
  CORVIX_API stype_info(u32 word1, u32 word2, u32 word3, u32 word4) noexcept;
  stype_info(const stype_info&) = delete;
  stype_info& operator=(const stype_info&) = delete;

  // The class's exact name; empty for an identifier that was read from text.
  CORVIX_API virtual const char* className() const noexcept;
  CORVIX_API virtual const wchar_t* classNameW() const noexcept;

  // Null for a null object, else what the object's own `query` answers.
  CORVIX_API virtual void* query(IBRTTISupport* object, const stype_info& wanted, QueryVisitor* visitor) const;

  // The same for an object in the hands of somebody who has one of its interfaces.
  template <class Object>
  void* query(Object* object, const stype_info& wanted, QueryVisitor* visitor = nullptr) const {
    return object ? object->query(wanted, visitor) : nullptr;
  }

  constexpr const ClassWords& words() const noexcept { return words_; }
  constexpr const char* text() const noexcept { return text_; }

 protected:
  struct OfAnyLifetime {};
  CORVIX_API stype_info(const ClassWords& words, OfAnyLifetime) noexcept;
  explicit constexpr stype_info(const ClassWords& words) noexcept : words_(words), text_{} { buildText(); }
  ~stype_info() = default;

 private:
  constexpr void buildText() noexcept {
    char* at = text_;
    for (u32 word : {words_.word1, words_.word2, words_.word3, words_.word4}) {
      *at++ = '0';
      *at++ = 'x';
      for (int shift = 28; shift >= 0; shift -= 4) *at++ = "0123456789ABCDEF"[(word >> shift) & 15];
      *at++ = ',';
      *at++ = ' ';
    }
    // Behind the fourth group there is a blank alone.
    text_[kTextLength - 1] = ' ';
    text_[kTextLength] = 0;
  }

  ClassWords words_;
  char text_[kTextLength + 1];
};

inline bool operator==(const stype_info& a, const stype_info& b) noexcept { return a.words() == b.words(); }
inline bool operator!=(const stype_info& a, const stype_info& b) noexcept { return !(a == b); }

// An identifier that stands for no class of the program, of any lifetime: one that was read from a descriptor.
class PlainIdentifier final : public stype_info {
 public:
  explicit PlainIdentifier(const ClassWords& words) noexcept : stype_info(words, OfAnyLifetime()) {}
};

}  // namespace corvix
