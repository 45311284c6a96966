// What both kinds of context draw, against geometry.
#include "tests/graphics/GraphicsTesting.h"

namespace corvix::testing {
namespace {

constexpr Color kRed = rgb(255, 0, 0);

struct Scene {
  const char* name;
  std::function<bool(IAGDC&)> draw;
  Coverage coverage;
};

Point polar(double angle, double radius) { return {32 + radius * std::cos(angle), 24 + radius * std::sin(angle)}; }

bool addStar(IAGDC& page) {
  bool isAdded = page.beginPath();
  for (int i = 0; i < 5; ++i) {
    const Point p = polar(i * 4 * std::acos(-1.0) / 5 - 0.3, 20);
    isAdded = (i ? page.lineTo(p.x, p.y) : page.moveTo(p.x, p.y)) && isAdded;
  }
  return page.closePath() && isAdded;
}

// The number of times the star goes around a point.
int starWinding(double x, double y) {
  int winding = 0;
  for (int i = 0; i < 5; ++i) {
    const Point a = polar(i * 4 * std::acos(-1.0) / 5 - 0.3, 20);
    const Point b = polar((i + 1) * 4 * std::acos(-1.0) / 5 - 0.3, 20);
    const double side = (b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y);
    if (a.y <= y && b.y > y && side > 0) ++winding;
    if (a.y > y && b.y <= y && side < 0) --winding;
  }
  return winding;
}
double starEdge(double x, double y) {
  double nearest = 1e9;
  for (int i = 0; i < 5; ++i) {
    const Point a = polar(i * 4 * std::acos(-1.0) / 5 - 0.3, 20);
    const Point b = polar((i + 1) * 4 * std::acos(-1.0) / 5 - 0.3, 20);
    nearest = std::min(nearest, std::max(0.0, lineDistance(x, y, a, b, 0)));
  }
  return nearest;
}
Coverage star(FillRule rule) {
  return [rule](double x, double y) {
    if (starEdge(x, y) < 1.2) return Covered::Edge;
    const int winding = starWinding(x, y);
    return (rule == FillRule::Winding ? winding != 0 : winding % 2 != 0) ? Covered::Yes : Covered::No;
  };
}

bool drawWide(IAGDC& page, double width) { return page.setStrokeColor(kRed) && page.setLineWidth(width); }

const Scene kScenes[] = {
    {"rectangle, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillRect(5, 7, 20, 11); },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {5, 7, 25, 18});
         },
         0)},
    {"line across, four wide", [](IAGDC& page) { return drawWide(page, 4) && page.line(10, 20, 50, 20); },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {10, 18, 50, 22});
         },
         0.5)},
    {"line down, device pixels", [](IAGDC& page) { return drawWide(page, 6) && page.linePixel(30, 5, 30, 40); },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {27, 5, 33, 40});
         },
         0.5)},
    {"sloping line", [](IAGDC& page) { return drawWide(page, 8) && page.line(10, 10, 50, 40); },
     inside(
         [](double x, double y) {
           return lineDistance(x, y, {10, 10}, {50, 40}, 8);
         },
         1.2)},
    {"from minus to plus a thousand million",
     [](IAGDC& page) { return drawWide(page, 5) && page.line(-1e9, 24, 1e9, 24); },
     inside([](double, double y) { return std::abs(y - 24) - 2.5; }, 0.6)},
    {"the same, sloping", [](IAGDC& page) { return drawWide(page, 6) && page.line(-1e9, -1e9 + 4, 1e9, 1e9 + 4); },
     inside(
         [](double x, double y) {
           return lineDistance(x, y, {-100, -96}, {100, 104}, 6);
         },
         1.2)},
    {"line to line to",
     [](IAGDC& page) {
       return drawWide(page, 4) && page.moveTo(10, 10) && page.lineTo(40, 10) && page.lineToPixel(40, 40);
     },
     inside(
         [](double x, double y) {
           return std::min(boxDistance(x, y, {10, 8, 40, 12}), boxDistance(x, y, {38, 10, 42, 40}));
         },
         0.5)},
    {"rectangle, filled, huge",
     [](IAGDC& page) { return page.setFillColor(kRed) && page.fillRect(-1e9, 10, 2e9, 1e9); },
     inside([](double, double y) { return 10 - y; }, 0)},
    {"polyline with round joins and caps",
     [](IAGDC& page) {
       const Point points[3] = {{12, 36}, {32, 12}, {52, 36}};
       return drawWide(page, 8) && page.setLineCap(kCapRound) && page.setLineJoin(kJoinRound) &&
              page.strokePolyline(points, 3);
     },
     inside(
         [](double x, double y) {
           const auto round = [&](double cx, double cy) { return std::hypot(x - cx, y - cy) - 4; };
           return std::min({lineDistance(x, y, {12, 36}, {32, 12}, 8), lineDistance(x, y, {32, 12}, {52, 36}, 8),
                            round(12, 36), round(32, 12), round(52, 36)});
         },
         2.3)},  // the emulation rounds the corners of the outline to pixels
    {"square caps",
     [](IAGDC& page) {
       return drawWide(page, 6) && page.setLineCap(kCapSquare) && page.selectGeometricPen() &&
              page.line(20, 24, 40, 24);
     },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {17, 21, 43, 27});
         },
         0.6)},
    {"dashes",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.line(4, 24, 60, 24);
     },
     [](double x, double y) {
       const double at = std::fmod(x - 4, 12);
       if (x < 4.6 || x > 59.4 || std::abs(at - 8) < 0.8 || at < 0.8 || at > 11.2) return Covered::Edge;
       if (std::abs(std::abs(y - 24) - 2) < 0.6) return Covered::Edge;
       return std::abs(y - 24) < 2 && at < 8 ? Covered::Yes : Covered::No;
     }},
    {"dashes begun in their middle",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 6) && page.line(4, 24, 60, 24);
     },
     [](double x, double y) {
       const double at = std::fmod(x - 4 + 6, 12);
       if (x < 4.6 || x > 59.4 || std::abs(at - 8) < 0.8 || at < 0.8 || at > 11.2) return Covered::Edge;
       if (std::abs(std::abs(y - 24) - 2) < 0.6) return Covered::Edge;
       return std::abs(y - 24) < 2 && at < 8 ? Covered::Yes : Covered::No;
     }},
    {"dashes of a line that begins far out",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.line(-1 - 12e6, 24, 12e6, 24);
     },
     [](double x, double y) {
       const double at = std::fmod(x + 1, 12);
       if (std::abs(at - 8) < 0.8 || at < 0.8 || at > 11.2) return Covered::Edge;
       if (std::abs(std::abs(y - 24) - 2) < 0.6) return Covered::Edge;
       return std::abs(y - 24) < 2 && at < 8 ? Covered::Yes : Covered::No;
     }},
    {"solid again after dashes",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.setDash(nullptr, 0, 0) &&
              page.line(4, 24, 60, 24);
     },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {4, 22, 60, 26});
         },
         0.6)},
    {"star by even and odd",
     [](IAGDC& page) { return addStar(page) && page.setFillColor(kRed) && page.drawPath(PathPaint::Fill); },
     star(FillRule::EvenOdd)},
    {"star by winding",
     [](IAGDC& page) {
       return addStar(page) && page.setFillColor(kRed) && page.setFillRule(FillRule::Winding) &&
              page.drawPath(PathPaint::Fill);
     },
     star(FillRule::Winding)},
    {"clip by a star",
     [](IAGDC& page) {
       return addStar(page) && page.setFillRule(FillRule::Winding) && page.clipPath() && page.endPath() &&
              page.setFillColor(kRed) && page.fillRect(0, 0, 64, 48);
     },
     star(FillRule::Winding)},
    {"clip by a stroke",
     [](IAGDC& page) {
       return drawWide(page, 10) && page.beginPath() && page.moveTo(10, 24) && page.lineTo(50, 24) &&
              page.clipStroke() && page.endPath() && page.setFillColor(kRed) && page.fillRect(0, 0, 64, 48);
     },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {10, 19, 50, 29});
         },
         0.6)},
    {"polygon that leaves the page by far",
     [](IAGDC& page) {
       return page.beginPath() && page.moveTo(-2e9, 24) && page.lineTo(32, -2e9) && page.lineTo(2e9, 24) &&
              page.closePath() && page.setFillColor(kRed) && page.drawPath(PathPaint::Fill);
     },
     inside([](double, double y) { return y - 24; }, 0.6)},
    {"circle of curves, filled",
     [](IAGDC& page) {
       const double r = 18;
       const double k = r * 0.5522847498;
       return page.beginPath() && page.moveTo(32 + r, 24) && page.curveTo(32 + r, 24 + k, 32 + k, 24 + r, 32, 24 + r) &&
              page.curveTo(32 - k, 24 + r, 32 - r, 24 + k, 32 - r, 24) &&
              page.curveTo(32 - r, 24 - k, 32 - k, 24 - r, 32, 24 - r) &&
              page.curveTo(32 + k, 24 - r, 32 + r, 24 - k, 32 + r, 24) && page.closePath() && page.flattenPath() &&
              page.setFillColor(kRed) && page.drawPath(PathPaint::Fill);
     },
     inside([](double x, double y) { return std::hypot(x - 32, y - 24) - 18; }, 1)},
    {"frame of a path",
     [](IAGDC& page) {
       return drawWide(page, 4) && page.beginPath() && page.rectangle(12, 12, 40, 24) &&
              page.drawPath(PathPaint::Stroke);
     },
     [](double x, double y) {
       if (std::abs(std::abs(x - 32) - 20) < 2.5 && std::abs(std::abs(y - 24) - 12) < 2.5) return Covered::Edge;
       const double d = std::abs(boxDistance(x, y, {12, 12, 52, 36})) - 2;
       return std::abs(d) < 0.6 ? Covered::Edge : d < 0 ? Covered::Yes : Covered::No;
     }},
    {"frame that is cut at the far left",
     [](IAGDC& page) { return drawWide(page, 4) && page.rectangle(-1e8, 12, 1e8 + 52, 24); },
     inside(
         [](double x, double y) {
           return std::abs(boxDistance(x, y, {-1000, 12, 52, 36})) - 2;
         },
         0.6)},
    {"origin moves all",
     [](IAGDC& page) { return page.setOrigin(20, 10) && page.setFillColor(kRed) && page.fillRect(-10, -5, 20, 11); },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {10, 5, 30, 16});
         },
         0)},
    {"clip moves with the origin",
     [](IAGDC& page) {
       return page.clipRect(0, 0, 10, 10) && page.setOrigin(20, 10) && page.setFillColor(kRed) &&
              page.fillRect(-100, -100, 200, 200);
     },
     inside(
         [](double x, double y) {
           return boxDistance(x, y, {20, 10, 30, 20});
         },
         0)},
};

