// BTempStorage: a temporary file to write to and to read back at random, with one position for both. The
// system deletes the file when the last stream on it closes.
#pragma once

#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/streams/ResizableStream.h"
#include "core/baselib/text/WideString.h"

#include <memory>

namespace corvix {

class RangedFile;

class CORVIX_API BTempStorage final : public BRAInputStream, public BOutputStream, public IBResizableStream {
  CORVIX_IDENTITY(BTempStorage, 0xC1603EAE, 0x44C57B19, 0xB519070B, 0x76C89B64, BRAInputStream, BOutputStream,
                  IBResizableStream)

 public:
  static constexpr u32 kNoLimit = 0xFFFFFFFF;

  // Closed, without a file.
  BTempStorage();

  // A second stream on the same file, at position 0 and without a limit; closed if the other is. It reads at
  // once what the other writes, and the other way round.
  BTempStorage(const BTempStorage& other);
  BTempStorage& operator=(const BTempStorage&) = delete;
  ~BTempStorage() override;

  // Makes a new file, "cvx*.tmp", in the system's temporary folder. False if none can be made there; nothing
  // is left of the attempt then. What was open before is closed as by `close`.
  bool open();

  bool isOpen() const noexcept override;

  // Throws an SException* if the system cannot close the file; the stream is closed all the same. The
  // destructor does not throw.
  void close() override;

  u32 getPosition() const noexcept override;
  u32 size() const noexcept override;
  bool atEnd() override;

  // A byte that other streams of this process have written to the file is never read stale, although single
  // bytes and small reads are served from a page that is read ahead.
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  u32 unreadByte() override;
  u32 skip(u32 count) override;
  u32 write(const void* buffer, u32 count) override;

  // Past the end is allowed, up to the limit. What lies between is zeros once something is written behind it.
  bool seek(u32 position) override;

  // A copy, owned by the caller; a copy of a closed one is closed.
  BTempStorage* clone() override;

  bool setSize(u32 size) override;

  // The largest position: neither reading nor writing nor moving goes past it. New streams have none. A position that
  // is past a new limit stays; from there only a seek or a step back leads anywhere.
  u32 limit() const noexcept;
  void setLimit(u32 limit) noexcept;

  // Also after closing, until the next `open`.
  const WideString& fileName() const noexcept { return name_; }

 private:
  std::unique_ptr<RangedFile> file_;
  WideString name_;
};

}  // namespace corvix
