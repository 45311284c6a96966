// IBEncryptionKey: the bytes of a key, good as long as the object, and overwritten when it goes. What the user typed is
// its text in UTF-8. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBEncryptionKey : public IBTransportable {
  CORVIX_IDENTITY(IBEncryptionKey, 0x3FD31787, 0x468BE377, 0xA94DE7E7, 0x618499C2, IBTransportable)

 public:
  virtual const u8* bytes() const noexcept = 0;
  virtual u32 sizeBytes() const noexcept = 0;
};

}  // namespace corvix
