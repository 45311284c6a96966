#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "shell/language/Translator.h"

#include <cwchar>
#include <string>

namespace host {

using namespace corvix;

namespace {

constexpr wchar_t kTranslator[] = L"IBTranslator.Instance";

int list(IBTranslator& translator) {
  std::printf("Chosen: %s\n\n", shown(translator.language()).c_str());
  Table table({"Code", "Language", "Texts from"});
  KnownLanguage known;
  translator.takeStock();
  for (i32 i = 0; translator.knownAt(i, known); ++i)
    table.add({shown(known.code), shown(known.name), fileName(known.origin)});
  table.print();
  return 0;
}

// Of the language itself, or of the one that it is a kind of.
bool hasTexts(IBTranslator& translator) {
  const std::wstring chosen = std::wstring(translator.language()) + L'-';
  KnownLanguage known;
  translator.takeStock();
  for (i32 i = 0; translator.knownAt(i, known); ++i) {
    const std::wstring code = std::wstring(known.code) + L'-';
    if (!_wcsnicmp(chosen.c_str(), code.c_str(), code.size())) return true;
  }
  return false;
}

int choose(Host& host, IBTranslator& translator, const std::string& code) {
  if (!translator.setLanguage(code == "system" ? L"" : wide(code).c_str())) {
    std::fprintf(stderr, "corvix-host: %s is no language's code, such as de or de-AT.\n", code.c_str());
    return 1;
  }
  host.manager().saveSettings();
  std::printf("Chosen: %s\n", shown(translator.language()).c_str());
  if (code != "system" && !hasTexts(translator))
    std::fprintf(stderr, "corvix-host: there are no texts of it: the program's own words are shown.\n");
  return 0;
}

}  // namespace

const Command languageCommand("language", "Show the languages that there are texts of, or choose one",
                              {{"CODE", "Such as de, or \"system\" for the system's", Argument::Optional}},
                              [](Host& host, const Texts& given) {
                                const auto translator = createObject<IBTranslator>(host.describedOnly(), kTranslator);
                                if (!translator) {
                                  explainNoObject(host.manager(), kTranslator);
                                  return 1;
                                }
                                return given[0].empty() ? list(*translator) : choose(host, *translator, given[0]);
                              });

}  // namespace host
