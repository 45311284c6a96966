// InternetInputStream: reads what an "http" location names, through WinINet. What keeping the session means for
// programs says core/suppliers/InternetStream.h.
#pragma once

#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/suppliers/InternetStream.h"
#include "core/suppliers/UrlRecord.h"
#include "core/suppliers/WinInet_p.h"

namespace corvix {

struct InternetSession {
  SCriticalSection lock;
  InternetHandle handle;
  i32 useCount = 0;  // may be below 0
};

// The one of the process.
InternetSession& internetSession() noexcept;

class InternetInputStream final : public BRAInputStream, public IInternetStream {
  CORVIX_IDENTITY(InternetInputStream, 0xF1B6402D, 0x4C7935EA, 0xA25E90D7, 0x1C48F6B3, BRAInputStream, IInternetStream)

 public:
  // Closed when there is no session, no such location, or no length of more than 0.
  explicit InternetInputStream(const UrlRecord& url);
  ~InternetInputStream() override;

  bool isOpen() const noexcept override { return isOpen_; }
  void close() override;
  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override { return isOpen_ ? static_cast<u32>(size_) : 0; }
  bool atEnd() override { return position_ >= size(); }

  // Waits for `count` bytes, not for more: bytes that have come already are taken along when `count` is small,
  // and kept here.
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  u32 unreadByte() override;
  u32 skip(u32 count) override;  // reads on where the position cannot be set
  bool seek(u32 position) override;

  u16 readCharacter() override;
  u32 pushBack(u8 byte) override;
  bool checkConnection() override;

 private:
  static constexpr u32 kAheadBytes = 4096;
  static constexpr u32 kSmallRead = 512;

  bool joinSession();
  i32 findSize();
  u32 readNow(void* buffer, u32 count);
  void readAhead(u32 wanted);
  u32 takeAhead(u8* to, u32 count) noexcept;

  bool isOpen_ = false;
  bool isPushed_ = false;
  u8 pushed_ = 0;
  u8 last_ = 0;  // byte delivered last
  bool hasLast_ = false;
  u32 position_ = 0;
  u32 aheadNext_ = 0;  // ahead_[aheadNext_, aheadEnd_) has come and is not delivered
  u32 aheadEnd_ = 0;
  i32 size_ = 0;
  UrlRecord url_;
  InternetHandle request_;
  u8 ahead_[kAheadBytes];
};

}  // namespace corvix
