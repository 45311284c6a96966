#include "core/baselib/identity/StypeInfo.h"

#include "core/baselib/identity/RttiSupport.h"

namespace corvix {

// This file is compiled so that a constructor may look at what a former construction of the same static
// object left (see its options in the build).
stype_info::stype_info(u32 word1, u32 word2, u32 word3, u32 word4) noexcept : words_{word1, word2, word3, word4} {
  if (!text_[0]) buildText();
}

// In the library alone: its table of virtual functions is not another module's to link with.
stype_info::stype_info(const ClassWords& words, OfAnyLifetime) noexcept : stype_info(words) {}

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
