#include "plugins/smooth/Tiles_p.h"

#include <atomic>

namespace corvix::smooth {

namespace {

// What is collected: as little as is worth waking threads and keeping the pixels for.
constexpr std::size_t kLeastBytes = std::size_t{1} << 20;
constexpr std::size_t kMostBytes = std::size_t{8} << 20;
constexpr std::size_t kFewDrawings = 16;     // that are not worth a second thread,
constexpr std::size_t kFewPixels = 64 * 64;  // unless they are large

std::size_t pixelsIn(const PixelBox& box) noexcept {
  return static_cast<std::size_t>(box.right - box.left) * static_cast<std::size_t>(box.bottom - box.top);
}

// The pixels of a box as they were.
class Before {
 public:
  Before(const Surface& surface, const PixelBox& box) : surface_(surface), box_(box), pixels_(pixelsIn(box)) {
    eachRow([](Pixel* row, Pixel* kept, std::size_t bytes) { std::memcpy(kept, row, bytes); });
  }
  void putBack() noexcept {
    eachRow([](Pixel* row, Pixel* kept, std::size_t bytes) { std::memcpy(row, kept, bytes); });
  }

 private:
  template <class Copy>
  void eachRow(Copy copy) noexcept {
    const auto width = static_cast<std::size_t>(box_.right - box_.left);
    Pixel* kept = pixels_.data();
    for (i32 y = box_.top; y < box_.bottom; ++y, kept += width) copy(surface_.at(box_.left, y), kept, width * 4);
  }

  Surface surface_;
  PixelBox box_;
  HeapVector<Pixel> pixels_;
};

// Where figures may have pixels; false when a rasterizer may not take so many.
bool boundsOf(const Figures& figures, const PixelBox& clip, PixelBox& box) noexcept {
  const double width = clip.right - clip.left;
  const double height = clip.bottom - clip.top;
  Point low = {double{1} * clip.right, double{1} * clip.bottom};
  Point high = {double{1} * clip.left, double{1} * clip.top};
  Point first = {0, 0};
  Point last = {0, 0};
  double cells = 0;
  for (const FigureStep& step : figures.steps()) {
    const Point to = step.kind == FigureStep::Kind::Close ? first : step.to;
    const Point from = step.kind == FigureStep::Kind::Move ? first : last;  // what is open closes
    cells += std::min(std::abs(last.x - from.x), width) + std::min(std::abs(last.y - from.y), height) +
             std::min(std::abs(to.x - last.x), width) + std::min(std::abs(to.y - last.y), height) + 4;
    if (step.kind == FigureStep::Kind::Move) first = to;
    last = to;
    low = {std::min(low.x, to.x), std::min(low.y, to.y)};
    high = {std::max(high.x, to.x), std::max(high.y, to.y)};
  }
  const auto pixel = [](double value, i32 least, i32 most) {
    return static_cast<i32>(std::clamp(value, double{1} * least, double{1} * most));
  };
  box = {pixel(std::floor(low.x) - 1, clip.left, clip.right), pixel(std::floor(low.y) - 1, clip.top, clip.bottom),
         pixel(std::ceil(high.x) + 1, clip.left, clip.right), pixel(std::ceil(high.y) + 1, clip.top, clip.bottom)};
  return cells < static_cast<double>(Rasterizer::kMostCells) / 2;
}

}  // namespace

bool Tiles::isFull() const noexcept {
  const std::size_t bytes = drawings_.size() * sizeof(Drawing) + steps_.size() * sizeof(FigureStep) + covers_.size();
  return bytes > std::clamp(2 * pixelsIn(box_), kLeastBytes, kMostBytes);
}

// Without a box it paints nothing, should its parts not find memory.
Tiles::Drawing& Tiles::added(const Painter::How& how, Kind kind) {
  Drawing& drawing = drawings_.emplace_back();
  drawing.how = how;
  drawing.kind = kind;
  return drawing;
}

bool Tiles::add(const Painter::How& how, const Figures& figures, FillRule rule, bool isSmooth) {
  PixelBox box;
  if (!boundsOf(figures, how.clip, box)) return false;
  if (smooth::isEmpty(box)) return true;
  Drawing& drawing = added(how, Kind::Figures);
  drawing.first = steps_.size();
  steps_.insert(steps_.end(), figures.steps().begin(), figures.steps().end());
  drawing.count = figures.steps().size();
  drawing.rule = rule;
  drawing.isSmooth = isSmooth;
  drawing.box = box;
  box_ = united(box_, box);
  return true;
}

void Tiles::add(const Painter::How& how, const PixelBox& box) {
  added(how, Kind::Box).box = box;
  box_ = united(box_, box);
}

void Tiles::add(const Painter::How& how, const u8* covers, i32 strideBytes, const PixelBox& box) {
  Drawing& drawing = added(how, Kind::Covers);
  drawing.first = covers_.size();
  drawing.count = static_cast<std::size_t>(box.right - box.left);
  covers_.resize(covers_.size() + pixelsIn(box));
  for (i32 y = box.top; y < box.bottom; ++y, covers += strideBytes) {
    std::memcpy(&covers_[drawing.first + static_cast<std::size_t>(y - box.top) * drawing.count], covers, drawing.count);
  }
  drawing.box = box;
  box_ = united(box_, box);
}

void Tiles::paintRows(Worker& worker, i32 top, i32 bottom) const {
  for (const Drawing& drawing : drawings_) {
    const PixelBox& box = drawing.box;
    const i32 first = std::max(box.top, top);
    const i32 end = std::min(box.bottom, bottom);
    if (first >= end) continue;
    Painter painter(drawing.how, worker.rows);
    switch (drawing.kind) {
      case Kind::Figures: {
        const FigureStep* const steps = &steps_[drawing.first];
        worker.rasterizer.take(steps, steps + drawing.count, drawing.how.clip);
        worker.rasterizer.sweep(drawing.rule, drawing.isSmooth, painter, first, end);
        break;
      }
      case Kind::Box:
        for (i32 y = first; y < end; ++y) painter.run(box.left, y, box.right - box.left, 255);
        break;
      case Kind::Covers:
        for (i32 y = first; y < end; ++y) {
          const u8* const covers = &covers_[drawing.first + static_cast<std::size_t>(y - box.top) * drawing.count];
          painter.many(box.left, y, static_cast<i32>(drawing.count), covers);
        }
        break;
    }
  }
}

// Rows go to whoever asks next.
struct Tiles::Job final : Crew::Work {
  Job(const Tiles& owner, i32 parts)
      : tiles(owner), rowsEach((owner.box_.bottom - owner.box_.top + parts - 1) / parts) {}

