#include "graphics/images/AGImage_p.h"

#include "core/baselib/heap/HeapBuffer.h"
#include "graphics/IAGDC.h"
#include "graphics/gdi/Gdi_p.h"
#include "graphics/images/ImageBits_p.h"
#include "graphics/images/ImageCopies_p.h"
#include "graphics/images/ImageFiles_p.h"

#include <atomic>
#include <cstring>
#include <utility>

namespace corvix {

namespace {

struct ModelBits {
  ColorModel model;
  i32 standard;  // bits per pixel
  u32 others;    // as a mask: bit n stands for n bits
};
constexpr ModelBits kModels[] = {{ColorModel::Indexed, 8, 1 << 1 | 1 << 2 | 1 << 4},
                                 {ColorModel::Gray, 8, 0},
                                 {ColorModel::Rgb, 24, 0},
                                 {ColorModel::Argb, 32, 0},
                                 {ColorModel::Cmyk, 32, 0}};

constexpr i64 kMostBytes = 0x7FFF0000;

// 0 when there is no such image.
i32 bitsOf(ColorModel model, i32 asked) noexcept {
  for (const ModelBits& row : kModels) {
    if (row.model != model) continue;
    const bool isKnown = asked == 0 || asked == row.standard || (asked > 0 && asked < 32 && row.others >> asked & 1);
    return isKnown ? (asked ? asked : row.standard) : 0;
  }
  return 0;
}

}  // namespace

Ref<AGImage> AGImage::create(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) noexcept {
  const i32 bits = bitsOf(model, bitsPerPixel);
  if (!bits || width <= 0 || height <= 0) return {};
  const i64 stride = (i64{width} * bits + 31) / 32 * 4;
  if (stride > kMostBytes / height) return {};
  try {
    Ref<AGImage> image = Ref<AGImage>::adopt(new AGImage);
    image->width_ = width;
    image->height_ = height;
    image->model_ = model;
    image->bitsPerPixel_ = bits;
    image->strideBytes_ = static_cast<i32>(stride);
    image->pixels_.resize(static_cast<std::size_t>(stride * height));
    if (model == ColorModel::Indexed) {
      const u32 colors = 1U << bits;
      for (u32 i = 0; i < colors; ++i) {
        const u32 level = 255 * i / (colors - 1);
        image->palette_.push_back(rgb(level, level, level));
      }
    }
    return image;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

const u8* AGImage::readRow(i32 y) const noexcept {
  return y >= 0 && y < height_ ? pixels_.data() + static_cast<std::ptrdiff_t>(strideBytes_) * y : nullptr;
}

u8* AGImage::row(i32 y) noexcept {
  thaw();
  return const_cast<u8*>(readRow(y));
}

bool AGImage::freeze() {
  static std::atomic<u32> number{0};
  if (finished_) return false;
  while (!finished_) finished_ = ++number;
  return true;
}

void AGImage::thaw() noexcept {
  if (finished_) dropImageCopies(std::exchange(finished_, 0));
}

bool AGImage::setPalette(const Color* colors, i32 count) noexcept {
  if (!colors || count <= 0 || count > paletteSize()) return false;
  thaw();
  std::copy(colors, colors + count, palette_.begin());
  std::fill(palette_.begin() + count, palette_.end(), kBlack);
  return true;
}

bool AGImage::pixelColor(i32 x, i32 y, Color* color) const noexcept {
  ImageView view;
  if (!color || x < 0 || x >= width_ || y < 0 || y >= height_) return false;
  if (!viewOf(const_cast<AGImage*>(this), view)) return false;
  readColors(view, x, y, 1, 1, color);
  return true;
}

IAGImage* AGImage::convertTo(ColorModel model) const noexcept {
  if (model == ColorModel::Indexed || model == ColorModel::Cmyk) return nullptr;
  Ref<AGImage> result = create(width_, height_, model, 0);
  ImageView view;
  if (!result || !viewOf(const_cast<AGImage*>(this), view)) return nullptr;
  HeapBuffer<u8> colors;  // of a row, for grey
  const bool isDirect = model_ == ColorModel::Rgb;
  if (model == ColorModel::Gray && !isDirect && !colors.tryAllocate(3 * static_cast<std::size_t>(width_)))
    return nullptr;
  for (i32 y = 0; y < height_; ++y) {
    u8* const to = result->row(y);
    if (model == ColorModel::Argb) {
      readColors(view, 0, y, 1, width_, reinterpret_cast<Color*>(to));
    } else if (model == ColorModel::Rgb) {
      readRgb(view, 0, y, width_, to);
    } else {
      if (!isDirect) readRgb(view, 0, y, width_, colors.get());
      rgbToGray(isDirect ? view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y : colors.get(),
                static_cast<std::size_t>(width_), to);
    }
  }
  return result.detach();
}

bool AGImage::captureFrom(IAGDC& context, i32 x, i32 y) noexcept {
  const HDC device = context.canDraw() ? context.deviceContext() : nullptr;
  if (!device || (model_ != ColorModel::Rgb && model_ != ColorModel::Argb)) return false;
  const gdi::PixelBitmap shown = gdi::createPixels(width_, height_, 24);
  const gdi::MemoryDevice memory(CreateCompatibleDC(device));
  if (!shown.bitmap || !memory) return false;
  const gdi::Selected selected = gdi::select(memory.get(), shown.bitmap.get());
  // What is beyond the device stays as it is here.
  const i32 left = std::max(x, 0);
  const i32 top = std::max(y, 0);
  const i32 right = static_cast<i32>(std::min(std::ceil(context.width()), static_cast<double>(x) + width_));
  const i32 bottom = static_cast<i32>(std::min(std::ceil(context.height()), static_cast<double>(y) + height_));
  if (right <= left || bottom <= top) return true;
  const Point origin = context.origin();
  context.setOrigin(0, 0);
  const bool isCopied =
      selected && BitBlt(memory.get(), left - x, top - y, right - left, bottom - top, device, left, top, SRCCOPY);
  context.setOrigin(origin.x, origin.y);
  if (!isCopied) return false;
  GdiFlush();
  for (i32 line = top - y; line < bottom - y; ++line) {
    const u8* from = shown.pixels + static_cast<std::ptrdiff_t>(shown.strideBytes) * line + 3 * (left - x);
    u8* to = row(line) + bitsPerPixel_ / 8 * (left - x);
    if (model_ == ColorModel::Rgb) {
      std::memcpy(to, from, static_cast<std::size_t>(right - left) * 3);
      continue;
    }
    for (i32 i = left; i < right; ++i, from += 3) {
      *to++ = from[0];
      *to++ = from[1];
      *to++ = from[2];
      *to++ = 255;
    }
  }
  return true;
}

bool AGImage::loadFile(const wchar_t* path) noexcept {
  const Ref<AGImage> loaded = loadImageFile(path);
  if (!loaded) return false;
  thaw();
  swap(*loaded);
  return true;
}

bool AGImage::saveFile(const wchar_t* path, ImageFile kind) const noexcept {
  try {
    ImageView view;
    return viewOf(const_cast<AGImage*>(this), view) && saveImageFile(makeBits(view, wholeOf(view)), path, kind);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void AGImage::swap(AGImage& other) noexcept {
  std::swap(width_, other.width_);
  std::swap(height_, other.height_);
  std::swap(model_, other.model_);
  std::swap(bitsPerPixel_, other.bitsPerPixel_);
  std::swap(strideBytes_, other.strideBytes_);
  palette_.swap(other.palette_);
  pixels_.swap(other.pixels_);
}

}  // namespace corvix
