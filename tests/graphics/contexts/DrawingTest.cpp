// What both kinds of context draw, against geometry.
#include "graphics/quality/Quality_p.h"
#include "tests/graphics/Pages.h"

#include <windows.h>

namespace corvix {
namespace {

using namespace testing_support;

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

// A line that follows a curve, with either at its ends.
Coverage alongCurve(Point p0, Point p1, Point p2, Point p3, double width) {
  std::vector<Point> points;
  for (int i = 0; i <= 60; ++i) {
    const double t = i / 60.0;
    const double s = 1 - t;
    const auto at = [&](double a, double b, double c, double d) {
      return s * s * s * a + 3 * s * s * t * b + 3 * s * t * t * c + t * t * t * d;
    };
    points.push_back({at(p0.x, p1.x, p2.x, p3.x), at(p0.y, p1.y, p2.y, p3.y)});
  }
  return [=](double x, double y) {
    double nearest = 1e9;
    for (const Point& p : points) nearest = std::min(nearest, std::hypot(p.x - x, p.y - y));
    const double atEnd = std::min(std::hypot(p0.x - x, p0.y - y), std::hypot(p3.x - x, p3.y - y));
    // The emulation moves outlines by up to a pixel.
    if (std::abs(nearest - width / 2) < 1.9 || atEnd < width) return Covered::Edge;
    return nearest < width / 2 ? Covered::Yes : Covered::No;
  };
}
Coverage either(Coverage first, Coverage second) {
  return [=](double x, double y) { return std::max(first(x, y), second(x, y)); };
}

Coverage inBox(const Box& box, double slack) {
  return inside([box](double x, double y) { return boxDistance(x, y, box); }, slack);
}
Coverage inLine(Point from, Point to, double width, double slack) {
  return inside([=](double x, double y) { return lineDistance(x, y, from, to, width); }, slack);
}
// Four wide, at y 24, between two ends: eight drawn and four not, from `first` on.
Coverage dashed(double first, std::pair<double, double> ends) {
  return [=](double x, double y) {
    const double at = std::fmod(x - first, 12);
    if (x < ends.first + 0.6 || x > ends.second - 0.6) return Covered::Edge;
    if (std::abs(at - 8) < 0.8 || at < 0.8 || at > 11.2) return Covered::Edge;
    if (std::abs(std::abs(y - 24) - 2) < 0.6) return Covered::Edge;
    return std::abs(y - 24) < 2 && at < 8 ? Covered::Yes : Covered::No;
  };
}
const Coverage kNothing = [](double, double) { return Covered::No; };

bool drawWide(IAGDC& page, double width) { return page.setStrokeColor(kRed) && page.setLineWidth(width); }

const Scene kScenes[] = {
    {"rectangle, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillRect(5, 7, 20, 11); },
     inBox({5, 7, 25, 18}, 0)},
    {"line across, four wide", [](IAGDC& page) { return drawWide(page, 4) && page.line(10, 20, 50, 20); },
     inBox({10, 18, 50, 22}, 0.5)},
    {"line of the thinnest pen, and of the former one again",
     [](IAGDC& page) {
       return drawWide(page, 4) && page.selectHairlinePen() && page.linePixel(10, 19, 50, 19) && page.selectPen() &&
              page.line(10, 24, 50, 24);
     },
     either(inBox({10, 19, 50, 20}, 0), inBox({10, 22, 50, 26}, 0.5))},
    {"row and column of dots in one colour",
     [](IAGDC& page) { return page.dottedRow(5, 40, 7, kRed, kRed) && page.dottedColumn(9, 20, 30, kRed, kRed); },
     either(inBox({5, 7, 40, 8}, 0), inBox({9, 20, 10, 30}, 0))},
    {"line down, device pixels", [](IAGDC& page) { return drawWide(page, 6) && page.linePixel(30, 5, 30, 40); },
     inBox({27, 5, 33, 40}, 0.5)},
    {"sloping line", [](IAGDC& page) { return drawWide(page, 8) && page.line(10, 10, 50, 40); },
     inLine({10, 10}, {50, 40}, 8, 1.2)},
    {"from minus to plus a thousand million",
     [](IAGDC& page) { return drawWide(page, 5) && page.line(-1e9, 24, 1e9, 24); },
     inside([](double, double y) { return std::abs(y - 24) - 2.5; }, 0.6)},
    {"the same, sloping", [](IAGDC& page) { return drawWide(page, 6) && page.line(-1e9, -1e9 + 4, 1e9, 1e9 + 4); },
     inLine({-100, -96}, {100, 104}, 6, 1.2)},
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
     inBox({17, 21, 43, 27}, 0.6)},
    {"dashes",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.line(4, 24, 60, 24);
     },
     dashed(4, {4, 60})},
    {"dashes begun in their middle",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 6) && page.line(4, 24, 60, 24);
     },
     dashed(-2, {4, 60})},
    {"dashes of a line that begins far out",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.line(-1 - 12e6, 24, 12e6, 24);
     },
     dashed(-1, {-1, 65})},
    {"solid again after dashes",
     [](IAGDC& page) {
       const double lengths[] = {8, 4};
       return drawWide(page, 4) && page.setDash(lengths, 2, 0) && page.setDash(nullptr, 0, 0) &&
              page.line(4, 24, 60, 24);
     },
     inBox({4, 22, 60, 26}, 0.6)},
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
     inBox({10, 19, 50, 29}, 0.6)},
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
    {"curve",
     [](IAGDC& page) { return drawWide(page, 4) && page.moveTo(8, 40) && page.curveTo(20, -20, 44, -20, 56, 40); },
     alongCurve({8, 40}, {20, -20}, {44, -20}, {56, 40}, 4)},
    {"curve in pixels",
     [](IAGDC& page) { return drawWide(page, 4) && page.moveToPixel(8, 8) && page.curveToPixel(60, 8, 4, 40, 56, 40); },
     alongCurve({8, 8}, {60, 8}, {4, 40}, {56, 40}, 4)},
    {"two curves at once",
     [](IAGDC& page) {
       const Point points[] = {{8, 4}, {32, 4}, {32, 24}, {32, 44}, {56, 44}, {56, 24}};
       return drawWide(page, 4) && page.moveTo(8, 24) && page.curvesTo(points, 6);
     },
     either(alongCurve({8, 24}, {8, 4}, {32, 4}, {32, 24}, 4), alongCurve({32, 24}, {32, 44}, {56, 44}, {56, 24}, 4))},
    {"curve that leaves the page by far",
     [](IAGDC& page) { return drawWide(page, 4) && page.moveTo(-1e6, 24) && page.curveTo(-5e5, 24, 5e5, 24, 1e6, 24); },
     inside([](double, double y) { return std::abs(y - 24) - 2; }, 0.6)},
    {"curve in a path, filled",
     [](IAGDC& page) {
       return page.beginPath() && page.moveTo(8, 8) && page.curveTo(8, 60, 56, 60, 56, 8) && page.closePath() &&
              page.setFillColor(kRed) && page.drawPath(PathPaint::Fill);
     },
     [](double x, double y) {
       static const Coverage border = alongCurve({8, 8}, {8, 60}, {56, 60}, {56, 8}, 0);
       if (border(x, y) == Covered::Edge || std::abs(y - 8) < 0.6) return Covered::Edge;
       double first = 0;
       double last = 1;
       for (int i = 0; i < 40; ++i) {
         const double t = (first + last) / 2;
         (8 + 48 * (3 * t * t - 2 * t * t * t) < x ? first : last) = t;
       }
       return y > 8 && y < 8 + 156 * first * (1 - first) && x > 8 && x < 56 ? Covered::Yes : Covered::No;
     }},
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
     inBox({10, 5, 30, 16}, 0)},
    {"clip moves with the origin",
     [](IAGDC& page) {
       return page.clipRect(0, 0, 10, 10) && page.setOrigin(20, 10) && page.setFillColor(kRed) &&
              page.fillRect(-100, -100, 200, 200);
     },
     inBox({20, 10, 30, 20}, 0)},
};

