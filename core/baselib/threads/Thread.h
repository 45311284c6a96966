// BThread: a thread as an object. Derive from it and write `run`.
//
//   class Indexer : public BThread { ... void run() override; };
//   auto indexer = make<Indexer>();
//   if (!indexer->start()) ...
//   indexer->join();
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class CORVIX_API BThread : public BSmartObject {
  CORVIX_IDENTITY(BThread, 0x34F33BEF, 0x41D8829B, 0x8E241528, 0x6BFE6AD2, BSmartObject)

 public:
  static constexpr u32 kForever = 0xFFFFFFFF;

  // A slot of thread-local storage for clients; the library stores nothing in it.
  static u32 m_TlsIndex;

  // `threadName` is what debuggers show; it is copied and may be null.
  explicit BThread(const wchar_t* threadName = nullptr);
  ~BThread() override;

  // False when it was started before, or the system has no thread left.
  bool start() noexcept;

  // Waits for the end of `run`; false when that takes longer. True at once for a thread that was not started;
  // false at once on the thread itself.
  bool join(u32 timeoutMs = kForever) noexcept;

  // Started and not yet at its end.
  bool isRunning() const noexcept;

  // Empty if it has none.
  const wchar_t* name() const noexcept { return name_ ? name_.get() : L""; }

  // The last one waits for the end of `run` first; within `run` it leaves the object to the end of `run`.
  bool release() override;

 protected:
  // The thread's work. An exception that leaves it ends the work and is named in the log.
  virtual void run() = 0;

 private:
  struct Procedure;

  bool isOwnThread() const noexcept;

  HeapBuffer<wchar_t> name_;
  void* handle_ = nullptr;
  u32 id_ = 0;
  bool releasesItself_ = false;
};

}  // namespace corvix
