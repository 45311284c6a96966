#include "core/baselib/streams/OutputStream.h"

namespace corvix {

u32 BOutputStream::writeByte(u8 byte) { return write(&byte, 1); }

}  // namespace corvix
