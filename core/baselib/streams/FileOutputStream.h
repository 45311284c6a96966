// BFileOutputStream: writes to a file. Nothing is held back: what `write` returned is with the system.
#pragma once

#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/streams/ResizableStream.h"

#include <memory>

namespace corvix {

class RangedFile;

class CORVIX_API BFileOutputStream final : public BOutputStream, public IBRAStream, public IBResizableStream {
  CORVIX_IDENTITY(BFileOutputStream, 0xC3713F7F, 0x43A16142, 0x846E9794, 0xB6C12D33, BOutputStream, IBRAStream,
                  IBResizableStream)

 public:
  enum class Existing {
    Replace,  // its content is lost
    Append,   // the position starts at its end
    Modify,   // the position starts at 0; a file that does not exist is a failure
    Refuse,   // a file that exists is a failure
  };

  BFileOutputStream();
  ~BFileOutputStream() override;

  // Others may read the file meanwhile. False if it cannot be opened, or is to be appended to and has 4 GiB
  // or more; the stream is closed then, whatever it was before.
  bool open(const wchar_t* path, Existing existing = Existing::Replace);

  // Positions have 32 bits, files do not. `setStart` has position 0 lie `offset` bytes into the file, also behind its
  // end, and goes there; the 4 GiB - 1 from there on are in reach, and `size` counts them. False, and nothing changes,
  // for a closed stream and above 2 to the 62.
  u64 fileSize() const noexcept;  // all of it; 0 when closed
  u64 start() const noexcept;
  bool setStart(u64 offset) noexcept;

  bool isOpen() const noexcept override;
  void close() override;
  u32 getPosition() const noexcept override;
  u32 size() const noexcept override;
  u32 write(const void* buffer, u32 count) override;
  bool seek(u32 position) override;
  bool setSize(u32 size) override;

 private:
  std::unique_ptr<RangedFile> file_;
};

}  // namespace corvix
