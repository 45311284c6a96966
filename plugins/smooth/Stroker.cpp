#include "plugins/smooth/Stroker_p.h"

namespace corvix::smooth {

namespace {

constexpr double kTolerance = 0.1;  // pixels
// What is larger than this is drawn as finely as if it were as large: an arc has 1,500 pieces then.
constexpr double kLargest = 1e5;  // pixels

double largestScale(const Matrix& m) noexcept { return std::max(std::hypot(m.a, m.b), std::hypot(m.c, m.d)); }

}  // namespace

Stroker::Stroker(const LineState& line, double width, const Matrix& toDevice, const Box& area, Figures& to)
    : matrix_(toDevice), to_(to), area_(area) {
  const double scale = largestScale(toDevice);
  closest_ = 1e-4 / scale;
  math_.width(width);
  const double size = std::max({width * scale, area.right - area.left, area.bottom - area.top});
  tolerance_ = kTolerance * std::max(1.0, size / kLargest);
  math_.approximation_scale(2 * scale * kTolerance / tolerance_);
  math_.miter_limit(std::max(1.0, line.miterLimit));
  math_.line_cap(line.cap == kCapRound ? agg::round_cap : line.cap == kCapSquare ? agg::square_cap : agg::butt_cap);
  math_.line_join(line.join == kJoinRound   ? agg::round_join
                  : line.join == kJoinBevel ? agg::bevel_join
                                            : agg::miter_join_revert);
  math_.inner_join(agg::inner_round);
}

bool Stroker::move(Point p) {
  finish(false);
  points_.emplace_back(p.x, p.y);
  last_ = p;
  return true;
}

bool Stroker::line(Point p) {
  points_.emplace_back(p.x, p.y);
  last_ = p;
  return true;
}

bool Stroker::curve(Point p1, Point p2, Point p3) {
  flattenCurve({last_, p1, p2, p3}, matrix_, area_, tolerance_, [this](Point p) { line(p); });
  return true;
}

bool Stroker::close() {
  const Point first = points_.empty() ? last_ : Point{points_.front().x, points_.front().y};
  finish(true);
  last_ = first;
  return true;
}

void Stroker::join(Outline& outline, std::size_t from, std::size_t at, std::size_t to) {
  const bool isForward = (from + 1) % points_.size() == at;
  math_.calc_join(outline, points_[from], points_[at], points_[to], isForward ? points_[from].dist : points_[at].dist,
                  isForward ? points_[at].dist : points_[to].dist);
}

void Stroker::finish(bool isClosed) {
  if (points_.size() < 2) return points_.clear();
  // Each with the distance to the next.
  std::size_t count = 1;
  const auto distance = [this](std::size_t from, std::size_t to) {
    return std::hypot(points_[to].x - points_[from].x, points_[to].y - points_[from].y);
  };
  for (std::size_t i = 1; i < points_.size(); ++i) {
    const double apart = distance(count - 1, i);
    if (apart <= closest_) continue;
    points_[count - 1].dist = apart;
    points_[count++] = points_[i];
  }
  while (isClosed && count > 1 && distance(count - 1, 0) <= closest_) --count;
  if (count == 1) {
    // A dot has caps, and lies along the x axis.
    if (math_.line_cap() == agg::butt_cap) return points_.clear();
    points_[1] = agg::vertex_dist(points_[0].x + closest_, points_[0].y);
    points_[0].dist = closest_;
    count = 2;
  }
  points_.resize(count, agg::vertex_dist(0, 0));
  points_.back().dist = distance(count - 1, 0);
  Outline outline{matrix_, to_};
  if (isClosed && count > 2) {
    for (std::size_t i = 0; i < count; ++i) join(outline, (i + count - 1) % count, i, (i + 1) % count);
    outline.isBegun = false;
    for (std::size_t i = count; i-- > 0;) join(outline, (i + 1) % count, i, (i + count - 1) % count);
  } else {
    math_.calc_cap(outline, points_[0], points_[1], points_[0].dist);
    for (std::size_t i = 1; i + 1 < count; ++i) join(outline, i - 1, i, i + 1);
    math_.calc_cap(outline, points_[count - 1], points_[count - 2], points_[count - 2].dist);
    for (std::size_t i = count - 1; i-- > 1;) join(outline, i + 1, i, i - 1);
  }
  points_.clear();
}

}  // namespace corvix::smooth
