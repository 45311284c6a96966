#include "core/suppliers/decoding/PackFlateInputStream.h"

#include <zlib.h>

namespace corvix {

namespace {

void* allocate(void*, uInt count, uInt size) { return _smalloc(static_cast<std::size_t>(count) * size); }

void giveBack(void*, void* block) { _sfree(block); }

}  // namespace

PackFlateInputStream::PackFlateInputStream(Ref<BInputStream> packed) : PackDecodeStream(std::move(packed)) {}

PackFlateInputStream::~PackFlateInputStream() { stop(); }

void PackFlateInputStream::close() {
  stop();
  isDone_ = true;
  PackDecodeStream::close();
}

bool PackFlateInputStream::start() {
  state_.allocate(1);
  *state_.get() = {};
  state_->zalloc = allocate;
  state_->zfree = giveBack;
  if (inflateInit(state_.get()) == Z_OK) return true;
  state_.reset();
  throw std::bad_alloc();  // the only reason there is
}

void PackFlateInputStream::stop() noexcept {
  if (!state_) return;
  inflateEnd(state_.get());
  state_.reset();
}

u32 PackFlateInputStream::decode(u8* buffer, u32 count) {
  if (isDone_ || (!state_ && !start())) return 0;
  state_->next_out = buffer;
  state_->avail_out = count;
  while (!isDone_ && state_->avail_out > 0) {
    const bool hasInput = refill();
    state_->next_in = input_.get() + next_;
    state_->avail_in = end_ - next_;
    const int result = inflate(state_.get(), Z_NO_FLUSH);
    next_ = end_ - state_->avail_in;
    if (result == Z_OK) continue;
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    isDone_ = true;
    if (result == Z_BUF_ERROR && !hasInput) {
      fail(PackFault::Truncated);
    } else if (result != Z_STREAM_END) {
      fail(PackFault::Damaged);
    }
  }
  return count - state_->avail_out;
}

}  // namespace corvix
