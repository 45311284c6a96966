// "Faulty.careless" does what the test writes into the variable CORVIX_CARELESS: it makes what is no object, or leaves
// the program in another state than it found it.
#include "shell/Plugin.h"
#include "shell/Shell.h"

#include <stdexcept>
#include <string>

#include <windows.h>

namespace {

using namespace corvix;

template <class Answer>
class Asked final : public BSmartObject {
 public:
  const stype_info& typeInfo() const noexcept override { return Answer::info(); }
  void* query(const stype_info& wanted, QueryVisitor*) override { return Answer::query(wanted); }
};

struct SaysAllIsWell {
  static const stype_info& info() { return BSmartObject::classInfo(); }
  static void* query(const stype_info&) { return nullptr; }
};
struct NoInfo : SaysAllIsWell {
  static const stype_info& info() {
    const stype_info* volatile none = nullptr;
    return *none;  // NOLINT(clang-analyzer-core.uninitialized.UndefReturn): that is the fault
  }
};
struct NoName : SaysAllIsWell {
  struct Info : stype_info {
    Info() : stype_info(1, 2, 3, 4) {}
    const char* className() const noexcept override { return reinterpret_cast<const char*>(1); }
  };
  static const stype_info& info() {
    static const Info nameless;
    return nameless;
  }
};
struct CrashingQuery : SaysAllIsWell {
  static void* query(const stype_info&) { return *reinterpret_cast<void* volatile*>(8); }
};
struct RaisingQuery : SaysAllIsWell {
  static void* query(const stype_info&) {
    RaiseException(0, 0, 0, nullptr);
    return nullptr;
  }
};
struct ThrowingQuery : SaysAllIsWell {
  static void* query(const stype_info&) { throw std::runtime_error("no answer"); }
};

struct Silent final : std::exception {
  const char* what() const noexcept override { return nullptr; }
};

IBSmartObject* doAsWritten() {
  wchar_t written[32] = L"";
  GetEnvironmentVariableW(L"CORVIX_CARELESS", written, 32);
  const std::wstring what = written;
  if (what == L"a number") return reinterpret_cast<IBSmartObject*>(1);
  if (what == L"a text") return reinterpret_cast<IBSmartObject*>(const_cast<char*>("I am no object, but a long text"));
  if (what == L"no info") return new Asked<NoInfo>;
  if (what == L"no name") return new Asked<NoName>;
  if (what == L"crashing query") return new Asked<CrashingQuery>;
  if (what == L"raising query") return new Asked<RaisingQuery>;
  if (what == L"throwing query") return new Asked<ThrowingQuery>;
  if (what == L"raise") RaiseException(1, 0, 0, nullptr);
  if (what == L"raise nothing") RaiseException(0, 0, 0, nullptr);
  if (what == L"silent") throw Silent();
  if (what == L"itself") return IShell::getInstance()->pluginManager()->createObject(L"Faulty.careless");
  if (what == L"full") asm volatile("fldz; fldz; fldz; fldz; fldz; fldz; fldz; fldz; ud2");
  if (what == L"mode") asm volatile("fldcw %0\n\tldmxcsr %1" : : "m"(*"\x40\x02"), "m"(*"\x80\x7F\0"));
  return new BSmartObject;
}

}  // namespace

CORVIX_PLUGIN({L"Faulty.careless", doAsWritten})
