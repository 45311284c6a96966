#include "graphics/contexts/AGDC_p.h"

#include "core/baselib/objects/Ref.h"
#include "graphics/quality/Quality_p.h"

#include <cfloat>

namespace corvix {

using gdiplus::flat;

namespace {

// The pen is ten units wide under a transform of a tenth of the line width. Deliberate: miter limits count on it.
constexpr float kPenWidth = 10;
constexpr double kPenScale = 0.1;

struct QualityStep {
  Gdiplus::SmoothingMode smoothing;
  Gdiplus::InterpolationMode interpolation;
  i32 level;
};
// The order of the smoothing modes is deliberate: 64 selects GDI+'s default, 128 turns smoothing off.
constexpr QualityStep kQualitySteps[5] = {
    {Gdiplus::SmoothingModeHighSpeed, Gdiplus::InterpolationModeNearestNeighbor, 0},
    {Gdiplus::SmoothingModeDefault, Gdiplus::InterpolationModeLowQuality, 64},
    {Gdiplus::SmoothingModeNone, Gdiplus::InterpolationModeHighQuality, 128},
    {Gdiplus::SmoothingModeAntiAlias, Gdiplus::InterpolationModeBilinear, 192},
    {Gdiplus::SmoothingModeHighQuality, Gdiplus::InterpolationModeHighQualityBicubic, 255}};

const QualityStep& stepOf(i32 level) noexcept {
  return kQualitySteps[static_cast<std::size_t>(4 * std::clamp(level, 0, 255) / 255)];
}

// As GDI+ itself has the matrix.
bool canTurnBackInSingles(const Matrix& matrix) noexcept {
  const auto product = [](double a, double b) { return static_cast<float>(a) * static_cast<float>(b); };
  const float determinant = product(matrix.a, matrix.d) - product(matrix.b, matrix.c);
  return std::isfinite(determinant) && determinant != 0;
}

Gdiplus::LineJoin joinOf(i32 join) noexcept {
  return join == kJoinRound   ? Gdiplus::LineJoinRound
         : join == kJoinBevel ? Gdiplus::LineJoinBevel
                              : Gdiplus::LineJoinMiterClipped;
}

}  // namespace

AGDC::AGDC(DeviceHandle device, double width, double height) : DrawingContext(device, width, height) {
  if (!session_) return;
  work_.tryAllocate(1);
  matrix_.reset(gdiplus::Wrapper<Gdiplus::GpMatrix>::make(
      [](Gdiplus::GpMatrix** made) { return flat().GdipCreateMatrix2(1, 0, 0, 1, 0, 0, made); }));
  pen_.reset(gdiplus::Wrapper<Gdiplus::GpPen>::make(
      [](Gdiplus::GpPen** made) { return flat().GdipCreatePen1(kBlack, kPenWidth, Gdiplus::UnitWorld, made); }));
  if (pen_ && pen_.get()->native) {
    constexpr auto kTenth = static_cast<float>(kPenScale);
    pen_.get()->keep(flat().GdipScalePenTransform(pen_.get()->native, kTenth, kTenth, Gdiplus::MatrixOrderAppend));
    if (!gdiplus::penTransformsWork()) pen_.get()->keep(flat().GdipSetPenWidth(pen_.get()->native, 1));
  }
  brush_.reset(gdiplus::Wrapper<Gdiplus::GpSolidFill>::make(
      [](Gdiplus::GpSolidFill** made) { return flat().GdipCreateSolidFill(kWhite, made); }));
}

AGDC::~AGDC() { takeBack(); }

bool AGDC::take(DeviceHandle device, double width, double height) {
  return session_ && DrawingContext::take(device, width, height);
}

bool AGDC::detach() {
  if (!isAttached_) return false;
  beginGdi();
  clips_.clear();
  onDevice_.reset();
  return DrawingContext::detach();
}

IAGDC* AGDC::createDetached() {
  auto context = make<AGDC>(nullptr, 0, 0);
  return context->isStarted() ? context.detach() : nullptr;
}

DeviceHandle AGDC::deviceContext() {
  beginGdi();
  int left;
  int top;
  if (!isAttached_ || !gdi::roundPixel(origin_.x, left) || !gdi::roundPixel(origin_.y, top)) return device_;
  lent_.emplace(device_, deviceClip(), baseOrigin_);
  SetViewportOrgEx(device_, baseOrigin_.x + left, baseOrigin_.y + top, nullptr);
  return device_;
}

void AGDC::takeBack() noexcept {
  if (!lent_) return;
  lent_.reset();
  SetViewportOrgEx(device_, baseOrigin_.x, baseOrigin_.y, nullptr);
}

void AGDC::beginGdi() noexcept {
  takeBack();
  graphics_.reset();
  isPrepared_ = false;
}

bool AGDC::setOrigin(double x, double y) {
  if (!DrawingContext::setOrigin(x, y)) return false;
  takeBack();
  isPrepared_ = false;
  onDevice_.reset();
  return true;
}

void AGDC::applyWorld() noexcept {
  gdiplus::Graphics& graphics = *graphics_.get();
  graphics.keep(flat().GdipTranslateWorldTransform(graphics.native, static_cast<float>(origin_.x),
                                                   static_cast<float>(origin_.y), Gdiplus::MatrixOrderAppend));
}

// What is set stays set while the Graphics lives, so only what changed is set again.
bool AGDC::prepare() noexcept {
  if (!canDraw()) return false;
  if (graphics_ && isPrepared_) return useWorld(World::Plain);
  const bool isNew = !graphics_;
  if (isNew) {
    takeBack();
    graphics_ = gdiplus::makeWhole<gdiplus::OwnedGraphics>(
        [this](Gdiplus::GpGraphics** made) { return flat().GdipCreateFromHDC(device_, made); });
    if (!graphics_) return false;
  }
  gdiplus::Graphics& graphics = *graphics_.get();
  graphics.keep(flat().GdipSetPageUnit(graphics.native, Gdiplus::UnitPixel));
  graphics.keep(flat().GdipSetSmoothingMode(graphics.native, smoothing_));
  graphics.keep(flat().GdipSetInterpolationMode(graphics.native, interpolation_));
  if (!isNew) graphics.keep(flat().GdipResetWorldTransform(graphics.native));
  applyWorld();
  world_ = World::Plain;
  if (clips_.current()) {
    graphics.keep(flat().GdipSetClipRegion(graphics.native, clips_.current()->native, Gdiplus::CombineModeReplace));
  } else if (!isNew) {
    graphics.keep(flat().GdipResetClip(graphics.native));
  }
  isPrepared_ = true;
  return true;
}

bool AGDC::useWorld(World world) noexcept {
  if (world == World::User && transform_.isIdentity()) world = World::Plain;
  if (world == world_) return true;
  gdiplus::Graphics& graphics = *graphics_.get();
  if (world == World::Plain) {
    graphics.keep(flat().GdipResetWorldTransform(graphics.native));
  } else {
    if (!matrix_ || !matrix_.get()->native) return false;
    graphics.keep(flat().GdipSetWorldTransform(graphics.native, matrix_.get()->native));
  }
  applyWorld();
  world_ = world;
  return true;
}

bool AGDC::setTransform(const Matrix& userToDevice) {
  for (const double number :
       {userToDevice.a, userToDevice.b, userToDevice.c, userToDevice.d, userToDevice.e, userToDevice.f}) {
    if (!(std::abs(number) <= double{FLT_MAX})) return false;
  }
  transform_ = userToDevice;
  isSingular_ = !canTurnBackInSingles(userToDevice);
  isPenStale_ = true;
  if (world_ == World::User) isPrepared_ = false;
  if (!matrix_ || !matrix_.get()->native) return false;
  const auto number = [](double value) { return static_cast<float>(value); };
  return matrix_.get()->keep(flat().GdipSetMatrixElements(
      matrix_.get()->native, number(userToDevice.a), number(userToDevice.b), number(userToDevice.c),
      number(userToDevice.d), number(userToDevice.e), number(userToDevice.f)));
}

void AGDC::colorsChanged() noexcept {
  if (pen_ && pen_.get()->native) pen_.get()->keep(flat().GdipSetPenColor(pen_.get()->native, strokeColor_));
  if (brush_ && brush_.get()->native) {
    brush_.get()->keep(flat().GdipSetSolidFillColor(brush_.get()->native, fillColor_));
  }
}

bool AGDC::setLineJoin(i32 join) {
  DrawingContext::setLineJoin(join);
  return pen_ && pen_.get()->native &&
         (pen_.get()->keep(flat().GdipSetPenLineJoin(pen_.get()->native, joinOf(join))), true);
}

bool AGDC::setMiterLimit(double limit) {
  if (!DrawingContext::setMiterLimit(limit) || !pen_ || !pen_.get()->native) return false;
  pen_.get()->keep(flat().GdipSetPenMiterLimit(pen_.get()->native, static_cast<float>(limit * kPenWidth)));
  return true;
}

bool AGDC::selectPen() {
  isPenStale_ = isPenStale_ || isHairline_;
  isHairline_ = false;
  return true;
}

bool AGDC::selectHairlinePen() {
  isPenStale_ = isPenStale_ || !isHairline_;
  isHairline_ = true;
  return true;
}

double AGDC::greatestCoordinate() const noexcept { return FLT_MAX; }

// GDI+ has no dashes of length 0, whose caps are dots. And an emulation that ignores pen transforms ignores where a
// dash begins, too.
bool AGDC::cutsDashes() const noexcept {
  return std::find(line_.dashes.begin(), line_.dashes.end(), 0.0) != line_.dashes.end() ||
         (line_.dashPhase != 0 && !gdiplus::penTransformsWork());
}

bool AGDC::readyToStroke(bool isCut) { return prepare() && useWorld(World::User) && preparePen(isCut); }

bool AGDC::readyToFill() { return brush_ && brush_.get()->native && prepare(); }

bool AGDC::preparePen(bool isSolid) noexcept {
  if (!pen_ || !pen_.get()->native) return false;
  isSolid = isSolid || !drawsDashes();
  const bool isSmart = quality().smartLines.load(std::memory_order_relaxed);
  if (!isPenStale_ && isSolid == isPenSolid_ && isSmart == isPenSmart_) return true;
  auto& pen = *pen_.get();
  Gdiplus::GpPen* const native = pen.native;
  double wanted = isHairline_ ? 0 : line_.width;
  // Caps and joins show from one device pixel on.
  if (isSmart && !isHairline_ && penScale() > 0) wanted = std::max(wanted, 1 / penScale());
  const double width = static_cast<float>(wanted);
  const auto scale = static_cast<float>(width * kPenScale);
  pen.keep(flat().GdipResetPenTransform(native));
  pen.keep(flat().GdipScalePenTransform(native, scale, scale, Gdiplus::MatrixOrderAppend));
  if (!gdiplus::penTransformsWork()) pen.keep(flat().GdipSetPenWidth(native, static_cast<float>(width)));
  const auto cap = line_.cap == kCapRound    ? Gdiplus::LineCapRound
                   : line_.cap == kCapSquare ? Gdiplus::LineCapSquare
                                             : Gdiplus::LineCapFlat;
  pen.keep(flat().GdipSetPenLineCap197819(native, cap, cap, static_cast<Gdiplus::DashCap>(cap)));
  pen.keep(flat().GdipSetPenLineJoin(native, joinOf(line_.join)));
  pen.keep(flat().GdipSetPenMiterLimit(native, static_cast<float>(line_.miterLimit * kPenWidth)));
  setDashes(native, width, isSolid);
  isPenSolid_ = isSolid;
  isPenSmart_ = isSmart;
  isPenStale_ = false;
  return true;
}

// GDI+ counts dashes in pen widths, and takes none of length 0.
void AGDC::setDashes(Gdiplus::GpPen* pen, double width, bool isSolid) noexcept {
  constexpr double kShortest = 0.001;
  if (isSolid) {
    pen_.get()->keep(flat().GdipSetPenDashStyle(pen, Gdiplus::DashStyleSolid));
    return;
  }
  float lengths[2 * LineState::kMostDashes];
  const double unit = width > 0 ? width : 1;
  const std::size_t count = line_.dashes.size();
  const std::size_t rounds = count % 2 ? 2 : 1;
  for (std::size_t i = 0; i < rounds * count; ++i) {
    lengths[i] = static_cast<float>(std::min(std::max(line_.dashes[i % count] / unit, kShortest), double{FLT_MAX}));
  }
  pen_.get()->keep(flat().GdipSetPenDashArray(pen, lengths, static_cast<INT>(rounds * count)));
  pen_.get()->keep(flat().GdipSetPenDashOffset(pen, static_cast<float>(line_.dashPhase / unit)));
}

i32 AGDC::setSmoothing(i32 level) {
  const QualityStep& step = stepOf(level);
  smoothing_ = step.smoothing;
  if (graphics_) graphics_.get()->keep(flat().GdipSetSmoothingMode(graphics_.get()->native, smoothing_));
  return step.level;
}

i32 AGDC::setInterpolation(i32 level) {
  const QualityStep& step = stepOf(level);
  interpolation_ = step.interpolation;
  if (graphics_) graphics_.get()->keep(flat().GdipSetInterpolationMode(graphics_.get()->native, interpolation_));
  return step.level;
}

i32 AGDC::smoothing() const noexcept {
  for (const QualityStep& step : kQualitySteps) {
    if (step.smoothing == smoothing_) return step.level;
  }
  return 0;
}

i32 AGDC::interpolation() const noexcept {
  for (const QualityStep& step : kQualitySteps) {
    if (step.interpolation == interpolation_) return step.level;
  }
  return 0;
}

}  // namespace corvix
