// Paints, modes, masks and groups of a smooth context.
#include "plugins/smooth/SmoothContext_p.h"

namespace corvix::smooth {

namespace {

// The picture of a group.
class PicturePaint final : public PaintSource {
 public:
  explicit PicturePaint(const Surface& picture) noexcept : picture_(picture) {}
  void read(Point at, i32 count, Pixel* to) const noexcept override {
    const Pixel* const from = picture_.at(static_cast<i32>(std::floor(at.x)), static_cast<i32>(std::floor(at.y)));
    std::copy_n(from, count, to);
  }

 private:
  Surface picture_;
};

// As PDF weighs them.
u32 lightness(Pixel pixel) noexcept {
  return ((pixel >> 16 & 255) * 77 + (pixel >> 8 & 255) * 151 + (pixel & 255) * 28 + 128) >> 8;
}

}  // namespace

bool SmoothContext::setPaint(PaintUse use, SharedPaint paint) noexcept {
  paints_[use == PaintUse::Stroke ? 1 : 0] = std::move(paint);
  return true;
}

bool SmoothContext::setAxialPaint(PaintUse use, const Point& from, const Point& to, const ColorStop* stops, i32 count,
                                  u32 extend) {
  if (!isFinite(from) || !isFinite(to) || isSingular_) return false;
  return withinMemory([&] {
    ColorRamp ramp;
    return ramp.make(stops, count, extend) &&
           setPaint(use, std::allocate_shared<AxialPaint>(HeapAllocator<AxialPaint>(), std::move(ramp), from, to,
                                                          transform_));
  });
}

bool SmoothContext::setRadialPaint(PaintUse use, const Point& fromCenter, double fromRadius, const Point& toCenter,
                                   double toRadius, const ColorStop* stops, i32 count, u32 extend) {
  if (!isFinite(fromCenter) || !isFinite(toCenter) || !(fromRadius >= 0 && toRadius >= 0) ||
      !isFinite({fromRadius, toRadius}) || isSingular_) {
    return false;
  }
  return withinMemory([&] {
    ColorRamp ramp;
    return ramp.make(stops, count, extend) &&
           setPaint(use, std::allocate_shared<RadialPaint>(HeapAllocator<RadialPaint>(), std::move(ramp), fromCenter,
                                                           fromRadius, toCenter, toRadius, transform_));
  });
}

bool SmoothContext::paintAll() {
  if (!prepare()) return false;
  return withinMemory([&] {
    const Painter::How how = this->how(fillColor_, paints_[0]);
    return paintBox(how, how.clip);
  });
}

bool SmoothContext::setOpacity(double opacity) {
  if (!(opacity >= 0 && opacity <= 1)) return false;
  look_.opacity = opacity;
  return true;
}

bool SmoothContext::setBlendMode(BlendMode mode) {
  look_.mode = mode >= BlendMode::Normal && mode <= BlendMode::Exclusion ? mode : BlendMode::Normal;
  return true;
}

bool SmoothContext::beginGroup() {
  if (groupDepth() >= kMostGroups || !prepare()) return false;
  drawTiles();
  return withinMemory([&] {
    Layer layer;
    layer.box = clipBox();
    if (isEmpty(layer.box)) layer.box = {0, 0, 0, 0};
    layer.pixels.resize(static_cast<std::size_t>(layer.box.right - layer.box.left) *
                        static_cast<std::size_t>(layer.box.bottom - layer.box.top));
    layers_.reserve(layers_.size() + 1);
    layer.clip = std::exchange(clip_, {});
    layer.saved.swap(saved_);
    layer.look = std::exchange(look_, {});
    layers_.push_back(std::move(layer));
    clip_ = wholeClip();
    clipChanged();
    return true;
  });
}

void SmoothContext::closeGroup() {
  closed_ = std::move(layers_.back());
  layers_.pop_back();
  clip_ = std::move(closed_.clip);
  saved_ = std::move(closed_.saved);
  look_ = std::move(closed_.look);
  clipChanged();
}

bool SmoothContext::endGroup() {
  if (layers_.empty()) return false;
  drawTiles();
  const Surface picture = surface();
  closeGroup();
  const bool isDrawn = withinMemory([&] {
    Painter::How how = this->how(kBlack, nullptr);
    const PicturePaint paint(picture);
    how.source = lent(paint);
    how.origin = {0, 0};
    return paintBox(how, picture.box);
  });
  closed_ = {};
  return isDrawn;
}

bool SmoothContext::endGroupAsMask(MaskBy by, Color backdrop) {
  if (layers_.empty()) return false;
  drawTiles();
  const Surface picture = surface();
  closeGroup();
  const bool isMade = withinMemory([&] {
    i32 x;
    i32 y;
    wholeOrigin(x, y);
    const Pixel below = toPixel(backdrop | kBlack);
    const u32 around = by == MaskBy::Luminosity ? lightness(below) : 0;
    const PixelBox box = around ? surface().box : picture.box;
    auto mask = std::allocate_shared<CoverMask>(HeapAllocator<CoverMask>(), moved(box, -x, -y));
    HeapVector<u8> row(static_cast<std::size_t>(box.right - box.left), static_cast<u8>(around));
    for (i32 line = box.top; line < box.bottom; ++line) {
      std::fill(row.begin(), row.end(), static_cast<u8>(around));
      if (line >= picture.box.top && line < picture.box.bottom) {
        const Pixel* from = picture.at(picture.box.left, line);
        u8* to = row.data() + (picture.box.left - box.left);
        for (i32 i = picture.box.left; i < picture.box.right; ++i, ++from) {
          *to++ = static_cast<u8>(by == MaskBy::Alpha ? *from >> 24 : lightness(over(below, *from)));
        }
      }
      mask->addRow(row.data());
    }
    look_.mask = std::move(mask);
    return true;
  });
  closed_ = {};
  return isMade;
}

bool SmoothContext::setSoftMask(IAGImage* image, const Matrix& unitToUser, MaskBy by) {
  if (!image) {
    look_.mask.reset();
    return true;
  }
  if (!canDraw() || !unitToUser.isFinite()) return false;
  Clip clip = std::exchange(clip_, wholeClip());
  SharedMask before = look_.mask;
  bool isMade = false;
  if (beginGroup()) {
    isMade = drawImageTransformed(image, unitToUser);
    isMade = endGroupAsMask(by, kBlack) && isMade;
  }
  clip_ = std::move(clip);
  clipChanged();
  if (!isMade) look_.mask = std::move(before);
  return isMade;
}

}  // namespace corvix::smooth
