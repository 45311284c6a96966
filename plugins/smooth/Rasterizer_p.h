// Rasterizer: how much of each pixel figures cover, by Anti-Grain Geometry's cells: exact areas to 1/256 of a pixel.
#pragma once

#include "graphics/IAGDC.h"
#include "plugins/smooth/Figures_p.h"

#include <cmath>
#include <cstring>
#include <memory>

#include <agg_basics.h>
#include <agg_rasterizer_cells_aa.h>
#include <agg_rasterizer_scanline_aa_nogamma.h>
#include <agg_rasterizer_sl_clip.h>

namespace corvix::smooth {

class Rasterizer {
 public:
  // What is outside the clip is left out, and figures close by themselves. Throws std::bad_alloc, also when there is
  // more than is kept of one drawing.
  void take(const FigureStep* begin, const FigureStep* end, const PixelBox& clip) {
    start(clip);
    for (const FigureStep* step = begin; step != end; ++step) {
      switch (step->kind) {
        case FigureStep::Kind::Move:
          moveTo(step->to);
          break;
        case FigureStep::Kind::Line:
          lineTo(step->to);
          break;
        case FigureStep::Kind::Close:
          close();
          break;
      }
    }
    finish();
  }
  void take(const Figures& figures, const PixelBox& clip) {
    take(figures.steps().data(), figures.steps().data() + figures.steps().size(), clip);
  }

  // The rows with something in them, from the top.
  PixelBox rows() const noexcept {
    if (!cells_->total_cells()) return {0, 0, 0, 0};
    return intersected(clip_, {cells_->min_x(), cells_->min_y(), cells_->max_x() + 1, cells_->max_y() + 1});
  }

  // Calls run(x, y, count, cover) and many(x, y, count, covers), from the top and from the left.
  template <class Sink>
  void sweep(FillRule rule, bool isSmooth, Sink&& sink) {
    sweep(rule, isSmooth, sink, clip_.top, clip_.bottom);
  }
  template <class Sink>
  void sweep(FillRule rule, bool isSmooth, Sink&& sink, i32 top, i32 bottom) {
    const PixelBox box = rows();
    for (i32 y = std::max(top, box.top); y < std::min(bottom, box.bottom); ++y) sweepRow(y, rule, isSmooth, sink);
  }

  static constexpr std::size_t kMostCells = 8 << 20;

 private:
  void start(const PixelBox& clip) {
    if (!cells_) cells_ = makeCells();
    cells_->reset();
    clip_ = clip;
    clipper_.reset_clipping();
    clipper_.clip_box(clip.left, clip.top, clip.right, clip.bottom);
    isOpen_ = false;
  }
  void moveTo(Point to) {
    close();
    clipper_.move_to(to.x, to.y);
    first_ = to;
  }
  void lineTo(Point to) {
    clipper_.line_to(*cells_, to.x, to.y);
    isOpen_ = true;
  }
  void close() {
    if (isOpen_) clipper_.line_to(*cells_, first_.x, first_.y);
    isOpen_ = false;
  }

  void finish() {
    close();
    const std::size_t count = cells_->total_cells() + 1;
    if (count >= kMostCells) throw std::bad_alloc();
    const std::size_t rows = count > 1 ? static_cast<std::size_t>(cells_->max_y() - cells_->min_y() + 1) : 0;
    if (count > sortedCells_ || rows > sortedRows_) {
      const std::size_t bytes = std::max(count * sizeof(void*), rows * 2 * sizeof(unsigned)) + kSlack * 8;
      const agg::Aside aside(bytes, bytes);
      cells_->sort_cells();
      sortedCells_ = std::max(count, sortedCells_);
      sortedRows_ = std::max(rows, sortedRows_);
    }
    cells_->sort_cells();
    covers_.resize(static_cast<std::size_t>(std::max(0, clip_.right - clip_.left)) + kSlack);
  }

