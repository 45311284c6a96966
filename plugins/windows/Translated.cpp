#include "plugins/windows/Translated.h"

#include "shell/Shell.h"
#include "shell/language/Translator.h"

namespace corvix::windows {

Translation::Translation()
    : translator_(createObject<IBTranslator>(*IShell::getInstance()->pluginManager(), L"IBTranslator.Instance")) {}

Translation::~Translation() = default;

const wchar_t* Translation::of(const wchar_t* text, const wchar_t* context) const {
  if (!translator_) return text;  // its texts are good for longer than this reference
  return context ? translator_->translateIn(context, text) : translator_->translate(text);
}

const wchar_t* translated(const wchar_t* text, const wchar_t* context) { return Translation().of(text, context); }

}  // namespace corvix::windows
