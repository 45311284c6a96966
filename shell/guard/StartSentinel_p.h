// StartSentinel: says, in a file that outlives the process, which module is busy while a program starts. A start that
// comes to its end takes the file away again.
#pragma once

#include "core/baselib/system/KernelFile_p.h"
#include "shell/guard/StartFile_p.h"

#include <atomic>

namespace corvix {

struct CloseView : NullIsNone<void*> {
  static void close(void* view) noexcept { UnmapViewOfFile(view); }
};
using FileView = OwningHandle<CloseView>;

// Lives as long as the start; of its thread alone: what others do meanwhile is nobody's. The file is made when a module
// is named first, and where none can be made all goes on without.
class StartSentinel {
 public:
  StartSentinel() noexcept;
  StartSentinel(const StartSentinel&) = delete;
  StartSentinel& operator=(const StartSentinel&) = delete;
  ~StartSentinel();

  // The program ends by itself: when no module is busy, the start that is under way has left nothing.
  static void endInOrder() noexcept;

 private:
  friend class StartMark;

  struct Busy {
    u32 busy = 0;
    u32 top = 0;  // where the next name goes; 0: nothing was marked
  };

  bool isReady() noexcept;
  void makeFile();
  u32 put(const std::wstring& path, const FileStamp& stamp) noexcept;
  Busy enter(const std::wstring& path, const FileStamp& stamp, StartPhase phase) noexcept;
  void change(StartPhase phase) noexcept;
  void leave(const Busy& before) noexcept;
  void say(u32 busy) noexcept;
  void forget() noexcept;

  std::wstring path_;
  FileHandle file_;
  FileView view_;
  start_file::Head* head_ = nullptr;  // in the view
  u32 top_ = 0;
  bool isTried_ = false;
  const u32 thread_ = GetCurrentThreadId();
};

// The one that is under way in this process, or null.
inline constinit StartSentinel* startUnderWay = nullptr;

// As long as it lives, the start that is under way is busy with that module. Without one, a test of a pointer.
class StartMark {
 public:
  StartMark() noexcept = default;
  StartMark(const std::wstring& path, const FileStamp& stamp, StartPhase phase) noexcept {
    if (startUnderWay) before_ = startUnderWay->enter(path, stamp, phase);
  }
  StartMark(const StartMark&) = delete;
  StartMark& operator=(const StartMark&) = delete;
  ~StartMark() {
    if (before_.top && startUnderWay) startUnderWay->leave(before_);
  }

  // The module that is busy has come so far.
  static void change(StartPhase phase) noexcept {
    if (startUnderWay) startUnderWay->change(phase);
  }

 private:
  StartSentinel::Busy before_;
};

}  // namespace corvix
