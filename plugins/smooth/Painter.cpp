#include "plugins/smooth/Painter_p.h"

namespace corvix::smooth {

namespace {

// One component of the separable modes, from 0 to 255, of what is below and what is painted.
u32 blended(BlendMode mode, u32 below, u32 above) noexcept {
  const auto hardLight = [](u32 base, u32 light) {
    return light < 128 ? times(base, 2 * light) : 255 - times(255 - base, 2 * (255 - light));
  };
  switch (mode) {
    case BlendMode::Multiply:
      return times(below, above);
    case BlendMode::Screen:
      return below + above - times(below, above);
    case BlendMode::Overlay:
      return hardLight(above, below);
    case BlendMode::Darken:
      return std::min(below, above);
    case BlendMode::Lighten:
      return std::max(below, above);
    case BlendMode::ColorDodge:
      return below == 0 ? 0 : above == 255 ? 255 : std::min(255u, (below * 255 + (255 - above) / 2) / (255 - above));
    case BlendMode::ColorBurn:
      return below == 255 ? 255 : above == 0 ? 0 : 255 - std::min(255u, ((255 - below) * 255 + above / 2) / above);
    case BlendMode::HardLight:
      return hardLight(below, above);
    case BlendMode::SoftLight: {
      const float b = static_cast<float>(below) / 255;
      const float s = static_cast<float>(above) / 255;
      const float d = b <= 0.25F ? ((16 * b - 12) * b + 4) * b : std::sqrt(b);
      const float result = s <= 0.5F ? b - (1 - 2 * s) * b * (1 - b) : b + (2 * s - 1) * (d - b);
      return static_cast<u32>(std::clamp(result, 0.0F, 1.0F) * 255 + 0.5F);
    }
    case BlendMode::Difference:
      return below > above ? below - above : above - below;
    case BlendMode::Exclusion:
      return below + above - 2 * times(below, above);
    default:
      return above;
  }
}

}  // namespace

void blend(BlendMode mode, bool isOpaque, Pixel* to, const Pixel* from, const u8* covers, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) {
    const Pixel source = covers ? scaled(from[i], covers[i]) : from[i];
    const u32 alpha = source >> 24;
    if (!alpha) continue;
    const u32 belowAlpha = isOpaque ? 255 : to[i] >> 24;
    const Color above = toColor(from[i]);
    const Color below = isOpaque ? to[i] | kBlack : toColor(to[i]);
    Pixel mixed = alpha << 24;
    for (int shift = 0; shift < 24; shift += 8) {
      const u32 s = above >> shift & 255;
      const u32 b = below >> shift & 255;
      const u32 component = times(255 - belowAlpha, s) + times(belowAlpha, blended(mode, b, s));
      mixed |= times(std::min(component, 255u), alpha) << shift;
    }
    to[i] = over(to[i], mixed);
  }
}

void Painter::run(i32 x, i32 y, i32 count, u32 cover) noexcept {
  if (isNothing()) return;
  Pixel* const to = how_.surface.at(x, y);
  if (isPlain_) {
    if (isSolid_ && cover == 255) return loops_.fill(to, count, pixel_);
    return loops_.overOne(to, count, scaled(pixel_, cover));
  }
  if (!hasMasks_ && cover == 255 && how_.opacity == 255 && how_.source) {
    Pixel* const from = rows_.pixels.data();
    how_.source->read({x + 0.5 - how_.origin.x, y + 0.5 - how_.origin.y}, count, from);
    if (how_.mode == BlendMode::Normal) return loops_.overMany(to, from, count);
    return blend(how_.mode, how_.surface.isOpaque, to, from, nullptr, count);
  }
  u8* const covers = rows_.covers.data();
  std::memset(covers, static_cast<int>(cover), static_cast<std::size_t>(count));
  paintCovered(x, y, count, covers);
}

void Painter::many(i32 x, i32 y, i32 count, const u8* covers) noexcept {
  if (isNothing()) return;
  if (isPlain_) return loops_.overOneCovered(how_.surface.at(x, y), covers, count, pixel_);
  u8* const own = rows_.covers.data();
  std::memcpy(own, covers, static_cast<std::size_t>(count));
  paintCovered(x, y, count, own);
}

void Painter::paintCovered(i32 x, i32 y, i32 count, u8* covers) noexcept {
  for (const PlacedMask& placed : how_.masks) {
    if (!placed.mask) continue;
    placed.mask->read(x - placed.x, y - placed.y, count, rows_.masks.data());
    loops_.multiply(covers, rows_.masks.data(), count);
  }
  Pixel* const to = how_.surface.at(x, y);
  if (!how_.source && how_.mode == BlendMode::Normal) return loops_.overOneCovered(to, covers, count, pixel_);
  Pixel* const from = rows_.pixels.data();
  if (how_.source) {
    if (how_.opacity < 255) loops_.multiplyOne(covers, how_.opacity, count);
    how_.source->read({x + 0.5 - how_.origin.x, y + 0.5 - how_.origin.y}, count, from);
  } else {
    loops_.fill(from, count, pixel_);
  }
  if (how_.mode == BlendMode::Normal) return loops_.overManyCovered(to, from, covers, count);
  blend(how_.mode, how_.surface.isOpaque, to, from, covers, count);
}

}  // namespace corvix::smooth
