// Painter: covered pixels onto a surface, through clip and soft mask, by a mode.
#pragma once

#include "graphics/Blending.h"
#include "plugins/smooth/CoverMask_p.h"
#include "plugins/smooth/Paint_p.h"
#include "plugins/smooth/Spans_p.h"

namespace corvix::smooth {

// A mask and how far it was moved since it was made.
struct PlacedMask {
  SharedMask mask;
  i32 x = 0;
  i32 y = 0;
};

// `to` by `from`, which is covered by so much; null: wholly.
void blend(BlendMode mode, bool isOpaque, Pixel* to, const Pixel* from, const u8* covers, i32 count) noexcept;

class Painter {
 public:
  struct How {
    Surface surface;
    PixelBox clip = {0, 0, 0, 0};  // within the surface
    PlacedMask masks[2] = {};      // of the clip, and the soft one
    u32 opacity = 255;
    BlendMode mode = BlendMode::Normal;
    Pixel pixel = 0;  // unless there is a source
    SharedPaint source;
    Point origin = {0, 0};  // of the source
  };
  // Rows that painters need, kept by the context from one to the next.
  struct Rows {
    HeapVector<u8> covers;
    HeapVector<u8> masks;
    HeapVector<Pixel> pixels;
  };

  // Throws std::bad_alloc.
  Painter(const How& how, Rows& rows) : how_(how), rows_(rows), loops_(spans()) {
    const auto width = static_cast<std::size_t>(std::max(0, how.clip.right - how.clip.left));
    if (rows.pixels.size() < width) {
      rows.covers.resize(width);
      rows.masks.resize(width);
      rows.pixels.resize(width);
    }
    hasMasks_ = how.masks[0].mask || how.masks[1].mask;
    isPlain_ = !hasMasks_ && !how.source && how.mode == BlendMode::Normal;
    pixel_ = scaled(how.pixel, how.opacity);
    isSolid_ = isPlain_ && pixel_ >> 24 == 255;
  }

  // Of a row that is within the clip.
  void run(i32 x, i32 y, i32 count, u32 cover) noexcept;
  void many(i32 x, i32 y, i32 count, const u8* covers) noexcept;

 private:
  void paintCovered(i32 x, i32 y, i32 count, u8* covers) noexcept;  // may write to the covers
  bool isNothing() const noexcept { return isPlain_ && pixel_ == 0; }

  const How& how_;
  Rows& rows_;
  const SpanLoops& loops_;
  bool hasMasks_;
  bool isPlain_;
  bool isSolid_;
  Pixel pixel_;
};

}  // namespace corvix::smooth
