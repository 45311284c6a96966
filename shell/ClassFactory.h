// What a plug-in module exports: one function, `queryClassFactoryLocal`, that gives the module's class factory.
// Most modules need no more than the line
//
//   CORVIX_PLUGIN({L"Example.Greeter", corvix::create<Greeter>})
//
// with one row for each interface that the module's descriptor declares.
#pragma once

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

// A factory over a table of interface names.
struct FactoryRow {
  const wchar_t* interfaceName;
  IBSmartObject* (*create)();
};

class TableFactory final : public BClassFactory {
 public:
  template <std::size_t count>
  explicit TableFactory(const FactoryRow (&rows)[count]) noexcept : rows_(rows), count_(count) {}

  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info&) override {
    for (std::size_t i = 0; interfaceName && i < count_; ++i) {
      if (isSame(interfaceName, rows_[i].interfaceName)) return rows_[i].create();
    }
    return nullptr;
  }

 private:
  // Most rows differ in one of the first letters.
  static bool isSame(const wchar_t* a, const wchar_t* b) noexcept {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
  }

  const FactoryRow* rows_;
  std::size_t count_;
};

}  // namespace corvix

#define CORVIX_PLUGIN(...)                                                     \
  extern "C" CORVIX_EXPORT ::corvix::BClassFactory* queryClassFactoryLocal() { \
    static const ::corvix::FactoryRow rows[] = {__VA_ARGS__};                  \
    static ::corvix::TableFactory factory(rows);                               \
    return &factory;                                                           \
  }
