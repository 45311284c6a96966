#include "graphics/fonts/FontSettings_p.h"

#include "core/settings/Settings.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr wchar_t kGroup[] = L"FontSystem";
constexpr const wchar_t* kWatched[] = {L"AASize", L"FontTypeToSubst"};

struct KindName {
  std::wstring_view name;
  u32 kinds;
};

constexpr u32 bitOf(FontKind kind) noexcept { return 1u << static_cast<u32>(kind); }

constexpr KindName kKinds[] = {
    {L"type1", bitOf(FontKind::Type1)},
    {L"truetype", bitOf(FontKind::TrueType)},
    {L"type0", bitOf(FontKind::Type0)},
    {L"cid", bitOf(FontKind::Type0)},
    {L"type3", bitOf(FontKind::Type3)},
    {L"unknown", bitOf(FontKind::Unknown)},
    {L"all", 0x1F},
};

bool isWordUnit(wchar_t c) noexcept {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9');
}

bool isWord(std::wstring_view word, std::wstring_view expected) noexcept {
  return std::equal(word.begin(), word.end(), expected.begin(), expected.end(),
                    [](wchar_t a, wchar_t b) { return (a >= L'A' && a <= L'Z' ? a + 32 : a) == b; });
}

void readAll(const IBSettings& settings) {
  FontSettings& values = fontSettings();
  values.antiAliasing = integerSetting(settings, kGroup, kWatched[0], 3);
  Variant kinds;
  if (settings.getValue(kGroup, kWatched[1], kinds)) values.kinds = readFontKinds(kinds.text());
}

class Listener final : public BSmartObject, public ISettingListener {
  CORVIX_IDENTITY(Listener, 0xA8D37C14, 0x4F9052BE, 0x83E16AD7, 0x6C2BF805, BSmartObject, ISettingListener)

 public:
  explicit Listener(IBSettings& settings) {
    readAll(settings);
    for (const wchar_t* item : kWatched) settings.watch(kGroup, item, this, 0);
  }
  int onSettingChanged(IBSettings& settings, const wchar_t*, const wchar_t*) override {
    readAll(settings);
    return notify::kGoOn;
  }
};

}  // namespace

i32 FontSettings::levels() const noexcept {
  switch (antiAliasing.load(std::memory_order_relaxed)) {
    case 1:
      return 2;
    case 2:
      return 17;
    default:
      return 65;
  }
}

FontSettings& fontSettings() noexcept {
  static FontSettings settings;
  return settings;
}

u32 readFontKinds(std::wstring_view text) noexcept {
  u32 kinds = 0;
  while (!text.empty()) {
    const auto begin = std::find_if(text.begin(), text.end(), isWordUnit);
    const auto end = std::find_if_not(begin, text.end(), isWordUnit);
    const std::wstring_view word(begin, end);
    for (const KindName& row : kKinds) {
      if (isWord(word, row.name)) kinds |= row.kinds;
    }
    text = {end, text.end()};
  }
  return kinds;
}

void watchFontSettings(IBSettings& settings) {
  static Listener* const listener = new Listener(settings);
  static_cast<void>(listener);
}

}  // namespace corvix
