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

// What Exif keeps in the first application segment is laid out as a TIFF file; its first page is about the image. What
// makes no sense there is passed over.
u32 orientationIn(const u8* segment, u32 length) noexcept {
  constexpr u32 kName = 6, kEntry = 12, kOrientation = 0x0112, kShort = 3;
  if (length < kName + 8 || std::memcmp(segment, "Exif\0", kName) != 0) return 1;
  const bool isLittle = segment[kName] == 'I';
  const File exif{segment + kName, length - kName, isLittle ? ByteOrder::Little : ByteOrder::Big};
  const u32 page = exif.word(2) == 42 ? exif.longWord(4) : 0, entries = page ? exif.word(page) : 0;
  for (u32 i = 0; i < entries && exif.has(page + 2, (i + 1) * kEntry); ++i) {
    const u32 entry = page + 2 + i * kEntry, value = exif.word(entry + 8);
    if (exif.word(entry) == kOrientation && exif.word(entry + 2) == kShort) return value >= 1 && value <= 8 ? value : 1;
  }
  return 1;
}

// The first frame header, and what stands before it.
bool readJpeg(const File& file, ImageHead& head) noexcept {
  if (file.word(0) != 0xFFD8) return false;
  for (u32 at = 2; file.has(at, 9);) {
    if (file.bytes[at] != 0xFF) return false;
    const u32 marker = file.bytes[at + 1];
    if (marker == 0xFF) {
      ++at;
    } else if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
      head.size = {file.word(at + 7), file.word(at + 5)};
      return true;
    } else if (marker == 1 || (marker >= 0xD0 && marker <= 0xD8)) {
      at += 2;
    } else {
      const u32 length = file.word(at + 2);
      if (length < 2) return false;
      if (marker == 0xE1 && head.orientation == 1 && file.has(at + 4, length - 2))
        head.orientation = orientationIn(file.bytes + at + 4, length - 2);
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

bool readImageHead(ImageKind kind, const u8* bytes, u32 count, ImageHead& head) noexcept {
  head = {};
  switch (kind) {
    case ImageKind::Png:
      return sizeOfPng({bytes, count, ByteOrder::Big}, head.size);
    case ImageKind::Bmp:
      return sizeOfBmp({bytes, count, ByteOrder::Little}, head.size);
    case ImageKind::Jpeg:
      return readJpeg({bytes, count, ByteOrder::Big}, head);
    case ImageKind::Tiff:
      return sizeOfTiff({bytes, count, ByteOrder::Big}, head.size, head.pages);
  }
  return false;
}

}  // namespace corvix
