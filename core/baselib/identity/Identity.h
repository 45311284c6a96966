// How a class gets its identity: one line inside the class names it, its four words and its bases.
//
//   class Clock : public BSmartObject, public IClock {
//     CORVIX_IDENTITY(Clock, 0x1D5E6A01, 0x4C1F22B0, 0x91AA7D3C, 0x5E0B8F14, BSmartObject, IClock)
//    public:
//     ...
//   };
//
// That gives the class `classInfo()`, `className()`, `classNameW()` and its answers to `typeInfo` and `query`.
// Bases are named in the order in which they are declared, virtual ones last. Take four new random words for
// every class; they never change once a module with it was shipped.
#pragma once

#include "core/baselib/identity/IdentityWalk.h"

#define CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)                                     \
 public:                                                                                               \
  static constexpr ::corvix::ClassWords classWords() noexcept { return {word1, word2, word3, word4}; } \
  static const char* className() noexcept { return #Class; }                                           \
  static const wchar_t* classNameW() noexcept { return L"" #Class; }                                   \
  static const ::corvix::stype_info& classInfo() noexcept { return ::corvix::identity::infoOf<Class>(); }

// For a class that declares `typeInfo` and `query` itself because nothing above it does.
#define CORVIX_IDENTITY_ROOT(Class, word1, word2, word3, word4) \
  CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)    \
  using IdentityBases = ::corvix::identity::Bases<>;            \
                                                                \
 private:

#define CORVIX_IDENTITY(Class, word1, word2, word3, word4, ...)                                         \
  CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)                                            \
  using IdentityBases = ::corvix::identity::Bases<__VA_ARGS__>;                                         \
  const ::corvix::stype_info& typeInfo() const noexcept override { return classInfo(); }                \
  void* query(const ::corvix::stype_info& wanted, ::corvix::QueryVisitor* visitor = nullptr) override { \
    return ::corvix::identity::query(this, wanted, visitor);                                            \
  }                                                                                                     \
                                                                                                        \
 private:

namespace corvix {

// The object as a T, or null when it is none or `object` is null. Adds no reference.
template <class T, class Object>
T* query(Object* object) {
  return object ? static_cast<T*>(object->query(T::classInfo())) : nullptr;
}

}  // namespace corvix