TEST(Drawing, ScenesMatchGeometry) {
  for (const Through through : kBoth) {
    for (const Scene& scene : kScenes) {
      const Ref<IAGDC> page = makePage(through);
      ASSERT_TRUE(page);
      EXPECT_TRUE(scene.draw(*page)) << nameOf(through) << ", " << scene.name;
      expectCoverage(*page, kRed, scene.coverage, nameOf(through) + ", " + scene.name);
    }
  }
}

// The two ways may round an edge differently, by one pixel, and no more of the page than edges take.
TEST(Drawing, BothWaysDifferAtEdgesOnly) {
  for (const Scene& scene : kScenes) {
    SCOPED_TRACE(scene.name);
    const Ref<IAGDC> plain = makePage(Through::Gdi);
    const Ref<IAGDC> plus = makePage(Through::GdiPlus);
    ASSERT_TRUE(scene.draw(*plain) && scene.draw(*plus));
    plain->setOrigin(0, 0);
    plus->setOrigin(0, 0);
    const auto differs = [&](i32 x, i32 y) { return pixelOf(*plain, x, y) != pixelOf(*plus, x, y); };
    int different = 0;
    int deep = 0;
    for (i32 y = 1; y < 47; ++y) {
      for (i32 x = 1; x < 63; ++x) {
        if (!differs(x, y)) continue;
        ++different;
        deep += differs(x - 1, y) && differs(x + 1, y) && differs(x, y - 1) && differs(x, y + 1);
      }
    }
    EXPECT_EQ(deep, 0);
    EXPECT_LT(different, 64 * 48 / 20);
  }
}

}  // namespace
}  // namespace corvix::testing
