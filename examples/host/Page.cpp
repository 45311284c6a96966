#include "examples/host/Page.h"

#include "examples/host/PageCells.h"
#include "graphics/AGDCCreator.h"

#include <cwchar>
#include <memory>

#include <windows.h>

namespace host {

using namespace corvix;

namespace {

constexpr int kColumns = 3;
constexpr int kMargin = 12;
constexpr int kTop = 44;
constexpr int kCellWidth = (kPageWidth - 2 * kMargin) / kColumns;
constexpr int kCellHeight = 148;

struct DeleteFont {
  void operator()(HFONT font) const noexcept { DeleteObject(font); }
};
using Font = std::unique_ptr<HFONT__, DeleteFont>;

// A context has no text of its own: captions are GDI's.
void write(IAGDC& context, int x, int y, int height, bool isBold, Color color, const wchar_t* text) {
  const Font font(CreateFontW(-height, 0, 0, 0, isBold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                              OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, VARIABLE_PITCH | FF_SWISS,
                              L"DejaVu Sans"));
  const HDC device = context.deviceContext();
  const HGDIOBJ before = SelectObject(device, font.get());
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, RGB(redOf(color), greenOf(color), blueOf(color)));
  TextOutW(device, x, y, text, static_cast<int>(std::wcslen(text)));
  SelectObject(device, before);
}

// Every cell begins with the same state.
void reset(IAGDC& context) {
  context.setDash(nullptr, 0, 0);
  context.setLineCap(kCapFlat);
  context.setLineJoin(kJoinMiter);
  context.setLineWidth(1);
  context.setMiterLimit(10);
  context.setFillRule(FillRule::EvenOdd);
  context.selectPen();
}

}  // namespace

PageResult drawPage(IAGDC& context, const wchar_t* title, example::IPagePart* part) {
  PageResult result;
  context.clear();
  context.setSmoothing(255);
  context.setInterpolation(192);
  write(context, kMargin, 12, 18, true, rgb(30, 50, 90), title);
  for (const Cell& cell : pageCells()) {
    const int x = kMargin + result.cells % kColumns * kCellWidth;
    const int y = kTop + result.cells / kColumns * kCellHeight;
    const Box box = {static_cast<double>(x), static_cast<double>(y + 20), static_cast<double>(x + kCellWidth - 8),
                     static_cast<double>(y + kCellHeight - 28)};
    reset(context);
    context.setStrokeColor(rgb(205, 210, 218));
    context.line(x, y, x + kCellWidth - 8, y);
    write(context, x, y + 3, 11, false, rgb(90, 96, 110), cell.caption);
    if (!cell.draw(context, box, part)) {
      ++result.refused;
      write(context, x, y + 60, 11, false, rgb(170, 90, 60), L"not offered here");
    }
    ++result.cells;
  }
  reset(context);
  return result;
}

Ref<IAGDC> makePage(IPluginManager& manager, bool throughGdiPlus, PageResult& result) {
  const auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
  if (!creator) return {};
  auto page = Ref<IAGDC>::adopt(
      creator->create(throughGdiPlus ? capability::kGdiPlus : 0, 0, nullptr, kPageWidth, kPageHeight));
  const auto part = createObject<example::IPagePart>(manager, L"Example.PagePart");
  if (page) result = drawPage(*page, throughGdiPlus ? L"GDI+" : L"Plain GDI", part.get());
  return page;
}

}  // namespace host
