// PackFlateInputStream: unpacks what deflate has packed, with the wrapper of zlib around it.
#pragma once

#include "core/suppliers/decoding/PackDecodeStream.h"

struct z_stream_s;

namespace corvix {

class CORVIX_API PackFlateInputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(PackFlateInputStream, 0xB36F02A8, 0x41D98C57, 0xA07B54E9, 0x3E61DF1C, PackDecodeStream)

 public:
  explicit PackFlateInputStream(Ref<BInputStream> packed);
  ~PackFlateInputStream() override;

  void close() override;

 private:
  u32 decode(u8* buffer, u32 count) override;
  bool start();
  void stop() noexcept;

  HeapBuffer<z_stream_s> state_;
  bool isDone_ = false;
};

}  // namespace corvix
