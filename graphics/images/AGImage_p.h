// AGImage: an IAGImage that owns its pixels.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "graphics/Image.h"
#include "graphics/ImageFreezer.h"

#include <vector>

namespace corvix {

class AGImage final : public IAGImage, public IAGImageFreezer {
  CORVIX_IDENTITY(AGImage, 0x96F0D43B, 0x4A2BC1E7, 0x93D85A06, 0xE71F2C94, IAGImage, IAGImageFreezer)

 public:
  // All pixels 0. Empty for sizes and depths that there are not, or when memory is short. Bits per pixel 0: 8 for each
  // component.
  static Ref<AGImage> create(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) noexcept;

  i32 width() const noexcept override { return width_; }
  i32 height() const noexcept override { return height_; }
  ColorModel colorModel() const noexcept override { return model_; }
  i32 bitsPerPixel() const noexcept override { return bitsPerPixel_; }
  i32 strideBytes() const noexcept override { return strideBytes_; }
  u8* row(i32 y) noexcept override;
  bool setPalette(const Color* colors, i32 count) noexcept override;
  const Color* palette() const noexcept override { return palette_.empty() ? nullptr : palette_.data(); }
  i32 paletteSize() const noexcept override { return static_cast<i32>(palette_.size()); }
  bool pixelColor(i32 x, i32 y, Color* color) const noexcept override;
  IAGImage* convertTo(ColorModel model) const noexcept override;
  bool captureFrom(IAGDC& context, i32 x, i32 y) noexcept override;
  bool loadFile(const wchar_t* path) noexcept override;
  bool saveFile(const wchar_t* path, ImageFile kind) const noexcept override;

  bool freeze() override;
  bool isFrozen() const noexcept override { return finished_ != 0; }
  const u8* readRow(i32 y) const noexcept override;
  u32 finished() const noexcept { return finished_; }  // a number that no other frozen image had; 0: it is not frozen

  ~AGImage() override { thaw(); }
  void swap(AGImage& other) noexcept;  // neither is frozen

 private:
  AGImage() = default;
  void thaw() noexcept;

  using Bytes = std::vector<u8, HeapAllocator<u8>>;

  i32 width_ = 0;
  i32 height_ = 0;
  ColorModel model_ = ColorModel::Rgb;
  i32 bitsPerPixel_ = 0;
  i32 strideBytes_ = 0;
  std::vector<Color, HeapAllocator<Color>> palette_;
  Bytes pixels_;
  u32 finished_ = 0;
};

}  // namespace corvix
