// What clipping in software leaves of a path, by its pieces.
#include "graphics/path/PathClip_p.h"

#include <gtest/gtest.h>

#include <string>

namespace corvix {
namespace {

constexpr Box kArea = {0, 0, 100, 100};

// "M" and "L" with whole points, "Z" for a closed figure.
struct Writer {
  std::string text;
  bool add(char step, Point p) {
    text += step + std::to_string(std::lround(p.x)) + ',' + std::to_string(std::lround(p.y)) + ' ';
    return true;
  }
  bool move(Point p) { return add('M', p); }
  bool line(Point p) { return add('L', p); }
  bool curve(Point, Point, Point p) { return add('C', p); }
  bool close() {
    text += 'Z';
    return true;
  }
};
std::string textOf(const Path& path) {
  Writer writer;
  path.replay(writer);
  return writer.text;
}

Path ringOf(const std::vector<Point>& points, bool isClosed = true) {
  Path path;
  path.moveTo(points[0]);
  for (std::size_t i = 1; i < points.size(); ++i) path.lineTo(points[i - 1], points[i]);
  if (isClosed) path.close();
  return path;
}

struct StrokeRow {
  const char* name;
  std::vector<Point> points;
  bool isClosed;
  const char* expected;
};
const StrokeRow kStrokes[] = {
    {"a ring within stays one", {{10, 10}, {90, 10}, {50, 90}}, true, "M10,10 L90,10 L50,90 Z"},
    // The corners that are seen are joined, the first one too.
    {"a ring cut at its second corner", {{10, 10}, {150, 10}, {10, 90}}, true, "M100,39 L10,90 L10,10 L100,10 "},
    {"a ring cut at its first corner", {{-40, 10}, {60, 10}, {60, 90}}, true, "M0,10 L60,10 L60,90 L0,42 "},
    {"a ring cut twice", {{50, -90}, {150, 50}, {50, 90}, {-50, 50}}, true, "M100,70 L50,90 L0,70 "},
    {"an open line is not joined", {{10, 10}, {150, 10}, {150, 50}, {10, 50}}, false, "M10,10 L100,10 M100,50 L10,50 "},
    {"nothing", {{-10, 0}, {-10, 100}, {-20, 50}}, true, ""},
};

TEST(PathClip, RingsThatAreCutKeepTheirJoins) {
  for (const StrokeRow& row : kStrokes) {
    EXPECT_EQ(textOf(clipStroke(ringOf(row.points, row.isClosed), {}, kArea, {})), row.expected) << row.name;
  }
}

// What lies on the border of the area is inside.
TEST(PathClip, FillsAreCutAtTheBorderAndNoFurther) {
  const auto filled = [](const std::vector<Point>& ring) { return textOf(clipFill(ringOf(ring), {}, kArea)); };
  EXPECT_EQ(filled({{0, 0}, {100, 0}, {100, 100}, {0, 100}}), "M0,0 L100,0 L100,100 L0,100 Z");
  EXPECT_EQ(filled({{-50, 0}, {50, 0}, {50, 100}, {-50, 100}}), "M0,0 L50,0 L50,100 L0,100 Z");
  EXPECT_EQ(filled({{-50, 0}, {-1, 0}, {-1, 100}}), "");
}

}  // namespace
}  // namespace corvix
