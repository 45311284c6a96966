// Tiles: drawings that are collected, and painted by several threads, each some of the rows. Every thread makes the
// figures that reach its rows anew and whole, so that the pixels are those that one thread paints.
#pragma once

#include "plugins/smooth/Crew_p.h"
#include "plugins/smooth/Painter_p.h"
#include "plugins/smooth/Rasterizer_p.h"

namespace corvix::smooth {

class Tiles {
 public:
  void begin(i32 threads) noexcept { threads_ = threads; }
  void end() noexcept { *this = {}; }  // what is left is forgotten
  bool isOn() const noexcept { return threads_ > 0; }
  bool isEmpty() const noexcept { return drawings_.empty(); }
  bool isFull() const noexcept;
  const PixelBox& box() const noexcept { return box_; }  // where something may change

  // All of one surface. What a paint was made from must live until `draw`. These throw std::bad_alloc; then nothing was
  // added. False: the figures may be too many for a rasterizer.
  bool add(const Painter::How& how, const Figures& figures, FillRule rule, bool isSmooth);
  void add(const Painter::How& how, const PixelBox& box);
  void add(const Painter::How& how, const u8* covers, i32 strideBytes, const PixelBox& box);

  // Forgets it. False, with nothing painted, when memory does not suffice.
  bool draw() noexcept;

 private:
  enum class Kind : u8 { Box, Covers, Figures };
  struct Drawing {
    Painter::How how;
    Kind kind = Kind::Box;
    FillRule rule = FillRule::Winding;
    bool isSmooth = true;
    PixelBox box = {0, 0, 0, 0};
    std::size_t first = 0;  // of its steps, or its coverage
    std::size_t count = 0;
  };
  struct Worker {
    Rasterizer rasterizer;
    Painter::Rows rows;
  };
  struct Job;

  Drawing& added(const Painter::How& how, Kind kind);
  void paintRows(Worker& worker, i32 top, i32 bottom) const;

  i32 threads_ = 0;
  HeapVector<Drawing> drawings_;
  HeapVector<FigureStep> steps_;
  HeapVector<u8> covers_;
  PixelBox box_ = {0, 0, 0, 0};
  std::unique_ptr<Worker[]> workers_;  // a thread each
  std::unique_ptr<Crew> crew_;
};

}  // namespace corvix::smooth
