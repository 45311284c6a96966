#pragma once

#include "core/settings/Settings.h"
#include "shell/PluginManager.h"
#include "shell/language/LangPackage.h"
#include "shell/language/LanguageFile_p.h"
#include "shell/language/Translator.h"

#include <map>
#include <vector>

namespace corvix {

class KTranslator final : public BSmartObject, public IBTranslator, public ISettingListener {
  CORVIX_IDENTITY(KTranslator, 0x8C41D7F2, 0x3B95E06A, 0xD27F51C8, 0x60AE934B, BSmartObject, IBTranslator,
                  ISettingListener)

 public:
  // Both outlive this one. Files of texts lie in `folder`.
  KTranslator(IPluginManager& modules, IBSettings& settings, std::wstring folder);
  ~KTranslator() override;
  KTranslator(const KTranslator&) = delete;
  KTranslator& operator=(const KTranslator&) = delete;

  const wchar_t* translate(const wchar_t* text) override { return translateIn(L"", text); }
  const wchar_t* translateIn(const wchar_t* context, const wchar_t* text) override;
  const wchar_t* language() override { return chosen().code.c_str(); }
  bool setLanguage(const wchar_t* code) override;
  i32 takeStock() override;
  bool knownAt(i32 index, KnownLanguage& known) const noexcept override;
  BNotifySender& sender() noexcept override { return sender_; }

  int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) override;

 private:
  // What was found for one code; a language that was used once is kept.
  struct Texts {
    std::vector<Ref<IBSmartObject>> packages;
    LanguageFile file;
  };
  struct Language {
    std::wstring code;
    std::vector<Texts*> steps;  // with its sub-language, then without
  };

  struct Known {
    std::wstring code, name, origin;
  };

  Language& chosen();
  Texts& textsOf(const std::wstring& code);
  const wchar_t* find(const Texts& texts, const wchar_t* context, const wchar_t* text);

  IPluginManager& modules_;
  IBSettings& settings_;
  const std::wstring folder_;
  std::map<std::wstring, Texts> texts_;
  std::map<std::wstring, Language> languages_;
  Language* chosen_ = nullptr;  // null until somebody asks
  bool isAsking_ = false;       // a package, which may ask for a text itself: of the files alone, not round and round
  std::vector<Known> known_;
  BNotifySender sender_;
};

}  // namespace corvix
