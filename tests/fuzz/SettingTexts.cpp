// Texts of settings, numbers and class words.
#include "core/baselib/identity/StypeInfo.h"
#include "core/baselib/text/NumberText.h"
#include "core/settings/SettingText_p.h"
#include "tests/fuzz/Fuzz.h"

namespace corvix::fuzz {

void settingTexts(Bytes bytes) {
  constexpr const wchar_t* kTypes[] = {L"integer", L"float", L"bool", L"enum", L"string"};
  const std::wstring_view type = kTypes[take(bytes) % std::size(kTypes)];
  const std::wstring text = textOf(bytes);
  std::wstring_view rest = text;
  const std::wstring current = takeLine(rest);
  const std::wstring standard = takeLine(rest);
  const SettingTexts texts{current, standard, type, rest};

  const SettingValues values = readSetting(texts);
  if (const auto written = writeSetting(values.current, type, rest)) {
    const SettingValues again = readSetting({*written, standard, type, rest});
    require(type == L"enum" || again.current == values.current, "a written value is read as the same");
    require(writeSetting(again.current, type, rest) == written, "and written as the same text");
  }
  static_cast<void>(values.standard.toInteger());

  const text::ScannedInteger scanned = text::scanInteger(current);
  require(!scanned.end || (scanned.end > current.data() && scanned.end <= current.data() + current.size()),
          "a number ends in its text");
  wchar_t digits[text::kFloatLength + 1];
  const double number = text::readFloat(current);
  const std::size_t length = text::writeFloat(number, digits);
  require(length <= text::kFloatLength && text::readFloat({digits, length}) == number,
          "a float is read as it is written");
  parseClassWords(current.data(), current.size());
}

}  // namespace corvix::fuzz