// What plain GDI alone offers.
double ellipseDistance(double x, double y, Point middle, double radiusX, double radiusY) {
  const double dx = (x - middle.x) / radiusX;
  const double dy = (y - middle.y) / radiusY;
  return (std::hypot(dx, dy) - 1) * std::min(radiusX, radiusY);
}
Coverage inEllipse(Point middle, double radiusX, double radiusY) {
  return inside([=](double x, double y) { return ellipseDistance(x, y, middle, radiusX, radiusY); }, 0.45);
}
constexpr u8 kSlope[8] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
Coverage sloped(const Box& box) {
  return [box](double x, double y) {
    const bool isOn = boxDistance(x, y, box) < 0 && static_cast<int>(x) % 8 == static_cast<int>(y) % 8;
    return isOn ? Covered::Yes : Covered::No;
  };
}
// The ring of an ellipse around (32, 24), where `isDrawn` says so of the angle; its ends may be either.
Coverage ring(double radiusX, double radiusY, double width, std::function<bool(double)> isDrawn) {
  return [=](double x, double y) {
    const double d = std::abs(ellipseDistance(x, y, {32.5, 24.5}, radiusX, radiusY)) - width / 2;
    if (std::abs(d) < 1.2) return Covered::Edge;
    const double angle = std::atan2(24.5 - y, x - 32.5) * 180 / std::acos(-1.0);
    if (isDrawn(angle - 7) != isDrawn(angle + 7)) return d < 0 ? Covered::Edge : Covered::No;
    return d < 0 && isDrawn(angle) ? Covered::Yes : Covered::No;
  };
}
bool always(double) { return true; }

