// InternetInputStream: reads what an "http" location names, through WinINet. What keeping the session means for
// programs says core/suppliers/InternetStream.h.
#pragma once

#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/suppliers/InternetStream.h"
#include "core/suppliers/UrlRecord.h"
#include "core/suppliers/WinInet_p.h"

#include <atomic>
#include <memory>

namespace corvix {

class InternetPatience;
class InternetTransfer;

struct InternetSession {
  SCriticalSection lock;
  InternetHandle handle;
  i32 useCount = 0;  // may be below 0
};

// The one of the process.
InternetSession& internetSession() noexcept;

class InternetInputStream final : public BRAInputStream, public IInternetStream, public IInternetCancel {
  CORVIX_IDENTITY(InternetInputStream, 0xF1B6402D, 0x4C7935EA, 0xA25E90D7, 0x1C48F6B3, BRAInputStream, IInternetStream,
                  IInternetCancel)

 public:
  // Closed when there is no session, no such location, or no length of more than 0.
  explicit InternetInputStream(const UrlRecord& url);
  ~InternetInputStream() override;

  bool isOpen() const noexcept override { return isOpen_ && !isCancelled_; }
  void close() override;
  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override { return isOpen() ? static_cast<u32>(size_) : 0; }
  bool atEnd() override { return !isOpen() || static_cast<i32>(position_) >= size_; }  // -1 after a push at 0

  // Waits for `count` bytes, not for more: bytes that have come already are taken along and kept for the next read.
  // What a server sends behind the length that it told is dropped.
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  u32 unreadByte() override;
  u32 skip(u32 count) override;  // reads on where the position cannot be set
  bool seek(u32 position) override;

  u16 readCharacter() override;
  u32 pushBack(u8 byte) override;
  bool checkConnection() override;

  void cancel() noexcept override { isCancelled_ = true; }

 private:
  static constexpr u32 kAheadBytes = 4096;
  static constexpr u32 kSmallRead = 512;

  struct GiveUp {
    void operator()(InternetTransfer* transfer) const noexcept;
  };

  bool joinSession();
  bool goesOn();
  u32 fetch(u8* to, u32 count);
  u32 fetchPiece(u8* to, u32 count, u32 most, InternetPatience& patience);
  u32 takeAhead(u8* to, u32 count) noexcept;

  bool isOpen_ = false;
  std::atomic<bool> isCancelled_{false};
  bool canSeek_ = true;  // until it turned out that the system cannot
  bool isPushed_ = false;
  u8 pushed_ = 0;
  u8 last_ = 0;  // byte delivered last
  bool hasLast_ = false;
  bool isOver_ = false;  // the last piece did not come in time
  u32 position_ = 0;
  u32 fetched_ = 0;    // position behind what has come
  u32 aheadNext_ = 0;  // ahead_[aheadNext_, aheadEnd_) has come and is not delivered
  u32 aheadEnd_ = 0;
  i32 size_ = 0;
  UrlRecord url_;
  std::unique_ptr<InternetTransfer, GiveUp> transfer_;
  u8 ahead_[kAheadBytes];
};

}  // namespace corvix
