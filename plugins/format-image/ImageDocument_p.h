#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "graphics/IAGDC.h"
#include "plugins/format-image/ImageHeader_p.h"
#include "shell/documents/BDocument.h"
#include "shell/documents/PagedDocument.h"

#include <vector>

namespace corvix {

// An image file as it was read; a page of it is decoded when it is drawn, and the last one kept.
class ImageDocument final : public BDocument, public IPagedDocument {
  CORVIX_IDENTITY(ImageDocument, 0x54F1DD2A, 0x2750E6E6, 0xDE648375, 0xD5DA7C86, BDocument, IPagedDocument)

 public:
  static constexpr u32 kMostBytes = 256u << 20;
  static constexpr u64 kMostPixels = u64{64} << 20;  // of a page
  static constexpr double kPointsPerPixel = 0.75;

  ImageDocument(ImageKind kind, HeapBuffer<u8> bytes, u32 count) noexcept
      : kind_(kind), bytes_(std::move(bytes)), count_(count) {}

  // Before anything else. Null, or why it cannot be decoded, a sentence.
  const wchar_t* read();

  i32 pageCount() const noexcept override { return static_cast<i32>(pages_.size()); }
  bool pageSize(i32 index, double* width, double* height) const noexcept override;
  bool drawPage(i32 index, IAGDC& context, const Matrix& toDevice, IDrawWatch* watch) override;

  // The first page as a file of that kind: as it was read, when it was one. False when it cannot be made.
  bool encode(ImageKind kind, std::vector<u8, HeapAllocator<u8>>& bytes) const;

 private:
  Ref<IAGImage> decode(i32 index, IAGDC& context) const;

  const ImageKind kind_;
  const HeapBuffer<u8> bytes_;
  const u32 count_;
  u32 orientation_ = 1;
  std::vector<ImageSize> pages_;  // as they are seen
  Ref<IAGImage> drawn_;
  i32 drawnIndex_ = -1;
};

// Pixels of an Rgb or Argb image as a file of that kind.
bool encodeImage(IAGImage& image, ImageKind kind, std::vector<u8, HeapAllocator<u8>>& bytes);

}  // namespace corvix