const Scene kPlainScenes[] = {
    {"circle, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillEllipse(32, 24, 10, 10); },
     inEllipse({32, 24}, 10, 10)},
    {"ellipse, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillEllipse(32, 24, 25, 12); },
     inEllipse({32, 24}, 25, 12)},
    {"small circle, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillEllipse(8, 8, 2, 2); },
     inEllipse({8, 8}, 2, 2)},
    {"nothing, filled", [](IAGDC& page) { return page.setFillColor(kRed) && page.fillEllipse(8, 8, 0, 5); }, kNothing},
    {"ellipse", [](IAGDC& page) { return drawWide(page, 4) && page.ellipse(32, 24, 20, 15); }, ring(20, 15, 4, always)},
    {"ellipse in pixels",
     [](IAGDC& page) {
       return drawWide(page, 4) && page.ellipsePixel({12, 9, 53, 40});
     },
     ring(20, 15, 4, always)},
    {"quarter of a circle", [](IAGDC& page) { return drawWide(page, 4) && page.arc(32, 24, 16, 16, 0, 90); },
     ring(16, 16, 4, [](double angle) { return angle > 0 && angle < 90; })},
    {"arc clockwise", [](IAGDC& page) { return drawWide(page, 4) && page.arc(32, 24, 16, 16, 180, -120); },
     ring(16, 16, 4, [](double angle) { return angle > 60 && angle < 180; })},
    {"arc of an ellipse", [](IAGDC& page) { return drawWide(page, 4) && page.arc(32, 24, 24, 12, -90, 180); },
     ring(24, 12, 4, [](double angle) { return angle > -90 && angle < 90; })},
    {"more than once around", [](IAGDC& page) { return drawWide(page, 4) && page.arc(32, 24, 16, 16, 45, 400); },
     ring(16, 16, 4, always)},
    {"arc without sweep", [](IAGDC& page) { return drawWide(page, 4) && page.arc(32, 24, 16, 16, 45, 0); }, kNothing},
    {"arc between two points",
     [](IAGDC& page) {
       return drawWide(page, 4) && page.arcPixel({16, 8, 49, 41}, 60, 24, 32, 2);
     },
     ring(16, 16, 4, [](double angle) { return angle > 0 && angle < 90; })},
    {"pattern",
     [](IAGDC& page) {
       return page.setFillColor(kRed) && page.setBackgroundColor(kWhite) && page.patternRect(3, 5, 40, 30, kSlope);
     },
     sloped({3, 5, 43, 35})},
    {"pattern in pixels, from its other corner",
     [](IAGDC& page) { return page.setFillColor(kRed) && page.patternRectPixel(43, 35, -40, -30, kSlope); },
     sloped({3, 5, 43, 35})},
};

