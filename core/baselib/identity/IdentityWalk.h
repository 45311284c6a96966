// The walk over a class and its bases, generated from what CORVIX_IDENTITY declares. Not called directly.
#pragma once

#include "core/baselib/identity/StypeInfo.h"

#include <type_traits>

namespace corvix {

class IBRTTISupport;
class QueryVisitor;

namespace identity {

template <class... Base>
struct Bases {};

template <class Class>
class InfoOf final : public stype_info {
 public:
  constexpr InfoOf() noexcept : stype_info(Class::classWords()) {}
  const char* className() const noexcept override { return Class::className(); }
  const wchar_t* classNameW() const noexcept override { return Class::classNameW(); }
};

// One instance a module, complete before any code of the module runs.
template <class Class>
const stype_info& infoOf() noexcept {
  static constexpr InfoOf<Class> info;
  return info;
}

// A virtual base is one from which there is no static way down.
template <class Base, class Class, class = void>
struct IsVirtualBase : std::true_type {};
template <class Base, class Class>
struct IsVirtualBase<Base, Class, std::void_t<decltype(static_cast<Class*>(static_cast<Base*>(nullptr)))>>
    : std::false_type {};

// Whether a class has an identity line itself, not only one that it inherits.
template <class Class, class = void>
struct HasIdentity : std::false_type {};
template <class Class>
struct HasIdentity<Class, std::void_t<typename Class::IdentityOwner>>
    : std::is_same<typename Class::IdentityOwner, Class> {};

// Whether the walk from a class on comes to another class with the words of Wanted.
template <class Wanted, class Class>
constexpr bool isMistaken() noexcept;

template <class Wanted, class... Base>
constexpr bool isMistakenIn(Bases<Base...>) noexcept {
  return (isMistaken<Wanted, Base>() || ...);
}

template <class Wanted, class Class>
constexpr bool isMistaken() noexcept {
  return (!std::is_same_v<Wanted, Class> && Wanted::classWords() == Class::classWords()) ||
         isMistakenIn<Wanted>(typename Class::IdentityBases{});
}

// Whether the walk from a class on comes to Wanted.
template <class Wanted, class Class>
constexpr bool leadsTo() noexcept;

template <class Wanted, class... Base>
constexpr bool leadsToIn(Bases<Base...>) noexcept {
  return (leadsTo<Wanted, Base>() || ...);
}

template <class Wanted, class Class>
constexpr bool leadsTo() noexcept {
  return std::is_same_v<Wanted, Class> || leadsToIn<Wanted>(typename Class::IdentityBases{});
}

template <class Class, class... Base>
constexpr bool virtualBasesAreLast() noexcept {
  bool sawVirtual = false;
  bool areLast = true;
  ((areLast = areLast && (IsVirtualBase<Base, Class>::value || !sawVirtual),
    sawVirtual = sawVirtual || IsVirtualBase<Base, Class>::value),
   ...);
  return areLast;
}

// What the compiler can see of a class's identity line.
template <class Class, class Line>
struct Checks;
template <class Class, class... Base>
struct Checks<Class, Bases<Base...>> {
  static constexpr bool kAreBases = (std::is_base_of_v<Base, Class> && ...);
  static constexpr bool kHaveIdentity = (HasIdentity<Base>::value && ...);
  static constexpr bool kVirtualLast = !kAreBases || virtualBasesAreLast<Class, Base...>();
  static constexpr bool kHasOwnWords = !isMistaken<Class, Class>();
  static constexpr bool kBasesDiffer = (!isMistakenIn<Base>(Bases<Base...>{}) && ...);
};

// The plain search: compares words only, in the order of the walk.
template <class Class>
void* find(Class* self, const stype_info& wanted) noexcept;

template <class Class, class... Base>
void* findInBases([[maybe_unused]] Class* self, [[maybe_unused]] const stype_info& wanted, Bases<Base...>) noexcept {
  void* found = nullptr;
  static_cast<void>(((found = find<Base>(self, wanted)) || ...));
  return found;
}

template <class Class>
inline void* find([[maybe_unused]] Class* self, [[maybe_unused]] const stype_info& wanted) noexcept {
  if constexpr (std::is_same_v<Class, IBRTTISupport>) {
    return nullptr;  // no stop of the walk
  } else {
    return wanted.words() == Class::classWords() ? static_cast<void*>(self)
                                                 : findInBases(self, wanted, typename Class::IdentityBases{});
  }
}

enum class Walk {
  Missed,     // every class entered below here was left
  Found,      // ends at once, nothing is left
  FoundNull,  // the class matched but there is no object: everything open is left
};

// Keeps this header free of QueryVisitor's definition, which needs an identity itself.
CORVIX_API void enterClass(QueryVisitor& visitor, const stype_info& info, void* object);
CORVIX_API void leaveClass(QueryVisitor& visitor);

template <class Class>
Walk walk(Class* self, const stype_info& wanted, QueryVisitor& visitor, void*& result);

template <class Class, class... Base>
Walk walkBases([[maybe_unused]] Class* self, [[maybe_unused]] const stype_info& wanted,
               [[maybe_unused]] QueryVisitor& visitor, [[maybe_unused]] void*& result, Bases<Base...>) {
  Walk outcome = Walk::Missed;
  static_cast<void>((((outcome = walk<Base>(self, wanted, visitor, result)) != Walk::Missed) || ...));
  return outcome;
}

template <class Class>
Walk walk([[maybe_unused]] Class* self, [[maybe_unused]] const stype_info& wanted,
          [[maybe_unused]] QueryVisitor& visitor, [[maybe_unused]] void*& result) {
  if constexpr (std::is_same_v<Class, IBRTTISupport>) {
    return Walk::Missed;
  } else {
    enterClass(visitor, Class::classInfo(), self);
    Walk outcome = Walk::FoundNull;
    if (wanted.words() != Class::classWords()) {
      outcome = walkBases(self, wanted, visitor, result, typename Class::IdentityBases{});
    } else if (self) {
      result = self;
      outcome = Walk::Found;
    }
    if (outcome != Walk::Found) leaveClass(visitor);
    return outcome;
  }
}

template <class Class>
void* query(Class* self, const stype_info& wanted, QueryVisitor* visitor) {
  if (!visitor) return find(self, wanted);
  void* result = nullptr;
  walk(self, wanted, *visitor, result);
  return result;
}

}  // namespace identity
}  // namespace corvix
