#include "core/baselib/streams/StreamCopy.h"

#include "core/baselib/heap/HeapBuffer.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr u32 kPieceBytes = 64 * 1024;

u32 totalOf(const BInputStream& from, u32 most) noexcept {
  const u32 size = from.size();
  const u32 position = from.getPosition();
  if (size == IBStream::kUnknownSize) return most;
  return std::min(size > position ? size - position : 0, most);
}

u32 writeAll(BOutputStream& to, const u8* bytes, u32 count) {
  u32 done = 0;
  while (done < count) {
    const u32 taken = to.write(bytes + done, count - done);
    if (taken == 0) break;
    done += taken;
  }
  return done;
}

}  // namespace

CopyResult copy(BInputStream& from, BOutputStream& to, ICopyProgress* progress, u32 most) {
  const u32 total = totalOf(from, most);
  HeapBuffer<u8> piece;
  piece.allocate(kPieceBytes);
  u32 done = 0;
  while (done < most) {
    const u32 got = from.read(piece.get(), std::min(kPieceBytes, most - done));
    if (got == 0) break;
    const u32 written = writeAll(to, piece.get(), got);
    done += written;
    if (written < got) return {CopyEnd::Full, done};
    if (progress && !progress->onCopied(done, total)) return {CopyEnd::Stopped, done};
  }
  return {CopyEnd::Done, done};
}

}  // namespace corvix