void expectScene(const Scene& scene, Through through) {
  const Ref<IAGDC> page = makePage(through);
  ASSERT_TRUE(page);
  EXPECT_TRUE(scene.draw(*page)) << nameOf(through) << ", " << scene.name;
  expectCoverage(*page, kRed, scene.coverage, nameOf(through) + ", " + scene.name);
}

TEST(Drawing, ScenesMatchGeometry) {
  for (const Through through : kBoth) {
    for (const Scene& scene : kScenes) expectScene(scene, through);
  }
  for (const Scene& scene : kPlainScenes) expectScene(scene, Through::Gdi);
}

TEST(Drawing, StateIsAsItWasSet) {
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const bool isPlus = through == Through::GdiPlus;
    const Ref<IAGDC> page = makePage(through);
    EXPECT_TRUE(page->setStrokeColor(argb(1, 2, 3, 4)) && page->setFillColor(5) && page->setBackgroundColor(6));
    EXPECT_TRUE(page->strokeColor() == argb(1, 2, 3, 4) && page->fillColor() == 5 && page->backgroundColor() == 6);
    EXPECT_TRUE(page->clear() && page->backgroundColor() == kWhite && page->fillColor() == 5);
    EXPECT_TRUE(page->setLineWidth(2.5) && !page->setLineWidth(-1) && page->lineWidth() == 2.5);

    const std::vector<double> many(1025, 1.0);
    const double dashes[] = {3, 1, 2}, negative[] = {3, -1};
    double lengths[] = {0, 0, 0}, phase = 0;
    EXPECT_TRUE(page->setDash(dashes, 3, 0.5) && !page->setDash(many.data(), 1025, 0) &&
                !page->setDash(negative, 2, 0));
    EXPECT_EQ(page->dash(lengths, 2, &phase), 3);
    EXPECT_TRUE(lengths[0] == 3 && lengths[1] == 1 && lengths[2] == 0 && phase == 0.5) << "as many as have room";

    EXPECT_EQ(page->setTransform(Matrix::translation(10, 0)), isPlus);
    EXPECT_EQ(page->multiplyTransform(Matrix::scaling(2, 3)), isPlus) << "which comes first";
    EXPECT_TRUE(page->setOrigin(100, 100));
    Point point = {1, 1};
    EXPECT_TRUE(page->userToDevice(&point, 1));
    EXPECT_EQ(std::pair(point.x, point.y), isPlus ? std::pair(12.0, 3.0) : std::pair(1.0, 1.0)) << "without the origin";
    EXPECT_TRUE(page->deviceToUser(&point, 1) && point.x == 1 && point.y == 1);
    EXPECT_EQ(page->setTransform({0, 0, 0, 0, 5, 5}), isPlus);
    EXPECT_EQ(page->deviceToUser(&point, 1), !isPlus) << "cannot be turned back";

    EXPECT_EQ(page->setDeviceMiterLimit(5), !isPlus);
    EXPECT_FALSE(page->unsupported() || page->isNonDisplay() || page->supportsText() || page->supportsBlending());
    EXPECT_TRUE(page->isAttached() && page->deviceCapability(BITSPIXEL) > 0);
    EXPECT_TRUE(page->detach() && !page->isAttached() && page->deviceCapability(BITSPIXEL) == 0);
  }
}

// The other way says no, so that a caller takes another operation.
TEST(Drawing, GdiPlusHasNoArcsEllipsesAndPatterns) {
  for (const Scene& scene : kPlainScenes) {
    const Ref<IAGDC> page = makePage(Through::GdiPlus);
    EXPECT_FALSE(scene.draw(*page)) << scene.name;
    EXPECT_EQ(countPainted(*page), 0) << scene.name;
  }
}

