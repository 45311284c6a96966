// Drawing contexts against the same work written with bare GDI and with bare GDI+ flat calls on a Graphics that is
// kept.
#include "bench/Bench.h"
#include "core/baselib/objects/Ref.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/ImageFreezer.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/text/Text.h"
#include "shell/Shell.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <tuple>
#include <vector>

#include <windows.h>
#include <objidl.h>
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace corvix::bench {
namespace {

namespace flat = Gdiplus::DllExports;

constexpr int kSide = 512;

Ref<IAGDC> makePage(u32 wanted, i32 side = kSide) {
  const auto creator = createObject<IAGDCCreator>(*IShell::getInstance()->pluginManager(), L"AGDC.Memory");
  return Ref<IAGDC>::adopt(creator->create(wanted, 0, nullptr, side, side));
}

// A bitmap of its own, as a context has one.
struct Bare {
  HDC device;
  HBITMAP bitmap;
  HGDIOBJ before;
  u8* pixels = nullptr;

  Bare() {
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, kSide, -kSide, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    device = CreateCompatibleDC(nullptr);
    bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    pixels = static_cast<u8*>(bits);
    before = SelectObject(device, bitmap);
    PatBlt(device, 0, 0, kSide, kSide, WHITENESS);
  }
  ~Bare() {
    SelectObject(device, before);
    DeleteObject(bitmap);
    DeleteDC(device);
  }
};

// GDI+ as a careful caller would keep it.
struct BarePlus : Bare {
  ULONG_PTR token = 0;
  Gdiplus::GpGraphics* graphics = nullptr;
  Gdiplus::GpPen* pen = nullptr;
  Gdiplus::GpSolidFill* brush = nullptr;

  explicit BarePlus(Gdiplus::SmoothingMode smoothing = Gdiplus::SmoothingModeHighSpeed) {
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    flat::GdipCreateFromHDC(device, &graphics);
    flat::GdipSetPageUnit(graphics, Gdiplus::UnitPixel);
    flat::GdipSetSmoothingMode(graphics, smoothing);
    flat::GdipSetInterpolationMode(graphics, Gdiplus::InterpolationModeNearestNeighbor);
    flat::GdipCreatePen1(0xFF204080, 1, Gdiplus::UnitWorld, &pen);
    flat::GdipCreateSolidFill(0xFF204080, &brush);
  }
  ~BarePlus() {
    flat::GdipDeleteBrush(brush);
    flat::GdipDeletePen(pen);
    flat::GdipDeleteGraphics(graphics);
    Gdiplus::GdiplusShutdown(token);
  }
};

struct Place {
  i32 x;
  i32 y;
};
Place at(std::uint64_t i) { return {static_cast<i32>(i * 37 % (kSide - 40)), static_cast<i32>(i * 61 % (kSide - 40))}; }

void measureFills(Report& report) {
  const Ref<IAGDC> plain = makePage(0);
  const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
  plain->setFillColor(rgb(32, 64, 128));
  plus->setFillColor(rgb(32, 64, 128));
  const Bare bare;
  const BarePlus barePlus;
  HBRUSH const brush = CreateSolidBrush(RGB(32, 64, 128));
  report.compare(
      "clear, GDI", "FillRect", 1.05,
      [&](std::uint64_t n) {
        while (n--) plain->clear();
      },
      [&](std::uint64_t n) {
        const RECT all = {0, 0, kSide, kSide};
        while (n--) FillRect(bare.device, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
      });
  report.compare(
      "clear, GDI+", "GdipFillRectangle", 1.05,
      [&](std::uint64_t n) {
        while (n--) plus->clear();
      },
      [&](std::uint64_t n) {
        flat::GdipSetSolidFillColor(barePlus.brush, 0xFFFFFFFF);
        while (n--) flat::GdipFillRectangle(barePlus.graphics, barePlus.brush, 0, 0, kSide, kSide);
      });
  report.compare(
      "filled rectangle, GDI", "FillRect", 1.05,
      [&](std::uint64_t n) {
        while (n--) plain->fillRect(at(n).x, at(n).y, 20, 12);
      },
      [&](std::uint64_t n) {
        while (n--) {
          const RECT rect = {at(n).x, at(n).y, at(n).x + 20, at(n).y + 12};
          FillRect(bare.device, &rect, brush);
        }
      });
  report.compare(
      "filled rectangle, GDI+", "GdipFillRectangle", 1.05,
      [&](std::uint64_t n) {
        while (n--) plus->fillRect(at(n).x, at(n).y, 20, 12);
      },
      [&](std::uint64_t n) {
        while (n--) {
          flat::GdipFillRectangle(barePlus.graphics, barePlus.brush, static_cast<float>(at(n).x),
                                  static_cast<float>(at(n).y), 20, 12);
        }
      });
  DeleteObject(brush);
}

void measureLines(Report& report) {
  const Ref<IAGDC> plain = makePage(0);
  const Bare bare;
  plain->setStrokeColor(rgb(32, 64, 128));
  HPEN const pen = CreatePen(PS_SOLID, 1, RGB(32, 64, 128));
  const HGDIOBJ before = SelectObject(bare.device, pen);
  report.compare(
      "line, GDI", "MoveToEx, LineTo", 1.05,
      [&](std::uint64_t n) {
        while (n--) plain->line(at(n).x, at(n).y, at(n).x + 35, at(n).y + 20);
      },
      [&](std::uint64_t n) {
        while (n--) {
          MoveToEx(bare.device, at(n).x, at(n).y, nullptr);
          LineTo(bare.device, at(n).x + 35, at(n).y + 20);
        }
      });
  SelectObject(bare.device, before);
  DeleteObject(pen);
  for (const bool isSmooth : {false, true}) {
    const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
    plus->setSmoothing(isSmooth ? 255 : 0);
    const BarePlus barePlus(isSmooth ? Gdiplus::SmoothingModeHighQuality : Gdiplus::SmoothingModeHighSpeed);
    report.compare(
        isSmooth ? "line, GDI+, smoothed" : "line, GDI+", "GdipDrawLine", 1.05,
        [&](std::uint64_t n) {
          while (n--) plus->line(at(n).x, at(n).y, at(n).x + 35, at(n).y + 20);
        },
        [&](std::uint64_t n) {
          while (n--) {
            const auto x = static_cast<float>(at(n).x);
            const auto y = static_cast<float>(at(n).y);
            flat::GdipDrawLine(barePlus.graphics, barePlus.pen, x, y, x + 35, y + 20);
          }
        });
  }
  const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
  const double dashes[] = {6, 4};
  plus->setLineWidth(2);
  plus->setDash(dashes, 2, 0);
  const BarePlus barePlus;
  const float flatDashes[] = {3, 2};
  flat::GdipSetPenWidth(barePlus.pen, 2);
  flat::GdipSetPenDashArray(barePlus.pen, flatDashes, 2);
  report.compare(
      "dashed curve, GDI+", "GdipDrawBezier", 1.05,
      [&](std::uint64_t n) {
        while (n--) {
          const double x = at(n).x;
          const double y = at(n).y;
          plus->moveTo(x, y);
          plus->curveTo(x + 10, y + 40, x + 30, y, x + 40, y + 40);
        }
      },
      [&](std::uint64_t n) {
        while (n--) {
          const auto x = static_cast<float>(at(n).x);
          const auto y = static_cast<float>(at(n).y);
          flat::GdipDrawBezier(barePlus.graphics, barePlus.pen, x, y, x + 10, y + 40, x + 30, y, x + 40, y + 40);
        }
      });
}

void measurePixels(Report& report) {
  const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
  const Bare bare;
  const auto bareRun = [&](std::uint64_t n) {
    while (n--) {
      for (int x = 0; x < kSide; ++x) SetPixelV(bare.device, x, 7, x % 2 ? RGB(255, 0, 0) : RGB(0, 0, 255));
    }
  };
  report.compare(
      "run of 512 pixels, own bitmap", "SetPixelV", 1.0,
      [&](std::uint64_t n) {
        while (n--) plus->dottedRow(0, kSide, 7, rgb(0, 0, 255), rgb(255, 0, 0));
      },
      bareRun);
  const auto screens = createObject<IAGDCCreator>(*IShell::getInstance()->pluginManager(), L"AGDC.Screen");
  const Bare target;
  const auto onDevice = Ref<IAGDC>::adopt(screens->create(capability::kGdiPlus, 0, target.device, kSide, kSide));
  report.compare(
      "run of 512 pixels, other's device", "SetPixelV", 1.0,
      [&](std::uint64_t n) {
        while (n--) onDevice->dottedRow(0, kSide, 7, rgb(0, 0, 255), rgb(255, 0, 0));
      },
      bareRun);
  report.compare(
      "pixel set and read, own bitmap", "SetPixelV, GetPixel", 1.0,
      [&](std::uint64_t n) {
        Color color = 0;
        while (n--) {
          plus->setPixel(at(n).x, at(n).y, kBlack);
          plus->getPixel(at(n).x, at(n).y, &color);
        }
        keep(color);
      },
      [&](std::uint64_t n) {
        COLORREF color = 0;
        while (n--) {
          SetPixelV(bare.device, at(n).x, at(n).y, 0);
          color = GetPixel(bare.device, at(n).x, at(n).y);
        }
        keep(color);
      });
}

void measureClips(Report& report) {
  const Ref<IAGDC> plain = makePage(0);
  const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
  const Bare bare;
  const BarePlus barePlus;
  plus->fillRect(0, 0, 1, 1);
  const auto ours = [](IAGDC& page) {
    return [&page](std::uint64_t n) {
      while (n--) {
        page.saveClip();
        page.clipRect(at(n).x, at(n).y, 30, 30);
        page.restoreClip();
      }
    };
  };
  report.compare("clip saved, narrowed, restored, GDI", "SaveDC, IntersectClipRect, RestoreDC", 1.05, ours(*plain),
                 [&](std::uint64_t n) {
                   while (n--) {
                     SaveDC(bare.device);
                     IntersectClipRect(bare.device, at(n).x, at(n).y, at(n).x + 30, at(n).y + 30);
                     RestoreDC(bare.device, -1);
                   }
                 });
  report.compare("clip saved, narrowed, restored, GDI+", "GdipSaveGraphics, ...SetClipRect, ...Restore", 1.05,
                 ours(*plus), [&](std::uint64_t n) {
                   while (n--) {
                     Gdiplus::GraphicsState state;
                     flat::GdipSaveGraphics(barePlus.graphics, &state);
                     flat::GdipSetClipRect(barePlus.graphics, static_cast<float>(at(n).x), static_cast<float>(at(n).y),
                                           30, 30, Gdiplus::CombineModeIntersect);
                     flat::GdipRestoreGraphics(barePlus.graphics, state);
                   }
                 });
}

// Saved and narrowed one inside the other, then all restored.
void measureNestedClips(Report& report) {
  constexpr int kFew = 50, kMany = 1000;
  for (const auto& [wanted, name] : {std::pair(u32{0}, "GDI"), {capability::kGdiPlus, "GDI+"}}) {
    const Ref<IAGDC> page = makePage(wanted);
    const auto nested = [&](int depth) {
      return [&page, depth](std::uint64_t n) {
        while (n--) {
          for (int i = 0; i < depth; ++i) {
            page->saveClip();
            page->clipRect(i % 200, i % 200, kSide - i % 200, kSide - i % 200);
          }
          for (int i = 0; i < depth; ++i) page->restoreClip();
        }
      };
    };
    report.compare(std::string("clips nested 1000 deep, each, ") + name, "each of 50", 2, nested(kMany), nested(kFew),
                   kMany, kFew);
  }
}

// 12 by 12 pixels are seen of an image of 36 megapixels, drawn at an eighth of its size.
void measureImageParts(Report& report) {
  constexpr int kEdge = 6000, kSeen = 12, kShown = kEdge / 8;
  for (const auto& [wanted, name] : {std::pair(u32{0}, "GDI"), {capability::kGdiPlus, "GDI+"}}) {
    const Ref<IAGDC> page = makePage(wanted);
    const auto whole = Ref<IAGImage>::adopt(page->createImage(kEdge, kEdge, ColorModel::Rgb, 0));
    const auto part = Ref<IAGImage>::adopt(page->createImage(8 * kSeen, 8 * kSeen, ColorModel::Rgb, 0));
    page->clipRect(100, 100, kSeen, kSeen);
    report.compare(
        std::string("12 by 12 pixels seen of 36 megapixels, ") + name, "that part alone", 10,
        [&](std::uint64_t n) {
          while (n--) page->drawImage(whole.get(), 0, 0, kShown, kShown);
        },
        [&](std::uint64_t n) {
          while (n--) page->drawImage(part.get(), 100, 100, kSeen, kSeen);
        });
  }
}

void measureImages(Report& report) {
  constexpr int kImage = 128;
  const Ref<IAGDC> plain = makePage(0);
  const Ref<IAGDC> plus = makePage(capability::kGdiPlus);
  const auto image = Ref<IAGImage>::adopt(plain->createImage(kImage, kImage, ColorModel::Rgb, 0));
  const Bare bare;
  const BarePlus barePlus;
  BITMAPINFO info = {};
  info.bmiHeader = {sizeof info.bmiHeader, kImage, -kImage, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
  Gdiplus::GpBitmap* bitmap = nullptr;
  flat::GdipCreateBitmapFromScan0(kImage, kImage, image->strideBytes(), PixelFormat24bppRGB, image->row(0), &bitmap);
  for (const int size : {kImage, 200}) {
    const std::string how = size == kImage ? " 1:1" : " scaled";
    report.compare(
        "image" + how + ", GDI", "StretchDIBits", 1.05,
        [&](std::uint64_t n) {
          while (n--) plain->drawImage(image.get(), 3, 3, size, size);
        },
        [&](std::uint64_t n) {
          while (n--) {
            StretchDIBits(bare.device, 3, 3, size, size, 0, 0, kImage, kImage, image->row(0), &info, DIB_RGB_COLORS,
                          SRCCOPY);
          }
        });
    report.compare(
        "image" + how + ", GDI+", "GdipDrawImageRectI, bitmap kept", 1.05,
        [&](std::uint64_t n) {
          while (n--) plus->drawImage(image.get(), 3, 3, size, size);
        },
        [&](std::uint64_t n) {
          while (n--) flat::GdipDrawImageRectI(barePlus.graphics, bitmap, 3, 3, size, size);
        });
  }
  flat::GdipDisposeImage(bitmap);
}

// Of 35 megapixels each pixel is read once.
void measureReductions(Report& report) {
  constexpr i32 kWidth = 7000, kHeight = 5000;
  const Ref<IAGDC> page = makePage(0, kWidth / 8);
  IBSettings& settings = *IShell::getInstance()->settings();
  Variant before;
  settings.getValue(L"Quality", L"ImageSizeLimit", before);
  settings.setValue(L"Quality", L"ImageSizeLimit", Variant(0));  // none is left out
  for (const auto& [model, name] : {std::pair(ColorModel::Gray, "grey"), {ColorModel::Rgb, "RGB"}}) {
    const auto image = Ref<IAGImage>::adopt(page->createImage(kWidth, kHeight, model, 0));
    const auto count = static_cast<std::size_t>(image->strideBytes()) * kHeight / sizeof(u32);
    for (i32 y = 0; y < kHeight; ++y) std::memset(image->row(y), y, static_cast<std::size_t>(image->strideBytes()));
    const auto draw = [&](i32 width, i32 height) {
      return [&page, &image, width, height](std::uint64_t n) {
        while (n--) page->drawImage(image.get(), 0, 0, width, height);
      };
    };
    const auto read = [&](std::uint64_t n) {
      while (n--) {
        const auto* const words = reinterpret_cast<const u32*>(image->row(0));
        u32 sum = 0;
        for (std::size_t i = 0; i < count; ++i) sum += words[i];
        keep(sum);
      }
    };
    report.compare(std::string("35 megapixels drawn at an eighth, ") + name, "reading them once", 2,
                   draw(kWidth / 8, kHeight / 8), read);
    report.compare(std::string("35 megapixels drawn at 1:8.3, ") + name, "reading them once", 0, draw(843, 602), read);
  }
  settings.setValue(L"Quality", L"ImageSizeLimit", before);
}

// A page that shows the same images again and again.
void measureFrozen(Report& report) {
  constexpr i32 kWidth = 2800, kHeight = 2000;
  for (const auto& [wanted, name] : {std::pair(u32{0}, "GDI"), {capability::kGdiPlus, "GDI+"}}) {
    const Ref<IAGDC> page = makePage(wanted);
    const auto image = Ref<IAGImage>::adopt(page->createImage(kWidth, kHeight, ColorModel::Cmyk, 0));
    const auto small = Ref<IAGImage>::adopt(page->createImage(kWidth / 8, kHeight / 8, ColorModel::Argb, 0));
    for (i32 y = 0; y < kHeight / 8; ++y)
      std::memset(small->row(y), 0xFF, static_cast<std::size_t>(small->strideBytes()));
    query<IAGImageFreezer>(image.get())->freeze();
    report.compare(
        std::string("frozen CMYK image at an eighth, ") + name, "an image of that size", 2,
        [&](std::uint64_t n) {
          while (n--) page->drawImage(image.get(), 0, 0, kWidth / 8, kHeight / 8);
        },
        [&](std::uint64_t n) {
          while (n--) page->drawImagePixel(small.get(), 0, 0);
        });
  }
}

void measureConversions(Report& report) {
  constexpr i32 kEdge = 1000;
  constexpr std::size_t kPixels = kEdge * kEdge;
  const Ref<IAGDC> page = makePage(0, 1);
  const auto filled = [&](ColorModel model) {
    auto image = Ref<IAGImage>::adopt(page->createImage(kEdge, kEdge, model, 0));
    for (i32 y = 0; y < kEdge; ++y) {
      for (i32 i = 0; i < image->strideBytes(); ++i) image->row(y)[i] = static_cast<u8>(i * 7 + y * 13);
    }
    return image;
  };
  const Ref<IAGImage> colors = filled(ColorModel::Rgb);
  const Ref<IAGImage> inks = filled(ColorModel::Cmyk);
  report.compare(
      "RGB megapixel to grey", "a plain loop, into a new block", 1,
      [&](std::uint64_t n) {
        while (n--) colors->convertTo(ColorModel::Gray)->release();
      },
      [&](std::uint64_t n) {
        while (n--) {
          std::vector<u8> result(kPixels);
          const u8* from = colors->row(0);
          for (std::size_t i = 0; i < kPixels; ++i, from += 3) {
            result[i] = static_cast<u8>((from[2] * 299 + from[1] * 587 + from[0] * 114 + 500) / 1000);
          }
          keep(result[0]);
        }
      });
  u8 left[256];
  for (u32 i = 0; i < 256; ++i) left[i] = static_cast<u8>(255 - i * i / 255);
  report.compare(
      "CMYK megapixel to RGB", "a plain loop with a table, into a new block", 1,
      [&](std::uint64_t n) {
        while (n--) inks->convertTo(ColorModel::Rgb)->release();
      },
      [&](std::uint64_t n) {
        while (n--) {
          std::vector<u8> result(3 * kPixels);
          const u8* from = inks->row(0);
          u8* to = result.data();
          for (std::size_t i = 0; i < kPixels; ++i, from += 4, to += 3) {
            for (int part = 0; part < 3; ++part) to[part] = static_cast<u8>(left[from[2 - part]] * left[from[3]] / 255);
          }
          keep(result[0]);
        }
      });
}

// What is opaque and lies on whole pixels, against writing the bytes.
void measureOpaque(Report& report) {
  constexpr i32 kEdge = 1000;
  constexpr std::size_t kBytes = 3 * kEdge * kEdge;
  std::vector<u8> from(kBytes);
  std::vector<u8> to(kBytes);
  for (const auto& [wanted, name] : {std::pair(u32{0}, "GDI"), {capability::kGdiPlus, "GDI+"}}) {
    const Ref<IAGDC> page = makePage(wanted, kEdge);
    const auto image = Ref<IAGImage>::adopt(page->createImage(kEdge, kEdge, ColorModel::Rgb, 0));
    page->setFillColor(rgb(32, 64, 128));
    report.compare(
        std::string("megapixel filled, ") + name, "memset", 1.2,
        [&](std::uint64_t n) {
          while (n--) page->fillRect(0, 0, kEdge, kEdge);
        },
        [&](std::uint64_t n) {
          while (n--) {
            std::memset(to.data(), static_cast<int>(n), kBytes);
            keep(to[0]);
          }
        });
    report.compare(
        std::string("megapixel copied, ") + name, "memcpy", 1.2,
        [&](std::uint64_t n) {
          while (n--) page->drawImagePixel(image.get(), 0, 0);
        },
        [&](std::uint64_t n) {
          while (n--) {
            std::memcpy(to.data(), from.data(), kBytes);
            keep(to[0]);
          }
        });
  }
}

void measureText(Report& report) {
  constexpr wchar_t kText[] = L"The quick brown fox jumps over the lazy dog, again and again.";
  constexpr int kGlyphs = static_cast<int>(std::size(kText)) - 1;
  constexpr int kSize = 14;
  const auto machine =
      createObject<IFMFontChooser>(*IShell::getInstance()->pluginManager(), L"IFMFontMachine.Instance");
  FontRequest request;
  request.family = L"Helvetica";
  const auto font = Ref<IFMFont>::adopt(machine->createFontFor(request));
  const Bare bare;
  HFONT const bareFont =
      CreateFontW(-kSize, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, ANTIALIASED_QUALITY, 0, font->family());
  const HGDIOBJ before = SelectObject(bare.device, bareFont);
  SetBkMode(bare.device, TRANSPARENT);
  for (const auto& [wanted, name, most] : {std::tuple(u32{0}, "GDI", 1.0), {capability::kGdiPlus, "GDI+", 2.0}}) {
    const Ref<IAGDC> page = makePage(wanted);
    page->setFillColor(kBlack);
    report.compare(
        std::string("text, a glyph of a run, ") + name, "TextOutW", most,
        [&](std::uint64_t n) {
          while (n--)
            drawText(*page, *font, kSize, Matrix::translation(10, 20 + static_cast<int>(n % 480)), kText, kGlyphs);
        },
        [&](std::uint64_t n) {
          while (n--) TextOutW(bare.device, 10, 8 + static_cast<int>(n % 480), kText, kGlyphs);
        },
        kGlyphs, kGlyphs);
  }
  SelectObject(bare.device, before);
  DeleteObject(bareFont);
}

// GDI+ makes pixels of a path's region anew for every fill below it.
void measurePathClips(Report& report) {
  const Ref<IAGDC> pages[] = {makePage(capability::kGdiPlus), makePage(0)};
  for (const Ref<IAGDC>& page : pages) {
    page->beginPath();
    for (int i = 0; i < 12; ++i) {
      const double reach = i % 2 ? 200 : 90;
      const Point p = {250 + reach * std::cos(i * 0.5236), 250 + reach * std::sin(i * 0.5236)};
      i == 0 ? page->moveTo(p.x, p.y) : page->lineTo(p.x, p.y);
    }
    page->closePath();
  }
  const auto clipped = [](IAGDC& page, bool isFilled) {
    return [&page, isFilled](std::uint64_t n) {
      while (n--) {
        page.saveClip();
        page.clipPath();
        if (isFilled) page.fillRect(0, 0, 20, 20);
        page.restoreClip();
      }
    };
  };
  for (const bool isFilled : {false, true}) {
    report.compare(isFilled ? "the same, with a fill between, GDI+" : "clip by path, saved and restored, GDI+",
                   "the same through GDI", isFilled ? 0 : 2, clipped(*pages[0], isFilled),
                   clipped(*pages[1], isFilled));
  }
}

void measureCmyk(Report& report) {
  constexpr int kEdge = 1000;  // a megapixel
  const Ref<IAGDC> page = makePage(0, kEdge);
  const auto image = Ref<IAGImage>::adopt(page->createImage(kEdge, kEdge, ColorModel::Cmyk, 0));
  for (i32 y = 0; y < kEdge; ++y) {
    for (i32 i = 0; i < 4 * kEdge; ++i) image->row(y)[i] = static_cast<u8>(i * 7 + y * 13);
  }
  std::vector<u8> from(3 * kEdge * kEdge);
  std::vector<u8> to(3 * kEdge * kEdge);
  const char* const names[] = {"Fast", "Normal", "Best", "Alternate", "By Table"};
  IBSettings& settings = *IShell::getInstance()->settings();
  Variant before;
  settings.getValue(L"Quality", L"FullColorConversion", before);
  for (i32 mode = 1; mode <= 5; ++mode) {
    settings.setValue(L"Quality", L"FullColorConversion", Variant(mode));
    // All of it is seen, and so converted; the copy to the page is a small part of that.
    report.compare(
        std::string("CMYK megapixel, ") + names[mode - 1], "memcpy of the result", mode == 1 ? 3 : 6,
        [&](std::uint64_t n) {
          while (n--) page->drawImagePixel(image.get(), 0, 0);
        },
        [&](std::uint64_t n) {
          while (n--) {
            std::memcpy(to.data(), from.data(), to.size());
            keep(to[0]);
          }
        });
  }
  settings.setValue(L"Quality", L"FullColorConversion", before);
}

void measure(Report& report) {
  measureFills(report);
  measureLines(report);
  measurePixels(report);
  measureClips(report);
  measureNestedClips(report);
  measureImages(report);
  measureImageParts(report);
  measureReductions(report);
  measureFrozen(report);
  measureConversions(report);
  measureOpaque(report);
  measureText(report);
  measurePathClips(report);
  measureCmyk(report);
}

const Area area{"drawing", measure};

}  // namespace
}  // namespace corvix::bench
