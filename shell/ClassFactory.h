// What a plug-in module exports: one function, `queryClassFactoryLocal`, that gives the module's class factory.
// Most modules need no more than the line
//
//   CORVIX_PLUGIN({L"Example.Greeter", corvix::create<Greeter>})
//
// with one row for each interface that the module's descriptor declares.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/objects/SmartObject.h"

#include <string_view>

namespace corvix {

// Makes the objects of one module. Lives as long as the module is loaded. [shell thread]
class CORVIX_API BClassFactory : public BSmartObject {
  CORVIX_IDENTITY(BClassFactory, 0x0D61F4B3, 0x4E95278C, 0xA8137CE0, 0x5BF29D64, BSmartObject)

 public:
  // A new object for an interface of the module's descriptor, owned by the caller; null when the factory does
  // not know the name. May throw: the object is then not made and the text of a std::exception is reported.
  virtual IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier) = 0;
};

// The form of `queryClassFactoryLocal`. Adds no reference.
using QueryClassFactory = BClassFactory* (*)();

template <class Class>
IBSmartObject* create() {
  static_assert(std::is_base_of_v<IBSmartObject, Class>,
                "what a module makes is counted: derive the class from corvix::BSmartObject");
  static_assert(identity::HasIdentity<Class>::value,
                "the class has no CORVIX_IDENTITY of its own: it would answer to the names of its base");
  static_assert(!std::is_base_of_v<IBSmartObject, Class> || identity::leadsTo<IBSmartObject, Class>(),
                "the CORVIX_IDENTITY of the class leaves out the base that makes it a counted object");
  return new Class;
}

// A row of a module's factory: what makes the objects of one interface.
struct FactoryRow {
  const wchar_t* interfaceName;
  IBSmartObject* (*create)();
};

// A factory over a table of interface names; of two rows with the same name the first counts. It looks at a few rows
// one by one, more are looked up.
class TableFactory final : public BClassFactory {
 public:
  template <std::size_t count>
  explicit TableFactory(const FactoryRow (&rows)[count]) noexcept : rows_(rows), count_(count) {
    if (count > kFewRows) arrange();
  }

  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info&) override {
    if (!interfaceName) return nullptr;
    const FactoryRow* const row = places_ ? *placeOf(interfaceName) : findInTurn(interfaceName);
    return row ? row->create() : nullptr;
  }

 private:
  static constexpr std::size_t kFewRows = 8;

  // Most rows differ in one of the first letters.
  static bool isSame(const wchar_t* a, const wchar_t* b) noexcept {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
  }

  const FactoryRow* findInTurn(const wchar_t* name) const noexcept {
    for (std::size_t i = 0; i < count_; ++i) {
      if (isSame(name, rows_[i].interfaceName)) return rows_ + i;
    }
    return nullptr;
  }

  // Where the row of that name is, or would be: at the place that its letters say, or at one of those behind it.
  const FactoryRow** placeOf(const wchar_t* name) const noexcept {
    u32 hash = 0;
    for (const wchar_t* at = name; *at; ++at) hash = (hash ^ *at) * 0x9E3779B1u;
    std::size_t place = (hash ^ hash >> 15) & mask_;
    while (places_[place] && !isSame(name, places_[place]->interfaceName)) place = (place + 1) & mask_;
    return &places_[place];
  }

  // Half of the places stay free. Without memory the rows are looked at one by one.
  void arrange() noexcept {
    std::size_t places = kFewRows * 4;
    while (places < count_ * 2) places *= 2;
    if (!places_.tryAllocate(places)) return;
    mask_ = places - 1;
    for (std::size_t i = 0; i < places; ++i) places_[i] = nullptr;
    for (std::size_t i = count_; i-- > 0;) *placeOf(rows_[i].interfaceName) = rows_ + i;
  }

  const FactoryRow* rows_;
  std::size_t count_;
  HeapBuffer<const FactoryRow*> places_;
  std::size_t mask_ = 0;
};

}  // namespace corvix

#define CORVIX_PLUGIN(...)                                                     \
  extern "C" CORVIX_EXPORT ::corvix::BClassFactory* queryClassFactoryLocal() { \
    static const ::corvix::FactoryRow rows[] = {__VA_ARGS__};                  \
    static ::corvix::TableFactory factory(rows);                               \
    return &factory;                                                           \
  }
