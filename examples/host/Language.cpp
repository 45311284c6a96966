#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "shell/language/Translator.h"

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

int choose(Host& host, IBTranslator& translator, const std::string& code) {
  if (!translator.setLanguage(code == "system" ? L"" : wide(code).c_str())) {
    std::fprintf(stderr, "corvix-host: %s is no language's code, such as de or de-AT.\n", code.c_str());
    return 1;
  }
  host.manager().saveSettings();
  std::printf("Chosen: %s\n", shown(translator.language()).c_str());
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
