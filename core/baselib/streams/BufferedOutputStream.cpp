#include "core/baselib/streams/BufferedOutputStream.h"

#include "core/baselib/system/ForeignCall.h"

#include <algorithm>
#include <cstring>

namespace corvix {

BBufferedOutputStream::BBufferedOutputStream(Ref<BOutputStream> receiver, u32 bufferBytes)
    : receiver_(std::move(receiver)) {
  if (!receiver_) return;
  buffer_.allocate(std::max(bufferBytes, 1u));
  most_ = std::max(bufferBytes, 1u);
}

BBufferedOutputStream::~BBufferedOutputStream() {
  if (used_ > 0) callForeign(codeOf(receiver_.get()), L"BOutputStream", [this] { return flush(); });
}

void BBufferedOutputStream::close() {
  flush();
  used_ = most_ = 0;
  receiver_.reset();
}

u32 BBufferedOutputStream::getPosition() const noexcept { return receiver_ ? receiver_->getPosition() + used_ : 0; }

u32 BBufferedOutputStream::size() const noexcept {
  if (!isOpen()) return 0;
  const u32 there = receiver_->size();
  return used_ > 0 ? std::max(there, getPosition()) : there;
}

u32 BBufferedOutputStream::gather(const u8* bytes, u32 count) noexcept {
  const u32 taken = std::min(count, most_ - used_);
  std::memcpy(buffer_.get() + used_, bytes, taken);
  used_ += taken;
  return taken;
}

u32 BBufferedOutputStream::write(const void* buffer, u32 count) {
  if (!isOpen() || count == 0) return 0;
  const auto* const bytes = static_cast<const u8*>(buffer);
  count = std::min(count, 0xFFFFFFFF - getPosition());
  if (count <= most_ - used_) return gather(bytes, count);
  if (!flush()) return gather(bytes, count);
  return count < most_ ? gather(bytes, count) : receiver_->write(bytes, count);
}

u32 BBufferedOutputStream::writeThrough(u8 byte) { return write(&byte, 1); }

bool BBufferedOutputStream::flush() {
  u32 done = 0;
  const auto forgetDone = [&] {
    used_ -= done;
    std::memmove(buffer_.get(), buffer_.get() + done, used_);
  };
  try {
    while (done < used_) {
      const u32 taken = receiver_->write(buffer_.get() + done, used_ - done);
      if (taken == 0) break;
      done += taken;
    }
  } catch (...) {
    forgetDone();
    throw;
  }
  forgetDone();
  return used_ == 0;
}

bool BBufferedOutputStream::seek(u32 position) {
  auto* const random = corvix::query<IBRAStream>(receiver_.get());
  return random && flush() && random->seek(position);
}

bool BBufferedOutputStream::setSize(u32 size) {
  auto* const resizable = corvix::query<IBResizableStream>(receiver_.get());
  return resizable && flush() && resizable->setSize(size);
}

}  // namespace corvix
