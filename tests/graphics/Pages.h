// Contexts to test with, and scenes compared pixel by pixel with coverage that the test computes from geometry.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "graphics/creators/QuillCreators_p.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace corvix::testing_support {

enum class Through { Gdi, GdiPlus };
inline constexpr Through kBoth[] = {Through::Gdi, Through::GdiPlus};

inline std::string nameOf(Through through) { return through == Through::Gdi ? "GDI" : "GDI+"; }

// A memory context of one's own, white.
inline Ref<IAGDC> makePage(Through through, double width = 64, double height = 48) {
  const auto creator = make<QuillMemoryDCCreator>();
  const u32 wanted = through == Through::GdiPlus ? capability::kGdiPlus : 0;
  return Ref<IAGDC>::adopt(creator->create(wanted, 0, nullptr, width, height));
}

inline Color pixelOf(IAGDC& page, i32 x, i32 y) {
  Color color = 0;
  return page.getPixel(x, y, &color) ? color : 0;
}

// What a pixel has to be: painted, not painted, or either (an edge runs through it).
enum class Covered { No, Yes, Edge };
using Coverage = std::function<Covered(double x, double y)>;  // of a pixel's middle

// The middles of pixels that are inside; those within `slack` of the border may be either.
inline Coverage inside(std::function<double(double, double)> distance, double slack) {
  return [distance, slack](double x, double y) {
    const double d = distance(x, y);
    return std::abs(d) <= slack ? Covered::Edge : d < 0 ? Covered::Yes : Covered::No;
  };
}

// Signed distances: negative inside.
inline double boxDistance(double x, double y, const Box& box) {
  return std::max(std::max(box.left - x, x - box.right), std::max(box.top - y, y - box.bottom));
}
// Of a line's body with flat ends.
inline double lineDistance(double x, double y, Point from, Point to, double width) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  const double along = ((x - from.x) * (to.x - from.x) + (y - from.y) * (to.y - from.y)) / length;
  const double across = ((x - from.x) * (to.y - from.y) - (y - from.y) * (to.x - from.x)) / length;
  return std::max(std::abs(across) - width / 2, std::max(-along, along - length));
}

// Every pixel of the page against what is expected; `paint` where covered, white elsewhere.
inline void expectCoverage(IAGDC& page, Color paint, const Coverage& coverage, const std::string& row) {
  const Point origin = page.origin();
  page.setOrigin(0, 0);
  int wrong = 0;
  std::string first;
  std::string picture;  // of what is there: # painted as expected, ! painted, ? not painted, o any edge
  for (i32 y = 0; y < page.height(); ++y) {
    for (i32 x = 0; x < page.width(); ++x) {
      const Covered expected = coverage(x + 0.5, y + 0.5);
      const Color color = pixelOf(page, x, y);
      const bool isRight = expected == Covered::Edge || color == (expected == Covered::Yes ? paint : kWhite);
      const char sign = expected == Covered::Edge ? (color == kWhite ? ',' : 'o') : color == kWhite ? '.' : '#';
      picture += isRight ? sign : color == kWhite ? '?' : '!';
      if (isRight) continue;
      if (!wrong++) {
        first =
            "(" + std::to_string(x) + ", " + std::to_string(y) + ") is " + (color == paint ? "" : "not ") + "painted";
      }
    }
    picture += '\n';
  }
  page.setOrigin(origin.x, origin.y);
  EXPECT_EQ(wrong, 0) << row << ": first " << first << '\n' << picture;
}

inline int countPainted(IAGDC& page) {
  int count = 0;
  for (i32 y = 0; y < page.height(); ++y) {
    for (i32 x = 0; x < page.width(); ++x) count += pixelOf(page, x, y) != kWhite;
  }
  return count;
}

}  // namespace corvix::testing_support
