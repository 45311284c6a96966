// What the header that is made from a descriptor needs: rows of CORVIX_PLUGIN for declared interfaces, checked by the
// compiler.
//
//   #include "descriptor.h"
//
//   CORVIX_PLUGIN(corvix::rowFor<descriptor::My_Interface, MyObject>())
#pragma once

#include "shell/ClassFactory.h"

#include <string_view>

// A class that is itself what an Interface of the descriptor declares: its words are those.
#define CORVIX_DECLARED_IDENTITY(Class, Declared, ...)                                                               \
  CORVIX_IDENTITY(Class, Declared::words.word1, Declared::words.word2, Declared::words.word3, Declared::words.word4, \
                  __VA_ARGS__)

// CORVIX_PLUGIN in a module with such a header: rows are constants, and what is declared and what is made must agree.
#define CORVIX_CHECKED_PLUGIN(...)                                             \
  namespace {                                                                  \
  struct CorvixPluginRows {                                                    \
    static constexpr ::corvix::FactoryRow rows[] = {__VA_ARGS__};              \
  };                                                                           \
  }                                                                            \
  static_assert(::descriptor::isComplete<CorvixPluginRows>(), "");             \
  extern "C" CORVIX_EXPORT ::corvix::BClassFactory* queryClassFactoryLocal() { \
    static ::corvix::TableFactory factory(CorvixPluginRows::rows);             \
    return &factory;                                                           \
  }

namespace corvix {

template <class Class>
constexpr bool answersTo(const ClassWords& wanted) noexcept;

template <class... Base>
constexpr bool isAmong(identity::Bases<Base...>, [[maybe_unused]] const ClassWords& wanted) noexcept {
  return (answersTo<Base>(wanted) || ...);
}

// Whether a query of an object of this class finds the identifier.
template <class Class>
constexpr bool answersTo(const ClassWords& wanted) noexcept {
  if constexpr (std::is_same_v<Class, IBRTTISupport>) {
    return false;
  } else {
    return Class::classWords() == wanted || isAmong(typename Class::IdentityBases{}, wanted);
  }
}

// The row of a declared interface, whose objects are of this class. An error of the compiler, in the descriptor's line,
// when they do not answer to its identifier.
template <class Declared, class Class>
constexpr FactoryRow rowFor() noexcept {
  Declared::template check<Class>();
  return {Declared::name, &create<Class>};
}

template <class Rows>
constexpr bool hasRow(std::wstring_view name) noexcept {
  for (const FactoryRow& row : Rows::rows) {
    if (name == row.interfaceName) return true;
  }
  return false;
}

// Whether all rows are of these names; the first is null.
template <class Rows, class... Name>
constexpr bool hasOnly(std::nullptr_t, Name... names) noexcept {
  for ([[maybe_unused]] const FactoryRow& row : Rows::rows) {
    if (!((std::wstring_view(row.interfaceName) == names) || ...)) return false;
  }
  return true;
}

}  // namespace corvix
