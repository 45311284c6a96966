#include "graphics/quality/QualityListener_p.h"

#include "graphics/quality/Quality_p.h"

namespace corvix {

namespace {

constexpr wchar_t kGroup[] = L"Quality";

// The option that users see is "SmartLines"; programs may set "GDCSmartLines", which then counts.
constexpr const wchar_t* kWatched[] = {L"GDCClipMode",         L"ImageRotationMode", L"ImageStretchMode",
                                       L"FullColorConversion", L"GDCSmartLines",     L"SmartLines",
                                       L"ImageSizeLimit"};

void readAll(const IBSettings& settings) {
  Quality& values = quality();
  const Quality defaults;
  const auto number = [&](const wchar_t* item, i32 fallback) {
    return integerSetting(settings, kGroup, item, fallback);
  };
  values.softwareClipping = number(L"GDCClipMode", 1) != 0;
  values.smartLines = number(L"GDCSmartLines", number(L"SmartLines", 0)) != 0;
  values.imageRotation = number(L"ImageRotationMode", defaults.imageRotation);
  values.imageStretch = number(L"ImageStretchMode", defaults.imageStretch);
  values.cmykConversion = number(L"FullColorConversion", defaults.cmykConversion);
  values.imageSizeLimit = number(L"ImageSizeLimit", defaults.imageSizeLimit);
}

}  // namespace

QualityListener::QualityListener(IBSettings& settings) : settings_(settings) {
  readAll(settings);
  for (const wchar_t* item : kWatched) settings.watch(kGroup, item, this, 0);
}

QualityListener::~QualityListener() {
  for (const wchar_t* item : kWatched) settings_.unwatch(kGroup, item, this);
}

int QualityListener::onSettingChanged(IBSettings& settings, const wchar_t*, const wchar_t*) {
  readAll(settings);
  return notify::kGoOn;
}

void watchQuality(IBSettings& settings) {
  static QualityListener* const listener = new QualityListener(settings);
  static_cast<void>(listener);
}

}  // namespace corvix
