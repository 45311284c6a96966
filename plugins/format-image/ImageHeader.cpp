#include "plugins/format-image/ImageHeader_p.h"

#include "core/baselib/streams/Numbers.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr u32 kMostPages = 4096;

// Numbers at places of a file; what lies outside is 0.
struct File {
  const u8* bytes;
  u32 count;
  ByteOrder order;

  bool has(u32 at, u32 size) const noexcept { return at <= count && size <= count - at; }
  u32 word(u32 at) const noexcept { return has(at, 2) ? u16At(bytes + at, order) : 0; }
  u32 longWord(u32 at) const noexcept { return has(at, 4) ? u32At(bytes + at, order) : 0; }
};

bool sizeOfPng(const File& file, ImageSize& size) noexcept {
  if (!file.has(0, 24) || std::memcmp(file.bytes + 1, "PNG\r\n\x1A\n", 7) != 0 ||
      std::memcmp(file.bytes + 12, "IHDR", 4) != 0)
    return false;
  size = {file.longWord(16), file.longWord(20)};
  return true;
}

bool sizeOfBmp(const File& file, ImageSize& size) noexcept {
  constexpr u32 kOldHead = 12;
  if (!file.has(0, 26) || file.word(0) != 0x4D42) return false;
  if (file.longWord(14) == kOldHead) {
    size = {file.word(18), file.word(20)};
  } else {
    const u32 height = file.longWord(22);  // negative: from the top
    size = {file.longWord(18), height > 0x7FFFFFFF ? 0 - height : height};
  }
  return true;
}

// The first frame header.
bool sizeOfJpeg(const File& file, ImageSize& size) noexcept {
  if (file.word(0) != 0xFFD8) return false;
  for (u32 at = 2; file.has(at, 9);) {
    if (file.bytes[at] != 0xFF) return false;
    const u32 marker = file.bytes[at + 1];
    if (marker == 0xFF) {
      ++at;
    } else if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
      size = {file.word(at + 7), file.word(at + 5)};
      return true;
    } else if (marker == 1 || (marker >= 0xD0 && marker <= 0xD8)) {
      at += 2;
    } else {
      const u32 length = file.word(at + 2);
      if (length < 2) return false;
      at += 2 + length;
    }
  }
  return false;
}

bool sizeOfTiff(File file, ImageSize& size, u32& pages) noexcept {
  if (!file.has(0, 8)) return false;
  file.order = file.bytes[0] == 'I' ? ByteOrder::Little : ByteOrder::Big;
  if (file.word(2) != 42) return false;
  constexpr u32 kEntry = 12, kWidth = 256, kHeight = 257, kShort = 3;
  pages = 0;
  for (u32 at = file.longWord(4); at; ++pages) {
    const u32 entries = file.word(at);
    if (pages == kMostPages || !file.has(at, 2 + entries * kEntry + 4)) return false;  // or they lead in a circle
    ImageSize page;
    for (u32 entry = at + 2; entry < at + 2 + entries * kEntry; entry += kEntry) {
      const u32 tag = file.word(entry);
      const u32 value = file.word(entry + 2) == kShort ? file.word(entry + 8) : file.longWord(entry + 8);
      if (tag == kWidth) page.width = value;
      if (tag == kHeight) page.height = value;
    }
    if (!page.width || !page.height) return false;
    size = {std::max(size.width, page.width), std::max(size.height, page.height)};
    at = file.longWord(at + 2 + entries * kEntry);
  }
  return pages > 0;
}

}  // namespace

bool imageSizeOf(ImageKind kind, const u8* bytes, u32 count, ImageSize& size, u32& pages) noexcept {
  pages = 1;
  size = {};
  switch (kind) {
    case ImageKind::Png:
      return sizeOfPng({bytes, count, ByteOrder::Big}, size);
    case ImageKind::Bmp:
      return sizeOfBmp({bytes, count, ByteOrder::Little}, size);
    case ImageKind::Jpeg:
      return sizeOfJpeg({bytes, count, ByteOrder::Big}, size);
    case ImageKind::Tiff:
      return sizeOfTiff({bytes, count, ByteOrder::Big}, size, pages);
  }
  return false;
}

}  // namespace corvix