// Half a transparent colour over white and over itself; plain GDI draws it opaque.
TEST(Drawing, TransparentColoursBlendInGdiPlusOnly) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    EXPECT_TRUE(page->setFillColor(argb(128, 200, 0, 100)) && page->fillRect(0, 0, 20, 20) &&
                page->fillRect(10, 0, 20, 20));
    const Color once = pixelOf(*page, 5, 5);
    const Color twice = pixelOf(*page, 15, 5);
    if (through == Through::Gdi) {
      EXPECT_EQ(once, rgb(200, 0, 100));
      EXPECT_EQ(twice, rgb(200, 0, 100));
      continue;
    }
    EXPECT_NEAR(static_cast<int>(redOf(once)), 227, 1);
    EXPECT_NEAR(static_cast<int>(greenOf(once)), 127, 1);
    EXPECT_NEAR(static_cast<int>(greenOf(twice)), 63, 1);
    EXPECT_NEAR(static_cast<int>(blueOf(twice)), 138, 2);
  }
}

// False means that nothing was drawn.
const Scene kRefused[] = {
    {"lines, one of no number",
     [](IAGDC& page) {
       const Point points[] = {{1, 1}, {30, 30}, {std::nan(""), 1}, {5, 5}};
       return page.lines(points, 4);
     },
     {}},
    {"lines, one endless",
     [](IAGDC& page) {
       const Point points[] = {{1, 1}, {30, 30}, {3, 1}, {5, HUGE_VAL}};
       return page.lines(points, 4);
     },
     {}},
    {"lines, one too far without software clipping",
     [](IAGDC& page) {
       quality().softwareClipping = false;
       const Point points[] = {{1, 1}, {30, 30}, {3, 1}, {5, 1e40}};
       return page.lines(points, 4);
     },
     {}},
    {"lines of a pen too wide",
     [](IAGDC& page) {
       const Point points[] = {{1, 1}, {30, 30}, {3, 1}, {5, 1e4}};
       return page.setLineWidth(1e8) && page.lines(points, 4);
     },
     {}},
    {"path filled, pen too wide",
     [](IAGDC& page) {
       return page.setLineWidth(1e8) && page.setFillColor(kRed) && page.beginPath() && page.rectangle(5, 5, 9, 9) &&
              page.drawPath(PathPaint::FillAndStroke);
     },
     {}},
    {"ellipse whose edge is no coordinate",
     [](IAGDC& page) {
       return page.ellipsePixel({0, 0, 2147483647, 5});
     },
     {}},
    {"ellipse from the least number on",
     [](IAGDC& page) {
       return page.ellipsePixel({-2147483647 - 1, 0, 9, 5});
     },
     {}},
    {"circle too large", [](IAGDC& page) { return page.ellipse(5e6, 5e6, 5e6, 5e6); }, {}},
    {"disk too large", [](IAGDC& page) { return page.fillEllipse(5e6, 5e6, 5e6, 5e6); }, {}},
    {"arc too large", [](IAGDC& page) { return page.arc(5e6, 5e6, 5e6, 5e6, 90, 90); }, {}},
    {"arc whose edge is no coordinate",
     [](IAGDC& page) {
       return page.arcPixel({0, 0, 2147483647, 5}, 0, 0, 9, 9);
     },
     {}},
    {"path of lines, one of no number",
     [](IAGDC& page) {
       const Point points[] = {{1, 1}, {30, 30}, {std::nan(""), 1}, {5, 5}};
       return page.beginPath() && (page.lines(points, 4) || page.drawPath(PathPaint::Stroke));
     },
     {}},
    {"path of curves, one of no number",
     [](IAGDC& page) {
       const Point points[] = {{1, 1}, {30, 30}, {9, 9}, {1, 1}, {3, 3}, {5, HUGE_VAL}};
       return page.beginPath() && (page.curvesTo(points, 6) || page.drawPath(PathPaint::Stroke));
     },
     {}},
};

TEST(Drawing, WhatIsRefusedDrawsNothing) {
  for (const Through through : kBoth) {
    for (const Scene& scene : kRefused) {
      const Ref<IAGDC> page = makePage(through);
      EXPECT_FALSE(scene.draw(*page)) << nameOf(through) << ", " << scene.name;
      quality().softwareClipping = true;
      EXPECT_EQ(countPainted(*page), 0) << nameOf(through) << ", " << scene.name;
    }
  }
}