  using Cells = agg::rasterizer_cells_aa<agg::cell_aa>;
  static constexpr std::size_t kCellsInBlock = 4096;
  static constexpr std::size_t kBlocksInList = 256;
  static constexpr i32 kLongRun = 12;
  static constexpr std::size_t kSlack = 32;

  struct Conversion {
    using coord_type = double;
    static double mul_div(double a, double b, double c) { return a * b / c; }
    static int xi(double v) { return static_cast<int>(std::lrint(v * double{agg::poly_subpixel_scale})); }
    static int yi(double v) { return xi(v); }
    static double upscale(double v) { return v; }
    static double downscale(int v) { return v; }
  };

  // With its first block: of a list without one it never frees the list.
  static std::unique_ptr<Cells> makeCells() {
    auto cells = std::make_unique<Cells>(static_cast<unsigned>(kMostCells / kCellsInBlock));
    const agg::Aside aside(kBlocksInList * sizeof(void*), kCellsInBlock * sizeof(agg::cell_aa));
    cells->line(0, 0, 2 * agg::poly_subpixel_scale, 2 * agg::poly_subpixel_scale);
    return cells;
  }

  static u32 coverOf(int doubledArea, FillRule rule, bool isSmooth) noexcept {
    constexpr u32 kWhole = 1u << (2 * agg::poly_subpixel_shift + 1);
    u32 area = static_cast<u32>(std::abs(doubledArea));
    if (rule == FillRule::EvenOdd) {
      area &= 2 * kWhole - 1;
      if (area > kWhole) area = 2 * kWhole - area;
    }
    if (area > kWhole) area = kWhole;
    if (!isSmooth) return area > kWhole / 2 ? 255 : 0;
    return (area * 255 + kWhole / 2) / kWhole;
  }

  template <class Sink>
  void sweepRow(i32 y, FillRule rule, bool isSmooth, Sink& sink) {
    unsigned count = cells_->scanline_num_cells(static_cast<unsigned>(y));
    const agg::cell_aa* const* cell = cells_->scanline_cells(static_cast<unsigned>(y));
    u8* const covers = covers_.data();
    i32 begin = 0;  // of what is in `covers`
    i32 end = 0;
    const auto flush = [&] {
      if (end > begin) sink.many(begin, y, end - begin, covers);
      begin = end;
    };
    const auto add = [&](i32 x, i32 length, u32 cover) {
      if (x < clip_.left) {
        length -= clip_.left - x;
        x = clip_.left;
      }
      length = std::min(length, clip_.right - x);
      if (length <= 0) return;
      if (x != end || length >= kLongRun) {
        flush();
        begin = end = x;
      }
      if (length >= kLongRun) {
        sink.run(x, y, length, cover);
        begin = end = x + length;
        return;
      }
      std::memset(covers + (x - begin), static_cast<int>(cover), static_cast<std::size_t>(length));
      end = x + length;
    };
    int cover = 0;
    while (count) {
      const i32 x = (*cell)->x;
      int area = 0;
      do {
        area += (*cell)->area;
        cover += (*cell)->cover;
        ++cell;
      } while (--count && (*cell)->x == x);
      constexpr int kUp = agg::poly_subpixel_shift + 1;
      if (const u32 here = coverOf(cover * (1 << kUp) - area, rule, isSmooth)) add(x, 1, here);
      if (!count || (*cell)->x <= x + 1) continue;
      if (const u32 between = coverOf(cover * (1 << kUp), rule, isSmooth)) add(x + 1, (*cell)->x - x - 1, between);
    }
    flush();
  }

  std::unique_ptr<Cells> cells_;
  agg::rasterizer_sl_clip<Conversion> clipper_;
  PixelBox clip_ = {0, 0, 0, 0};
  Point first_ = {0, 0};
  bool isOpen_ = false;
  HeapVector<u8> covers_;
  std::size_t sortedCells_ = 0;  // for so many there is room
  std::size_t sortedRows_ = 0;
};

}  // namespace corvix::smooth
