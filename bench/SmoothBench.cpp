// The plug-in smooth against plain GDI, and where nothing is mixed against the memory itself.
#include "bench/Bench.h"
#include "core/baselib/objects/Ref.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/Tiles.h"
#include "graphics/text/Text.h"
#include "shell/Shell.h"

#include <cmath>
#include <cstring>
#include <cwchar>
#include <random>
#include <vector>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr int kSide = 512;

Ref<IAGDC> makePage(const wchar_t* name) {
  const auto creator = createObject<IAGDCCreator>(*IShell::getInstance()->pluginManager(), name);
  auto page = Ref<IAGDC>::adopt(creator ? creator->create(0, 0, nullptr, kSide, kSide) : nullptr);
  if (page) page->setFillColor(rgb(32, 64, 128));
  return page;
}

struct Polygon {
  Color color;
  std::vector<Point> corners;
};

void drawMap(IAGDC& page, const std::vector<Polygon>& map) {
  for (const Polygon& polygon : map) {
    page.setFillColor(polygon.color);
    page.beginPath();
    page.moveTo(polygon.corners[0].x, polygon.corners[0].y);
    for (const Point& corner : polygon.corners) page.lineTo(corner.x, corner.y);
    page.closePath();
    page.drawPath(PathPaint::Fill);
    page.endPath();
  }
}

void measureMap(Report& report, IAGDC& smooth, IAGDC& plain) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> part(0, 1);
  std::vector<Polygon> map(10000);
  for (Polygon& polygon : map) {
    polygon.color = kBlack | random();
    const Point middle = {part(random) * kSide, part(random) * kSide};
    const double radius = 3 + 12 * part(random);
    const unsigned corners = 5 + random() % 12;
    for (unsigned i = 0; i < corners; ++i) {
      const double angle = 2 * std::acos(-1.0) * i / corners;
      const double r = radius * (0.6 + 0.4 * part(random));
      polygon.corners.push_back({middle.x + r * std::cos(angle), middle.y + r * std::sin(angle)});
    }
  }
  report.compare(
      "map of 10,000 polygons", "the same on plain GDI", 1.0,
      [&](std::uint64_t n) {
        while (n--) drawMap(smooth, map);
      },
      [&](std::uint64_t n) {
        while (n--) drawMap(plain, map);
      });
  const auto byThreads = [&](i32 threads) {
    return [&, threads](std::uint64_t n) {
      while (n--) {
        query<IAGTiles>(&smooth)->beginTiles(threads);
        drawMap(smooth, map);
        query<IAGTiles>(&smooth)->endTiles();
      }
    };
  };
  report.compare("map of 10,000 polygons, by two threads", "by one", 0, byThreads(2), [&](std::uint64_t n) {
    while (n--) drawMap(smooth, map);
  });
}

void measureMemory(Report& report, IAGDC& smooth) {
  std::vector<Color> from(kSide * kSide, kBlack | 0x123456);
  std::vector<Color> to(from.size());
  const std::size_t bytes = 4 * from.size();
  report.compare(
      "opaque fill of a megabyte", "memset", 1.2,
      [&](std::uint64_t n) {
        while (n--) smooth.fillRect(0, 0, kSide, kSide);
      },
      [&](std::uint64_t n) {
        while (n--) {
          std::memset(to.data(), static_cast<int>(n), bytes);
          keep(to[5]);
        }
      });
  const auto image = Ref<IAGImage>::adopt(smooth.createImage(kSide, kSide, ColorModel::Argb, 0));
  std::memcpy(image->row(0), from.data(), bytes);
  report.compare(
      "opaque image of a megabyte, 1:1", "memcpy", 1.2,
      [&](std::uint64_t n) {
        while (n--) smooth.drawImagePixel(image.get(), 0, 0);
      },
      [&](std::uint64_t n) {
        while (n--) {
          std::memcpy(to.data(), from.data(), bytes);
          keep(to[5]);
        }
      });
}

void measureText(Report& report, IAGDC& smooth) {
  constexpr wchar_t kText[] = L"The quick brown fox jumps over the lazy dog";
  constexpr auto kLength = static_cast<i32>(std::size(kText)) - 1;
  const auto machine =
      createObject<IFMFontMachine>(*IShell::getInstance()->pluginManager(), L"IFMFontMachine.Instance");
  const auto font = Ref<IFMFont>::adopt(machine->createFont(L"DejaVu Sans"));
  const auto target = makePage(L"AGDC.Memory");
  const HDC device = target->deviceContext();
  HFONT const own = CreateFontW(-14, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, 0, 0,
                                ANTIALIASED_QUALITY, 0, L"DejaVu Sans");
  const HGDIOBJ before = SelectObject(device, own);
  SetBkMode(device, TRANSPARENT);
  report.compare(
      "text run, a glyph", "TextOutW", 1.0,
      [&](std::uint64_t n) {
        while (n--)
          drawText(smooth, *font, 14, Matrix::translation(10, 20 + static_cast<double>(n % 400)), kText, kLength);
      },
      [&](std::uint64_t n) {
        while (n--) TextOutW(device, 10, 20 + static_cast<int>(n % 400), kText, kLength);
      },
      kLength, kLength);
  SelectObject(device, before);
  DeleteObject(own);
}

void measureClips(Report& report, IAGDC& smooth, IAGDC& plain) {
  const auto clips = [](IAGDC& page) {
    return [&page](std::uint64_t n) {
      while (n--) {
        page.saveClip();
        page.beginPath();
        page.moveTo(100, 20);
        page.curveTo(260, 20, 260, 240, 100, 240);
        page.curveTo(-60, 240, -60, 20, 100, 20);
        page.clipPath();
        page.endPath();
        page.restoreClip();
      }
    };
  };
  report.compare("clip by a path, saved and restored", "the same on plain GDI", 0, clips(smooth), clips(plain));
}

void measure(Report& report) {
  const Ref<IAGDC> smooth = makePage(L"AGDC.SmoothMemory");
  const Ref<IAGDC> plain = makePage(L"AGDC.Memory");
  if (!smooth || !plain) return;
  measureMap(report, *smooth, *plain);
  measureMemory(report, *smooth);
  measureText(report, *smooth);
  measureClips(report, *smooth, *plain);
}

const Area area{"smooth", measure};

}  // namespace
}  // namespace corvix::bench
