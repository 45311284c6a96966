// A plug-in that draws: petals around a middle, on plain GDI and on GDI+ alike.
#include "descriptor.h"
#include "examples/plugins/rosette/IPagePart.h"
#include "shell/Plugin.h"

namespace example {

using namespace corvix;

class Rosette : public BSmartObject, public IPagePart {
  CORVIX_IDENTITY(Rosette, 0x2C94A7F3, 0x4D6E01B8, 0xA7359FC2, 0xE8104B6D, BSmartObject, IPagePart)

 public:
  bool drawPart(IAGDC& context, const Box& box) override {
    const Point middle = {(box.left + box.right) / 2, (box.top + box.bottom) / 2};
    const double reach = std::min(box.right - box.left, box.bottom - box.top) / 2;
    bool isDrawn =
        context.saveClip() && context.clipRect(box.left, box.top, box.right - box.left, box.bottom - box.top);
    for (int i = 0; i < kPetals && isDrawn; ++i) {
      context.setFillColor(argb(160, 255 - 20 * static_cast<u32>(i), 90 + 14 * static_cast<u32>(i), 120));
      context.setStrokeColor(rgb(110, 20, 60));
      context.setLineWidth(1.5);
      isDrawn = drawPetal(context, middle, reach, 2 * std::acos(-1.0) * i / kPetals);
    }
    return context.restoreClip() && isDrawn;
  }

 private:
  static constexpr int kPetals = 8;

  static bool drawPetal(IAGDC& context, Point middle, double reach, double angle) {
    const auto at = [&](double turn, double part) {
      return Point{middle.x + reach * part * std::cos(angle + turn), middle.y + reach * part * std::sin(angle + turn)};
    };
    const Point left = at(-0.55, 0.7);
    const Point right = at(0.55, 0.7);
    const Point tip = at(0, 0.95);
    return context.beginPath() && context.moveTo(middle.x, middle.y) &&
           context.curveTo(left.x, left.y, left.x, left.y, tip.x, tip.y) &&
           context.curveTo(right.x, right.y, right.x, right.y, middle.x, middle.y) && context.closePath() &&
           context.drawPath(PathPaint::FillAndStroke) && context.endPath();
  }
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Example_PagePart, example::Rosette>())
