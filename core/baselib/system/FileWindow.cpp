#include "core/baselib/system/FileWindow_p.h"

#include <cstring>

namespace corvix {

bool FileWindow::read(u64 offset, void* to, u32 sizeBytes) noexcept {
  if (offset > size_ || size_ - offset < sizeBytes) return false;
  if (sizeBytes > sizeof window_) return readFile(offset, to, sizeBytes) == sizeBytes;
  if (offset < heldAt_ || offset - heldAt_ > held_ || held_ - (offset - heldAt_) < sizeBytes) {
    held_ = readFile(offset, window_, sizeof window_);
    heldAt_ = offset;
    if (held_ < sizeBytes) return false;
  }
  std::memcpy(to, window_ + (offset - heldAt_), sizeBytes);
  return true;
}

}  // namespace corvix
