#include "plugins/windows/Translated.h"

#include "shell/Shell.h"
#include "shell/language/Translator.h"

namespace corvix::windows {

const wchar_t* translated(const wchar_t* text, const wchar_t* context) {
  const auto translator = createObject<IBTranslator>(*IShell::getInstance()->pluginManager(), L"IBTranslator.Instance");
  if (!translator) return text;  // its texts are good for longer than this reference
  return context ? translator->translateIn(context, text) : translator->translate(text);
}

}  // namespace corvix::windows
