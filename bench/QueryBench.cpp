// Asking an object for one of its classes: against dynamic_cast on the same object and a COM-style chain of
// identifier comparisons that does not count references.
#include "bench/Bench.h"
#include "core/baselib/objects/SmartObject.h"

#include <cstring>

#include <windows.h>

namespace corvix::bench {
namespace {

class IFirst : public IBTransportable {
  CORVIX_IDENTITY(IFirst, 0x10000001, 0x5F0A, 0x77, 0x1, IBTransportable)
 public:
  virtual int first() = 0;
};
class ISecond : public IBTransportable {
  CORVIX_IDENTITY(ISecond, 0x10000002, 0x5F0A, 0x77, 0x2, IBTransportable)
 public:
  virtual int second() = 0;
};
class IThird : public ISecond {
  CORVIX_IDENTITY(IThird, 0x10000003, 0x5F0A, 0x77, 0x3, ISecond)
 public:
  virtual int third() = 0;
};
class INobodyHas : public IBTransportable {
  CORVIX_IDENTITY(INobodyHas, 0x10000004, 0x5F0A, 0x77, 0x4, IBTransportable)
 public:
  virtual int nothing() = 0;
};

class Object final : public BSmartObject, public IFirst, public IThird {
  CORVIX_IDENTITY(Object, 0x10000005, 0x5F0A, 0x77, 0x5, BSmartObject, IFirst, IThird)
 public:
  int first() override { return 1; }
  int second() override { return 2; }
  int third() override { return 3; }
};

// The peer's form: the same seven identities, compared one after the other.
struct IComLike {
  virtual long QueryInterface(const GUID& wanted, void** object) = 0;
};

constexpr GUID kComIds[] = {{1, 2, 3, {4}}, {2, 2, 3, {4}}, {3, 2, 3, {4}}, {4, 2, 3, {4}},
                            {5, 2, 3, {4}}, {6, 2, 3, {4}}, {7, 2, 3, {4}}};
constexpr GUID kComNobody = {99, 2, 3, {4}};

class ComObject final : public IComLike {
 public:
  // As in life, where the object is another module's, the call is a call.
  [[gnu::noinline]] long QueryInterface(const GUID& wanted, void** object) override {
    for (const GUID& id : kComIds) {
      if (std::memcmp(&id, &wanted, sizeof id) == 0) {
        *object = this;
        return 0;
      }
    }
    *object = nullptr;
    return static_cast<long>(0x80004002);
  }
};

// As a QueryInterface in life: what it hands out is counted, and whoever asked gives it back.
class CountedComObject final : public IComLike {
 public:
  [[gnu::noinline]] long QueryInterface(const GUID& wanted, void** object) override {
    const long result = plain_.QueryInterface(wanted, object);
    if (result == 0) InterlockedIncrement(&references_);
    return result;
  }
  [[gnu::noinline]] void release() { InterlockedDecrement(&references_); }

 private:
  ComObject plain_;
  LONG references_ = 1;
};

// A hierarchy as one would write it without the library: one base each, nothing virtual but functions.
struct PlainBase {
  virtual ~PlainBase() = default;
};
struct PlainMiddle : PlainBase {};
struct PlainObject final : PlainMiddle {};
struct PlainStranger : PlainBase {};

template <class Wanted>
void queryLoop(IBSmartObject* object, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    keep(object);
    void* found = object->query(Wanted::classInfo());
    keep(found);
  }
}

template <class Wanted>
void castLoop(IBTransportable* object, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    keep(object);
    void* found = dynamic_cast<Wanted*>(object);
    keep(found);
  }
}

void comLoop(IComLike* object, const GUID& wanted, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    keep(object);
    void* found = nullptr;
    long result = object->QueryInterface(wanted, &found);
    keep(result);
    keep(found);
  }
}

template <class Wanted>
void plainCastLoop(PlainBase* object, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    keep(object);
    auto* found = dynamic_cast<Wanted*>(object);
    keep(found);
  }
}

void measureQuery(Report& report) {
  Object object;
  IBSmartObject* const counted = &object;
  IBTransportable* const plain = counted;
  ComObject com;
  const auto com0 = [&](std::size_t index) {
    return [&com, index](std::uint64_t n) { comLoop(&com, kComIds[index], n); };
  };

  report.compare(
      "hit, the object's own class", "dynamic_cast", 0, [&](auto n) { queryLoop<Object>(counted, n); },
      [&](auto n) { castLoop<Object>(plain, n); });
  report.compare(
      "hit, the last class of the walk", "dynamic_cast", 0.5, [&](auto n) { queryLoop<ISecond>(counted, n); },
      [&](auto n) { castLoop<ISecond>(plain, n); });
  report.compare(
      "miss", "dynamic_cast", 0.1, [&](auto n) { queryLoop<INobodyHas>(counted, n); },
      [&](auto n) { castLoop<INobodyHas>(plain, n); });
  report.compare(
      "hit, the object's own class", "COM-style QueryInterface", 1.5, [&](auto n) { queryLoop<Object>(counted, n); },
      com0(0));
  report.compare(
      "hit, the last class of the walk", "COM-style QueryInterface", 1.5,
      [&](auto n) { queryLoop<ISecond>(counted, n); }, com0(6));
  report.compare(
      "miss", "COM-style QueryInterface", 1.5, [&](auto n) { queryLoop<INobodyHas>(counted, n); },
      [&](auto n) { comLoop(&com, kComNobody, n); });

  PlainObject plainObject;
  report.compare(
      "hit, the object's own class", "dynamic_cast, a plain hierarchy", 0,
      [&](auto n) { queryLoop<Object>(counted, n); }, [&](auto n) { plainCastLoop<PlainObject>(&plainObject, n); });
  report.compare(
      "miss", "dynamic_cast, a plain hierarchy", 0, [&](auto n) { queryLoop<INobodyHas>(counted, n); },
      [&](auto n) { plainCastLoop<PlainStranger>(&plainObject, n); });
  CountedComObject countedCom;
  report.compare(
      "hit, the last class of the walk", "COM QueryInterface, counted", 0,
      [&](auto n) { queryLoop<ISecond>(counted, n); },
      [&](auto n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          comLoop(&countedCom, kComIds[6], 1);
          countedCom.release();
        }
      });
}

const Area area{"query", measureQuery};

}  // namespace
}  // namespace corvix::bench