  void work(u32 number) noexcept override {
    try {
      while (!hasFailed) {
        const i32 top = nextRow.fetch_add(rowsEach);
        if (top >= tiles.box_.bottom) return;
        tiles.paintRows(tiles.workers_[number], top, std::min(top + rowsEach, tiles.box_.bottom));
      }
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
  }

  const Tiles& tiles;
  i32 rowsEach;
  std::atomic<i32> nextRow = tiles.box_.top;
  std::atomic<bool> hasFailed = false;
};

bool Tiles::draw() noexcept {
  bool isDrawn = smooth::isEmpty(box_);
  if (!isDrawn) {
    try {
      Before before(drawings_.front().how.surface, box_);
      if (!workers_) workers_ = std::make_unique<Worker[]>(static_cast<std::size_t>(threads_));
      const bool isLittle = drawings_.size() < kFewDrawings && pixelsIn(box_) < kFewPixels;
      Job job(*this, isLittle || threads_ == 1 ? 1 : 2 * threads_);
      if (isLittle || threads_ == 1) {
        job.work(0);
      } else {
        if (!crew_) crew_ = std::make_unique<Crew>(threads_);
        crew_->run(job);
      }
      isDrawn = !job.hasFailed;
      if (!isDrawn) before.putBack();
    } catch (const std::bad_alloc&) {
    }
  }
  drawings_.clear();
  steps_.clear();
  covers_.clear();
  box_ = {0, 0, 0, 0};
  return isDrawn;
}

}  // namespace corvix::smooth
