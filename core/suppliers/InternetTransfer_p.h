// InternetTransfer: the calls of one internet stream that may block, made by a thread of their own, so that the
// stream's thread can give up waiting. What the calls need and what they bring belongs to both, and goes with the last
// of them: nobody waits for the other's end, and a request that arrives when nobody wants it any more is closed here.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/text/WideString.h"
#include "core/suppliers/WinInet_p.h"

#include <atomic>

namespace corvix {

// How long a call of a stream waits: until its time is over, somebody cancels, or the shell says so.
class InternetPatience {
 public:
  explicit InternetPatience(const std::atomic<bool>& isCancelled) noexcept;
  ~InternetPatience();
  InternetPatience(const InternetPatience&) = delete;
  InternetPatience& operator=(const InternetPatience&) = delete;

  // How long to wait before asking again, in milliseconds; 0 for no longer.
  u32 next() noexcept;

 private:
  bool isStillWanted(u64 waitedMs);

  const std::atomic<bool>& isCancelled_;
  u64 start_;
  u32 cancelsBefore_;
  bool isTold_ = false;
  i32 wait_ = 0;
};

class InternetTransfer : public HeapAllocated {
 public:
  static constexpr u32 kPieceBytes = 64 * 1024;
  static constexpr u32 kFullPieceBytes = 8 * 1024;  // the system's own buffer

  // Starts its thread with the first call. Throws std::bad_alloc.
  explicit InternetTransfer(WideString url) : url_(std::move(url)) {}

  // Lets go: closes the request at once when no call is under way, else as soon as that one returns.
  static void giveUp(InternetTransfer* transfer) noexcept;

  // Those of all streams that run, also for nobody any more.
  static u32 threadCount() noexcept;

  // False when patience ended first; the transfer can then only be given up.
  bool open(HINTERNET session, InternetPatience& patience) noexcept;

  i32 size() const noexcept { return size_; }  // after `open`: of the resource, or below 0

  // What is here and was not taken is dropped where the position is set.
  enum class Sought { Reached, Refused, Late };  // Late: patience ended; the transfer can only be given up
  Sought seek(u32 position, InternetPatience& patience) noexcept;

  bool checkConnection(InternetPatience& patience) noexcept;

  // Waits for `count` bytes, at most kPieceBytes, and takes up to `most` of them that are here already. Fewer at the
  // end, or when patience ended. What comes then, or was here beyond that, is kept for the next call; more of what has
  // come already is fetched meanwhile. `isOver` says that there was nothing at all in time.
  u32 read(u8* to, u32 count, u32 most, InternetPatience& patience, bool& isOver) noexcept;

 private:
  enum class Call { None, Open, Read, Seek, Check };

  ~InternetTransfer();
  static DWORD WINAPI work(void* transfer) noexcept;
  static void release(InternetTransfer* transfer) noexcept;

  bool tryLock() noexcept;
  bool start() noexcept;
  bool run(Call call, InternetPatience& patience) noexcept;
  bool ask(Call call, u32 bytes = 0) noexcept;
  void begin(Call call, u32 bytes) noexcept;
  u32 take(u8* to, u32 most) noexcept;
  void fetchAhead() noexcept;
  template <class Ready>
  bool waitUntil(Ready ready, InternetPatience& patience) noexcept;
  void makeCall(Call call) noexcept;
  void openRequest() noexcept;
  i32 findSize() noexcept;
  void endCall() noexcept;
  bool fetchPiece() noexcept;
  u32 held() const noexcept;
  u32 room() const noexcept;
  bool put(u32 count, bool isEnd) noexcept;

  std::atomic<u32> owners_{1};
  const WinInetCalls calls_ = *winInet();  // its own: a table may be replaced meanwhile
  const WideString url_;
  SCriticalSection lock_;
  HANDLE thread_ = nullptr;
  HANDLE wake_ = nullptr;  // the thread has something to do
  HANDLE news_ = nullptr;  // the stream has something to look at

  // With the lock held, but by the thread for what its call brings.
  Call call_ = Call::None;  // under way
  std::atomic<bool> isGivenUp_{false};
  HINTERNET session_ = nullptr;
  HINTERNET request_ = nullptr;
  i32 size_ = -1;
  u32 target_ = 0;  // of a seek
  bool isReached_ = false;
  bool isFull_ = false;     // the last piece was; only the thread changes it during a call
  bool isAhead_ = false;    // what the call is to bring is here, it fetches more
  bool isCut_ = false;      // it ended because there was no more room
  bool isWaiting_ = false;  // the stream, for news
  u32 awaited_ = 0;         // bytes that were not taken: who reads waits for so many

  // A ring: bytes are counted from the first on, each stands where its number modulo the size says.
  static constexpr u32 kRingBytes = 4 * kPieceBytes;
  u32 filled_ = 0;
  u32 goal_ = 0;   // up to there the call waits for them
  u32 taken_ = 0;  // only the stream's thread changes it
  u8 buffer_[kRingBytes];
};

}  // namespace corvix
