// PackImageInputStream: takes the predictor of image data back, row by row. A row that the data does not fill is
// given as far as it goes; one that names a predictor that there is none of is the end.
#pragma once

#include "core/suppliers/decoding/PackDecodeStream.h"

namespace corvix {

class CORVIX_API PackImageInputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(PackImageInputStream, 0xD84C71F6, 0x4A9E23B0, 0xBC05E817, 0x62F3497D, PackDecodeStream)

 public:
  // `packed` gives the rows as the predictor made them: it is unpacked already. Of the parameters the predictor
  // counts and what describes the rows.
  PackImageInputStream(Ref<BInputStream> packed, const PackParams& parameters);
  ~PackImageInputStream() override;

 private:
  u32 decode(u8* buffer, u32 count) override;
  bool nextRow();
  bool takeBackPng(u32 kind, u32 bytes) noexcept;
  void takeBackTiff(u32 bytes) noexcept;

  i32 predictor_;
  u32 colors_;
  u32 bits_;
  u32 pixelBytes_;  // from one sample to the same one of the next pixel, at least 1
  u32 rowSamples_;
  u32 rowBytes_;
  HeapBuffer<u8> rows_;  // the row that is read and the one above, each behind a pixel of zeros
  u8* row_ = nullptr;
  u8* above_ = nullptr;
  u32 rowNext_ = 0;
  u32 rowEnd_ = 0;
};

}  // namespace corvix
