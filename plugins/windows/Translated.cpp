#include "plugins/windows/Translated.h"

#include "shell/Shell.h"
#include "shell/language/Sentence.h"

namespace corvix::windows {

Translation::Translation()
    : translator_(createObject<IBTranslator>(*IShell::getInstance()->pluginManager(), L"IBTranslator.Instance")) {}

Translation::~Translation() = default;

const wchar_t* Translation::of(const wchar_t* text, const wchar_t* context) const {
  if (!translator_) return text;  // its texts are good for longer than this reference
  return context ? translator_->translateIn(context, text) : translator_->translate(text);
}

const wchar_t* translated(const wchar_t* text, const wchar_t* context) { return Translation().of(text, context); }

std::wstring sentence(const wchar_t* text, std::initializer_list<std::wstring_view> parts) {
  const auto translator = createObject<IBTranslator>(*IShell::getInstance()->pluginManager(), L"IBTranslator.Instance");
  return composeSentence(translator.get(), text, parts);
}

}  // namespace corvix::windows