TEST(Drawing, PathsAreBuiltWithoutADevice) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> target = makePage(through);
    const auto page = Ref<IAGDC>::adopt(target->createDetached());
    const Point curve[] = {{10, 40}, {30, 40}, {30, 24}};
    const Point ends[] = {{30, 10}, {50, 10}};
    EXPECT_TRUE(page->beginPath() && page->moveTo(10, 24)) << nameOf(through);
    EXPECT_TRUE(page->curvesTo(curve, 3)) << nameOf(through);
    EXPECT_TRUE(page->lineTo(50, 24) && page->closePath()) << nameOf(through);
    EXPECT_TRUE(page->line(2, 2, 9, 2) && page->lines(ends, 2)) << nameOf(through);
    EXPECT_TRUE(page->rectangle(50, 30, 10, 10)) << nameOf(through);
    EXPECT_FALSE(page->drawPath(PathPaint::Fill));
    EXPECT_TRUE(page->attach(target->deviceContext(), 64, 48) && page->setFillColor(kRed) &&
                page->drawPath(PathPaint::FillAndStroke));
    EXPECT_EQ(pixelOf(*page, 55, 35), kRed) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 20, 30), kRed) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 40, 10), kBlack) << nameOf(through);
  }
}

struct PointRow {
  const char* name;
  std::function<bool(IAGDC&)> act;
  Point current;
};
const PointRow kPoints[] = {
    {"rectangle on its own", [](IAGDC& page) { return page.moveTo(3, 4) && page.rectangle(10, 11, 5, 5); }, {3, 4}},
    {"line on its own", [](IAGDC& page) { return page.moveTo(3, 4) && page.line(10, 11, 5, 5); }, {3, 4}},
    {"rectangle in a path",
     [](IAGDC& page) { return page.moveTo(3, 4) && page.beginPath() && page.rectangle(10, 11, 5, 5); },
     {10, 11}},
    {"line in a path", [](IAGDC& page) { return page.beginPath() && page.line(3, 4, 10, 11); }, {10, 11}},
    {"line to", [](IAGDC& page) { return page.moveTo(3, 4) && page.lineTo(8, 9); }, {8, 9}},
    {"curve to", [](IAGDC& page) { return page.moveTo(3, 4) && page.curveTo(1, 1, 2, 2, 8, 9); }, {8, 9}},
    {"curve to, in pixels",
     [](IAGDC& page) { return page.moveTo(3, 4) && page.curveToPixel(1, 1, 2, 2, 8, 9); },
     {8, 9}},
    {"closed path",
     [](IAGDC& page) {
       return page.beginPath() && page.moveTo(3, 4) && page.lineTo(9, 9) && page.lineTo(1, 9) && page.closePath();
     },
     {3, 4}},
    {"what was refused",
     [](IAGDC& page) {
       return page.moveTo(3, 4) && !page.lineTo(std::nan(""), 1) && page.beginPath() &&
              !page.rectangle(1, HUGE_VAL, 2, 2);
     },
     {3, 4}},
};

TEST(Drawing, CurrentPointIsWhereTheNextLineBegins) {
  for (const Through through : kBoth) {
    for (const PointRow& row : kPoints) {
      const Ref<IAGDC> page = makePage(through);
      EXPECT_TRUE(row.act(*page)) << nameOf(through) << ", " << row.name;
      EXPECT_EQ(page->currentPoint().x, row.current.x) << nameOf(through) << ", " << row.name;
      EXPECT_EQ(page->currentPoint().y, row.current.y) << nameOf(through) << ", " << row.name;
    }
    const Ref<IAGDC> page = makePage(through);
    page->setStrokeColor(kRed);
    EXPECT_TRUE(page->beginPath() && page->rectangle(30, 10, 5, 5) && page->lineTo(30, 40) &&
                page->drawPath(PathPaint::Stroke));
    EXPECT_EQ(pixelOf(*page, 30, 30), kRed) << nameOf(through);
  }
}

