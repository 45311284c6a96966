// BFileInputStream: random access to a file, or to a part of it, that exists.
#pragma once

#include "core/baselib/streams/RandomAccessInputStream.h"

#include <memory>

namespace corvix {

class RangedFile;

class CORVIX_API BFileInputStream final : public BRAInputStream {
  CORVIX_IDENTITY(BFileInputStream, 0xA91F8044, 0x4CA1F288, 0x8CA8045A, 0x5D7F5342, BRAInputStream)

 public:
  BFileInputStream();
  ~BFileInputStream() override;

  // Opens a file for reading, whatever others do with it meanwhile: write, rename, delete. The stream's beginning is
  // `start` bytes into the file, and it ends `length` bytes behind that or at the file's end, whichever is first. Of a
  // file of 4 GiB and more the first 4 GiB - 1 behind `start` can be read, and `size` is kUnknownSize: see `setStart`.
  // False if the file cannot be opened; the stream is closed then, whatever it was before.
  bool open(const wchar_t* path, u32 start = 0, u32 length = kUnknownSize);

  // Positions have 32 bits, files do not. `setStart` has position 0 lie `offset` bytes into the file, also behind its
  // end, and goes there; the 4 GiB - 1 from there on are in reach, and `size` counts them. False, and nothing changes,
  // for a closed stream, one that was opened with a length and above 2 to the 62.
  u64 fileSize() const noexcept;  // all of it; 0 when closed
  u64 start() const noexcept;
  bool setStart(u64 offset) noexcept;

  bool isOpen() const noexcept override;
  void close() override;
  u32 getPosition() const noexcept override;
  u32 size() const noexcept override;
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  bool atEnd() override;
  bool seek(u32 position) override;
  BFileInputStream* clone() override;  // null when closed or the system refuses

 private:
  std::unique_ptr<RangedFile> file_;
};

}  // namespace corvix
