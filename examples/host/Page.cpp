#include "examples/host/Page.h"

#include "graphics/text/Text.h"

#include <cwchar>

namespace host {

using namespace corvix;

namespace {

constexpr int kColumns = 3;
constexpr int kMargin = 12;
constexpr int kTop = 44;
constexpr int kCellWidth = (kPageWidth - 2 * kMargin) / kColumns;
constexpr int kCellHeight = 148;

void write(IAGDC& context, IFMFont* font, double x, double y, double size, Color color, const wchar_t* text) {
  if (!font || !context.setFillColor(color)) return;
  drawText(context, *font, size, Matrix::translation(x, y), text, static_cast<i32>(std::wcslen(text)));
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

PageResult drawPage(IAGDC& context, const wchar_t* title, const PageTools& tools) {
  PageResult result;
  context.clear();
  context.setSmoothing(255);
  context.setInterpolation(192);
  write(context, tools.font, kMargin, 29, 18, rgb(30, 50, 90), title);
  for (const Cell& cell : pageCells()) {
    const int x = kMargin + result.cells % kColumns * kCellWidth;
    const int y = kTop + result.cells / kColumns * kCellHeight;
    const Box box = {static_cast<double>(x), static_cast<double>(y + 20), static_cast<double>(x + kCellWidth - 8),
                     static_cast<double>(y + kCellHeight - 28)};
    reset(context);
    context.setStrokeColor(rgb(205, 210, 218));
    context.line(x, y, x + kCellWidth - 8, y);
    write(context, tools.font, x, y + 14, 10, rgb(90, 96, 110), cell.caption);
    if (!cell.draw(context, box, tools)) {
      ++result.refused;
      write(context, tools.font, x, y + 70, 10, rgb(170, 90, 60), L"not offered here");
    }
    ++result.cells;
  }
  reset(context);
  return result;
}

Ref<IAGDC> makePage(IPluginManager& manager, const PageKind& kind, PageResult& result) {
  const auto creator = createObject<IAGDCCreator>(manager, kind.creator);
  if (!creator) return {};
  auto page = Ref<IAGDC>::adopt(creator->create(kind.required, 0, nullptr, kPageWidth, kPageHeight));
  const auto part = createObject<example::IPagePart>(manager, L"Example.PagePart");
  const auto machine = createObject<IFMFontMachine>(manager, L"IFMFontMachine.Instance");
  const auto font = Ref<IFMFont>::adopt(machine ? machine->createFont(L"Helvetica") : nullptr);
  if (page) result = drawPage(*page, kind.title, {part.get(), font.get()});
  return page;
}

}  // namespace host
