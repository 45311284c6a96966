#include "plugins/gui/Languages.h"

#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/language/Translator.h"

namespace corvix::gui {

namespace {

// Lasts from now on.
void choose(const std::wstring& code) {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  const auto translator = createObject<IBTranslator>(manager, L"IBTranslator.Instance");
  if (translator && translator->setLanguage(code.c_str())) manager.saveSettings();
}

}  // namespace

std::vector<ListedRow> languages() {
  std::vector<ListedRow> rows;
  const auto translator = createObject<IBTranslator>(*IShell::getInstance()->pluginManager(), L"IBTranslator.Instance");
  if (!translator) return rows;
  const std::wstring now = translator->language();
  rows.push_back({windows::translated(L"The system's"), false, [] { choose(L""); }});
  rows.push_back({L"English", now == L"en", [] { choose(L"en"); }});
  KnownLanguage known;
  for (i32 i = 0, count = translator->takeStock(); i < count && translator->knownAt(i, known); ++i) {
    const std::wstring code = known.code;
    if (code != L"en") rows.push_back({known.name, code == now, [code] { choose(code); }});
  }
  return rows;
}

}  // namespace corvix::gui