const Matrix kSingular[] = {{0, 0, 0, 0, 20, 20},       {1, 0, 0, 0, 0, 20},        {1, 1, 1, 1, 0, 0},
                            {1, 1, 1, 1 + 1e-12, 0, 0}, {1e-30, 0, 0, 1e-30, 5, 5}, {1e-200, 0, 0, 1e-200, 5, 5}};

TEST(Drawing, TransformsThatCannotBeTurnedBackDrawNothing) {
  const std::pair<const char*, std::function<bool(IAGDC&)>> operations[] = {
      {"line", [](IAGDC& page) { return page.line(1, 1, 30, 30); }},
      {"lineTo", [](IAGDC& page) { return page.lineTo(30, 30); }},
      {"curveTo", [](IAGDC& page) { return page.curveTo(1, 1, 30, 2, 30, 30); }},
      {"rectangle", [](IAGDC& page) { return page.rectangle(1, 1, 30, 30); }},
      {"drawRectangle", [](IAGDC& page) { return page.drawRectangle(1, 1, 30, 30); }},
      {"fillRect", [](IAGDC& page) { return page.fillRect(1, 1, 30, 30); }},
      {"setPixelAt", [](IAGDC& page) { return page.setPixelAt(1, 1, kBlack); }},
      {"polyline",
       [](IAGDC& page) {
         const Point points[] = {{1, 1}, {5, 30}, {30, 30}};
         return page.strokePolyline(points, 3);
       }},
      {"path",
       [](IAGDC& page) {
         return page.beginPath() && page.rectangle(1, 1, 9, 9) && page.drawPath(PathPaint::FillAndStroke);
       }},
      {"image",
       [](IAGDC& page) {
         const auto image = Ref<IAGImage>::adopt(page.createImage(4, 4, ColorModel::Rgb, 0));
         return page.drawImage(image.get(), 1, 1, 30, 30);
       }},
  };
  const std::pair<const char*, std::function<bool(IAGDC&)>> clips[] = {
      {"clipRect", [](IAGDC& page) { return page.clipRect(1, 1, 30, 30); }},
      {"clipPath", [](IAGDC& page) { return page.beginPath() && page.rectangle(1, 1, 9, 9) && page.clipPath(); }},
      {"clipStroke", [](IAGDC& page) { return page.beginPath() && page.rectangle(1, 1, 9, 9) && page.clipStroke(); }},
  };
  for (const Matrix& matrix : kSingular) {
    const auto number = &matrix - kSingular;
    for (const auto& [name, draw] : operations) {
      const Ref<IAGDC> page = makePage(Through::GdiPlus);
      EXPECT_TRUE(page->setFillColor(kRed) && page->setTransform(matrix) && draw(*page)) << number << ' ' << name;
      EXPECT_EQ(countPainted(*page), 0) << number << ' ' << name;
    }
    for (const auto& [name, clip] : clips) {
      const Ref<IAGDC> page = makePage(Through::GdiPlus);
      EXPECT_TRUE(page->setFillColor(kRed) && page->setTransform(matrix) && clip(*page)) << number << ' ' << name;
      EXPECT_TRUE(page->resetTransform() && page->isClipEmpty() && page->fillRect(0, 0, 64, 48))
          << number << ' ' << name;
      EXPECT_EQ(countPainted(*page), 0) << number << ' ' << name;
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

struct PlaceForm {
  const char* name;
  std::function<bool(IAGDC&, const Box&)> draw;
};

bool outline(IAGDC& page, const Box& box, double slant) {
  return page.setFillColor(kRed) && page.beginPath() && page.moveTo(box.left - slant, box.top) &&
         page.lineTo(box.right - slant, box.top) && page.lineTo(box.right + slant, box.bottom) &&
         page.lineTo(box.left + slant, box.bottom) && page.closePath();
}
bool redImage(IAGDC& page, const Box& box, i32 size) {
  const auto image = Ref<IAGImage>::adopt(page.createImage(size, size, ColorModel::Rgb, 0));
  for (i32 i = 0; i < size * size; ++i) image->row(i / size)[3 * (i % size) + 2] = 255;
  return page.drawImage(image.get(), box.left, box.top, box.right - box.left, box.bottom - box.top);
}
const PlaceForm kPlaceForms[] = {
    {"rectangle",
     [](IAGDC& page, const Box& box) {
       return page.setFillColor(kRed) && page.fillRect(box.left, box.top, box.right - box.left, box.bottom - box.top);
     }},
    {"path", [](IAGDC& page, const Box& box) { return outline(page, box, 0) && page.drawPath(PathPaint::Fill); }},
    {"path with slanted sides",
     [](IAGDC& page, const Box& box) { return outline(page, box, 3) && page.drawPath(PathPaint::Fill); }},
    {"clip by path",
     [](IAGDC& page, const Box& box) {
       return outline(page, box, 0) && page.clipPath() && page.fillRect(0, 0, 64, 48);
     }},
    {"clip by rectangle",
     [](IAGDC& page, const Box& box) {
       return page.setFillColor(kRed) && page.clipRect(box.left, box.top, box.right - box.left, box.bottom - box.top) &&
              page.fillRect(0, 0, 64, 48);
     }},
    {"image, larger", [](IAGDC& page, const Box& box) { return redImage(page, box, 3); }},
    {"image, as large", [](IAGDC& page, const Box& box) { return redImage(page, box, 12); }},
    {"image, smaller", [](IAGDC& page, const Box& box) { return redImage(page, box, 100); }},
};

// Whatever is drawn at a place between the pixels covers those whose middles are inside.
TEST(Drawing, FormsOfTheSamePlaceCoverTheSamePixels) {
  for (const Through through : kBoth) {
    for (const PlaceForm& form : kPlaceForms) {
      for (const double part : {0.0, 0.1, 0.25, 0.4, 0.5, 0.6, 0.75, 0.9}) {
        const Ref<IAGDC> page = makePage(through);
        const Box box = {20 + part, 10 + part, 32 + part, 22 + part};
        EXPECT_TRUE(form.draw(*page, box));
        page->resetClip();
        const bool isSlanted = form.name == std::string("path with slanted sides");
        const auto expected = [&](double x, double y) {
          const bool isInside = x > box.left && x <= box.right && y > box.top && y <= box.bottom;
          if (isSlanted && y > box.top && y <= box.bottom && std::abs(x - 26.5) < 11) return Covered::Edge;
          return isInside ? Covered::Yes : Covered::No;
        };
        expectCoverage(*page, kRed, expected, nameOf(through) + ' ' + form.name + ' ' + std::to_string(part));
      }
    }
  }
}

// Dashes that nobody could see one by one cost no more than a solid line.
TEST(Drawing, DashesTooFineOrTooManyAreSolid) {
  struct Row {
    const char* name;
    double length;
    double reach;  // of each of 2,000 lines
  };
  const Row rows[] = {
      {"finer than can be seen", 0.06, 60}, {"so fine that they vanish", 1e-300, 60}, {"too many", 0.8, 4000}};
  for (const Through through : kBoth) {
    for (const Row& row : rows) {
      const auto zigzag = [&](double length) {
        const Ref<IAGDC> page = makePage(through);
        const double lengths[] = {length, length};
        EXPECT_TRUE(drawWide(*page, 3) && page->setDash(lengths, length > 0 ? 2 : 0, 0.01) && page->beginPath() &&
                    page->moveTo(0, 0));
        for (int i = 1; i < 2000; ++i) EXPECT_TRUE(page->lineTo(i % 2 ? row.reach : 0, i * 0.02));
        EXPECT_TRUE(page->drawPath(PathPaint::Stroke) && page->endPath());
        EXPECT_TRUE(page->line(2, 44, 60, 44));
        return page;
      };
      const Ref<IAGDC> solid = zigzag(0);
      const Ref<IAGDC> dashed = zigzag(row.length);
      int different = 0;
      for (i32 i = 0; i < 64 * 42; ++i)
        different += pixelOf(*solid, i % 64, i / 64) != pixelOf(*dashed, i % 64, i / 64);
      EXPECT_EQ(different, 0) << nameOf(through) << ' ' << row.name;
    }
  }
}

}  // namespace
}  // namespace corvix
