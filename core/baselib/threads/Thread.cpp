#include "core/baselib/threads/Thread.h"

#include "core/baselib/system/ForeignCall.h"

#include <cstring>
#include <cwchar>

#include <windows.h>
#include <process.h>

namespace corvix {

namespace {

// The second slot has no name; it is there because clients count on two.
const struct SlotLifetime {
  SlotLifetime() noexcept : second(TlsAlloc()) {}
  ~SlotLifetime() {
    TlsFree(second);
    TlsFree(BThread::m_TlsIndex);
  }
  SlotLifetime(const SlotLifetime&) = delete;
  SlotLifetime& operator=(const SlotLifetime&) = delete;
  DWORD second;
} slotLifetime;

// Only newer systems can; the name is for debuggers.
void nameThread(HANDLE thread, const wchar_t* name) noexcept {
  using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  const auto set = reinterpret_cast<SetDescription>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
  if (set && name) set(thread, name);
}

}  // namespace

u32 BThread::m_TlsIndex = TlsAlloc();

struct BThread::Procedure {
  static unsigned __stdcall run(void* object) noexcept {
    auto* const self = static_cast<BThread*>(object);
    callForeign(codeOf(self), L"BThread", [self] { self->run(); });
    if (self->releasesItself_) self->BSmartObject::release();
    return 0;
  }
};

BThread::BThread(const wchar_t* threadName) {
  if (!threadName) return;
  const std::size_t units = std::wcslen(threadName) + 1;
  name_.allocate(units);
  std::memcpy(name_.get(), threadName, units * sizeof(wchar_t));
}

BThread::~BThread() {
  if (handle_) CloseHandle(handle_);
}

bool BThread::start() noexcept {
  if (handle_) return false;
  unsigned id = 0;
  handle_ = reinterpret_cast<void*>(_beginthreadex(nullptr, 0, Procedure::run, this, CREATE_SUSPENDED, &id));
  if (!handle_) return false;
  id_ = id;
  nameThread(handle_, name_.get());
  ResumeThread(handle_);
  return true;
}

bool BThread::join(u32 timeoutMs) noexcept {
  if (!handle_) return true;
  return !isOwnThread() && WaitForSingleObject(handle_, timeoutMs) == WAIT_OBJECT_0;
}

bool BThread::isRunning() const noexcept { return handle_ && WaitForSingleObject(handle_, 0) == WAIT_TIMEOUT; }

bool BThread::isOwnThread() const noexcept { return handle_ && GetCurrentThreadId() == id_; }

bool BThread::release() {
  if (refCount() == 0) {
    if (isOwnThread()) {
      releasesItself_ = true;
      return false;
    }
    join();
  }
  return BSmartObject::release();
}

}  // namespace corvix
