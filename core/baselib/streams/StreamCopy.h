// Copying from one stream to another.
//
//   const CopyResult result = copy(*stream, *file);
//   if (result.end != CopyEnd::Done) ...
#pragma once

#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/OutputStream.h"

namespace corvix {

enum class CopyEnd {
  Done,     // all that was asked for, or all that the source has: compare with its size where that counts
  Full,     // the receiver took no more
  Stopped,  // the progress said so
};

struct CopyResult {
  CopyEnd end;
  u32 bytes;  // that are with the receiver
};

// Told after every piece of a copy, at most 64 KiB.
class ICopyProgress {
 public:
  // `done` bytes are with the receiver, of `total`, or of IBStream::kUnknownSize when the source does not say. False
  // ends the copy.
  virtual bool onCopied(u32 done, u32 total) = 0;

 protected:
  ~ICopyProgress() = default;
};

// Copies from the position of the one to that of the other, `most` bytes or up to the source's end. Throws
// std::bad_alloc; nothing is copied then.
CORVIX_API CopyResult copy(BInputStream& from, BOutputStream& to, ICopyProgress* progress = nullptr,
                           u32 most = IBStream::kUnknownSize);

}  // namespace corvix
