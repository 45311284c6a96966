#include "tools/corvix/Descriptor.h"
#include "tools/corvix/ModuleImage.h"
#include "tools/corvix/Text.h"
#include "tools/corvix/Trial.h"

#include "core/baselib/identity/RttiSupport.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/system/Exception.h"
#include "shell/ClassFactory.h"
#include "shell/Shell.h"
#include "shell/guard/KeptStack_p.h"
#include "shell/modules/Contract_p.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include <windows.h>
#include <tlhelp32.h>

namespace corvix::tool {

namespace {

using nlohmann::json;

// The record's lines are on the disk when a call returns.
HANDLE record = INVALID_HANDLE_VALUE;

void write(const json& line) {
  const std::string text = line.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
  DWORD written = 0;
  WriteFile(record, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void enter(const char* phase, const std::string& interfaceName = {}) {
  write({{"phase", phase}, {"interface", interfaceName}});
}

void find(const char* rule, const std::string& detail) { write({{"finding", rule}, {"detail", detail}}); }

LONG WINAPI noteCrash(EXCEPTION_POINTERS* pointers) {
  write({{"crash", pointers->ExceptionRecord->ExceptionCode}});
  TerminateProcess(GetCurrentProcess(), 1);
  return EXCEPTION_EXECUTE_HANDLER;
}

std::string textOfCaught() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (SException* error) {
    static_cast<void>(error);
    return "an SException";
  } catch (...) {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    int status = 0;
    char* const name = type ? abi::__cxa_demangle(type->name(), nullptr, nullptr, &status) : nullptr;
    const std::string text = name ? name : "something";
    std::free(name);
    return "an exception of type " + text;
  }
}

// Which objects went.
class Watch final : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Watch, 0x3D0B97E4, 0x4C21F85A, 0xB06E73D9, 0x81A54F2C, BSmartObject, IDestroyListener)

 public:
  Watch() { destroyNotifications().addListener(static_cast<IDestroyListener*>(this)); }
  ~Watch() override { destroyNotifications().removeListener(static_cast<IDestroyListener*>(this)); }

  int onDestroy(IBRTTISupport* sender) override {
    gone_.push_back(sender->query(IBSmartObject::classInfo()));
    return notify::kGoOn;
  }

  void forget() { gone_.clear(); }
  bool saw(const IBSmartObject* object) const { return std::find(gone_.begin(), gone_.end(), object) != gone_.end(); }

 private:
  std::vector<void*> gone_;
};

std::ptrdiff_t blocksInUse() {
  HANDLE heaps[64];
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  std::ptrdiff_t blocks = 0;
  for (DWORD i = 0; i < count; ++i) {
    if (!HeapLock(heaps[i])) continue;
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[i], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    HeapUnlock(heaps[i]);
  }
  return blocks;
}

std::set<DWORD> threads() {
  std::set<DWORD> found;
  const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(list, &entry); more; more = Thread32Next(list, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) found.insert(entry.th32ThreadID);
  }
  CloseHandle(list);
  return found;
}

// The identifiers of all classes that an object is one of, told by a query for none.
class Answers final : public QueryVisitor {
 public:
  explicit Answers(IBSmartObject& object) { object.query(PlainIdentifier(ClassWords{}), this); }
  void enter(const stype_info& info, void*) override { classes.push_back(info.className()); }
  void leave() override {}

  std::vector<std::string> classes;
};

class ModuleTrial {
 public:
  ModuleTrial(const std::wstring& path, const Descriptor& descriptor)
      : path_(path), interfaces_(descriptor.interfaces) {}

  void run(std::size_t first) {
    const std::set<DWORD> before = threads();
    if (!load() || !callFactory()) return;
    write({{"loaded", true}});
    for (std::size_t i = first; i < interfaces_.size(); ++i) tryInterface(i);
    enter("threads");
    lookForThreads(before);
  }

 private:
  bool load() {
    enter("load");
    module_ =
        LoadLibraryExW(path_.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (module_) return true;
    const DWORD error = GetLastError();
    constexpr struct {
      DWORD error;
      const char* rule;
      const char* detail;
    } kErrors[] = {
        {ERROR_NOACCESS, "crash-on-load", "An access violation."},
        {ERROR_STACK_OVERFLOW, "crash-on-load", "It ran out of stack."},
        {ERROR_DLL_INIT_FAILED, "load-refused", "Its DllMain returned FALSE."},
        {kThrownCode, "static-constructor-throws", "The system's loader stopped it."},
    };
    const auto* const row =
        std::find_if(std::begin(kErrors), std::end(kErrors), [error](const auto& one) { return one.error == error; });
    constexpr DWORD kFirstCrash = 0x80000000;  // the system's loader has caught it, and has no error of its own for it
    if (row != std::end(kErrors)) {
      find(row->rule, row->detail);
    } else if (error >= kFirstCrash) {
      find("crash-on-load", "Exception " + hexadecimal(error) + " while it was loaded.");
    } else {
      find("load-refused", "The system's error is " + std::to_string(error) + ".");
    }
    return false;
  }

  bool callFactory() {
    enter("factory");
    const auto query =
        reinterpret_cast<QueryClassFactory>(reinterpret_cast<void*>(GetProcAddress(module_, "queryClassFactoryLocal")));
    try {
      factory_ = query ? query() : nullptr;
      if (!factory_) find("factory-fails", "It returned nothing.");
    } catch (...) {
      find("factory-fails", "It threw: " + textOfCaught() + ".");
    }
    return factory_ != nullptr;
  }

  IBSmartObject* make(const DeclaredInterface& declared) {
    return factory_->createObject(wide(declared.name).c_str(), PlainIdentifier(declared.words));
  }

  void tryInterface(std::size_t index) {
    const DeclaredInterface& declared = interfaces_[index];
    enter("make", declared.name);
    watch_->forget();
    IBSmartObject* object = nullptr;
    try {
      object = make(declared);
      if (object && watch_->saw(object)) {  // or it lies where a helper was that is made once: that is not so twice
        watch_->forget();
        object = make(declared);
      }
    } catch (...) {
      return find("exception-in-constructor", "Making " + declared.name + " threw: " + textOfCaught() + ".");
    }
    if (!object) return write({{"null", declared.name}});
    write({{"made", index}});
    if (watch_->saw(object))
      return find("released-twice", "The object made for " + declared.name + " was gone when the caller got it.");
    enter("query", declared.name);
    json answered = json::array();
    for (std::size_t i = 0; i < interfaces_.size(); ++i) {
      if (object->query(PlainIdentifier(interfaces_[i].words))) answered.push_back(i);
    }
    write({{"answers", index},
           {"to", answered},
           {"class", object->typeInfo().className()},
           {"classes", Answers(*object).classes}});
    countReferences(declared, object);
  }

  void countReferences(const DeclaredInterface& declared, IBSmartObject* object) {
    const u32 before = object->refCount();
    enter("make", declared.name);
    IBSmartObject* another = nullptr;
    try {
      another = make(declared);
    } catch (...) {
      // Some have one object at a time.
    }
    enter("release", declared.name);
    if (another == object) return countShared(declared, object, before);
    if (another) another->release();
    if (!object->release()) {
      return find("reference-leaked", "The object of " + declared.name + " stayed after its last release, with " +
                                          std::to_string(object->refCount() + 1) + " references.");
    }
    if (another) lookForLeaks(declared);
  }

  // One object for everybody: each caller has a reference of its own.
  void countShared(const DeclaredInterface& declared, IBSmartObject* object, u32 before) {
    if (object->refCount() != before + 1) {
      return find("released-twice",
                  "The one object of " + declared.name + " was handed out twice, and its references went from " +
                      std::to_string(before + 1) + " to " + std::to_string(object->refCount() + 1) + ".");
    }
    object->release();
    object->release();
  }

  void lookForLeaks(const DeclaredInterface& declared) {
    constexpr int kWarmUp = 3, kRounds = 10;
    std::ptrdiff_t blocks = 0;
    const std::size_t running = threads().size();
    for (int i = 0; i < kWarmUp + kRounds; ++i) {
      if (i == kWarmUp) {
        watch_->forget();
        blocks = blocksInUse();
      }
      IBSmartObject* const object = make(declared);
      if (!object) return;
      object->release();
      watch_->forget();
    }
    const std::ptrdiff_t left = blocksInUse() - blocks;
    if (left < kRounds || threads().size() > running) return;  // threads have memory of their own
    find("memory-leaked", "Making and releasing " + declared.name + ' ' + std::to_string(kRounds) + " times left " +
                              std::to_string(left) + " blocks of memory.");
  }

  static void lookForThreads(const std::set<DWORD>& before) {
    constexpr int kPatienceMs = 1000, kStepMs = 50;
    std::size_t left = 0;
    for (int waited = 0; waited <= kPatienceMs; waited += kStepMs) {
      const std::set<DWORD> now = threads();
      left = static_cast<std::size_t>(
          std::count_if(now.begin(), now.end(), [&](DWORD id) { return !before.contains(id); }));
      if (!left) return;
      Sleep(kStepMs);
    }
    find("thread-left", std::to_string(left) + (left == 1 ? " thread runs" : " threads run") + " still.");
  }

  const std::wstring& path_;
  const std::vector<DeclaredInterface>& interfaces_;
  HMODULE module_ = nullptr;
  BClassFactory* factory_ = nullptr;
  Ref<Watch> watch_ = Ref<Watch>::adopt(new Watch);
};

}  // namespace

int runTrial(const std::wstring& path, const std::wstring& recordPath, std::size_t first) {
  record = CreateFileW(recordPath.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (record == INVALID_HANDLE_VALUE) return 2;
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(noteCrash);
  keepStack();  // for that filter
  IShell::startUnattended();
  ModuleImage image;
  if (!image.open(path) || !image.descriptor()) return 2;
  ModuleTrial(path, readDescriptor(*image.descriptor())).run(first);
  enter("end");
  write({{"done", true}});
  return 0;
}

}  // namespace corvix::tool
