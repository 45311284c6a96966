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
// every class; they never change once a module with it was shipped. What the compiler can see of a mistake in the
// line it says in a sentence; it does not see a base that is left out, or two that are the wrong way round.
#pragma once

#include "core/baselib/identity/IdentityWalk.h"

namespace corvix {

// The object as a T, or null when it is none or `object` is null; a const T for a const object. Adds no reference.
template <class T, class Object>
std::conditional_t<std::is_const_v<Object>, const T, T>* query(Object* object) {
  using Asked = std::remove_const_t<Object>;
  return object ? static_cast<T*>(const_cast<Asked*>(object)->query(T::classInfo())) : nullptr;
}

}  // namespace corvix

#define CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)                                     \
 public:                                                                                               \
  using IdentityOwner = Class;                                                                         \
  static constexpr ::corvix::ClassWords classWords() noexcept { return {word1, word2, word3, word4}; } \
  static const char* className() noexcept { return #Class; }                                           \
  static const wchar_t* classNameW() noexcept { return L"" #Class; }                                   \
  static const ::corvix::stype_info& classInfo() noexcept { return ::corvix::identity::infoOf<Class>(); }

// The operation `query` hides the function of that name inside the class: this is the function once more. Always behind
// the operation, whose slot would else move where compilers group the functions of one name.
#define CORVIX_IDENTITY_QUERY                         \
  template <class Wanted_, class Object_>             \
  static auto query(Object_* object) {                \
    return ::corvix::query<Wanted_, Object_>(object); \
  }

// For a class that declares `typeInfo`, `query` and then CORVIX_IDENTITY_QUERY itself because nothing above it does.
#define CORVIX_IDENTITY_ROOT(Class, word1, word2, word3, word4) \
  CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)    \
  using IdentityBases = ::corvix::identity::Bases<>;            \
                                                                \
 private:

// Inside a member function, where the class is complete.
#define CORVIX_IDENTITY_CHECKS(Class)                                                                                \
  using Checks = ::corvix::identity::Checks<Class, IdentityBases>;                                                   \
  static_assert(::std::is_same_v<decltype(this), IdentityOwner*>,                                                    \
                "the CORVIX_IDENTITY of " #Class " stands in another class: give that one a line of its own");       \
  static_assert(Checks::kAreBases, "the CORVIX_IDENTITY of " #Class " names a class that is not a base of " #Class); \
  static_assert(Checks::kHaveIdentity,                                                                               \
                "the CORVIX_IDENTITY of " #Class " names a base that has no CORVIX_IDENTITY of its own");            \
  static_assert(Checks::kVirtualLast, "the CORVIX_IDENTITY of " #Class " names a virtual base before a plain one");  \
  static_assert(Checks::kHasOwnWords, #Class " has the four words of one of its bases: take four new random ones");  \
  static_assert(Checks::kBasesDiffer, "two bases of " #Class " have the same four words: a query would mix them up");

#define CORVIX_IDENTITY(Class, word1, word2, word3, word4, ...)                                         \
  CORVIX_IDENTITY_STATICS(Class, word1, word2, word3, word4)                                            \
  using IdentityBases = ::corvix::identity::Bases<__VA_ARGS__>;                                         \
  const ::corvix::stype_info& typeInfo() const noexcept override { return classInfo(); }                \
  void* query(const ::corvix::stype_info& wanted, ::corvix::QueryVisitor* visitor = nullptr) override { \
    CORVIX_IDENTITY_CHECKS(Class)                                                                       \
    return ::corvix::identity::query(this, wanted, visitor);                                            \
  }                                                                                                     \
  CORVIX_IDENTITY_QUERY                                                                                 \
                                                                                                        \
 private:
