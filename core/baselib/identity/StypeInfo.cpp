#include "core/baselib/identity/StypeInfo.h"

#include "core/baselib/identity/RttiSupport.h"

#include <cstring>

namespace corvix {

namespace {

constexpr char kTextTemplate[] = "0x00000000, 0x00000000, 0x00000000, 0x00000000 ";
static_assert(sizeof kTextTemplate == stype_info::kTextLength + 1);

constexpr std::size_t kSlotWidth = 12;  // "0x00000000, "
constexpr std::size_t kLastDigit = 9;   // of the first slot
constexpr char kDigits[] = "0123456789ABCDEF";

void writeDigits(char* lastDigit, u32 word) noexcept {
  for (; word; word >>= 4) *lastDigit-- = kDigits[word & 15];
}

}  // namespace

// This file is compiled so that a constructor may look at what a former construction of the same static
// object left (see its options in the build).
stype_info::stype_info(const ClassWords& words, Text text) noexcept : words_(words) {
  if (text == Text::KeepBuilt && text_[0]) return;
  std::memcpy(text_, kTextTemplate, sizeof text_);
  char* slot = text_ + kLastDigit;
  for (u32 word : {words.word1, words.word2, words.word3, words.word4}) {
    writeDigits(slot, word);
    slot += kSlotWidth;
  }
}

const char* stype_info::className() const noexcept { return ""; }

const wchar_t* stype_info::classNameW() const noexcept { return L""; }

void* stype_info::query(IBRTTISupport* object, const stype_info& wanted, QueryVisitor* visitor) const {
  return object ? object->query(wanted, visitor) : nullptr;
}

namespace identity {

void enterClass(QueryVisitor& visitor, const stype_info& info, void* object) { visitor.enter(info, object); }

void leaveClass(QueryVisitor& visitor) { visitor.leave(); }

}  // namespace identity

}  // namespace corvix
