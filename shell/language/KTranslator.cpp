#include "shell/language/KTranslator_p.h"

#include "shell/DeclaredObjects_p.h"

#include <windows.h>
#include <algorithm>
#include <cwchar>

namespace corvix {

namespace {

constexpr wchar_t kGroup[] = L"General";
constexpr wchar_t kItem[] = L"Language";
constexpr wchar_t kFile[] = L"\\brisvaneres.";
constexpr std::wstring_view kFamily = L"LangPackage.";
constexpr std::size_t kLongestCode = 32;
constexpr std::size_t kMostFiles = 256;

bool isCode(std::wstring_view code) {
  return !code.empty() && code.size() <= kLongestCode && std::all_of(code.begin(), code.end(), [](wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'-';
  });
}

std::wstring codeOf(LCID language) {
  wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
  return LCIDToLocaleName(language, name, LOCALE_NAME_MAX_LENGTH, 0) ? name : L"";
}

// The language's own name for itself, as the system knows it.
std::wstring nameOf(const std::wstring& code) {
  wchar_t name[128] = {};
  GetLocaleInfoEx(code.c_str(), LOCALE_SNATIVELANGUAGENAME, name, static_cast<int>(std::size(name)));
  return name;
}

// The number of a language that the system knows, else the code itself.
std::wstring settingOf(const std::wstring& code) {
  const LCID number = code.empty() ? 0 : LocaleNameToLCID(code.c_str(), 0);
  const bool isNumber = code.empty() || (number && number != LOCALE_CUSTOM_UNSPECIFIED);
  return isNumber ? std::to_wstring(number) : code;
}

// What General\Language says: the number of a language, 0 for the system's, or a code.
std::wstring codeOfSetting(const IBSettings& settings) {
  Variant value;
  settings.getValue(kGroup, kItem, value);
  std::wstring text(value.toText().view());
  const bool isNumber = std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
  if (!isNumber && isCode(text)) return text;
  const i32 number = isNumber && text.size() < 8 ? value.toInteger() : 0;
  const std::wstring code = number ? codeOf(static_cast<LCID>(number)) : L"";
  return code.empty() ? codeOf(GetUserDefaultUILanguage()) : code;
}

}  // namespace

KTranslator::KTranslator(IPluginManager& modules, IBSettings& settings, std::wstring folder)
    : modules_(modules), settings_(settings), folder_(std::move(folder)) {
  settings_.watch(kGroup, kItem, this, 0);
}

KTranslator::~KTranslator() { settings_.unwatch(kGroup, kItem, this); }

bool KTranslator::setLanguage(const wchar_t* code) {
  const std::wstring wanted = code ? code : L"";
  if (!wanted.empty() && !isCode(wanted)) return false;
  settings_.setValue(kGroup, kItem, Variant(settingOf(wanted).c_str()));
  return true;
}

int KTranslator::onSettingChanged(IBSettings&, const wchar_t*, const wchar_t*) {
  chosen_ = nullptr;
  broadcastTo<ILanguageListener>(sender_, [this](ILanguageListener& told) { return told.onLanguageChanged(*this); });
  return notify::kGoOn;
}

i32 KTranslator::takeStock() {
  known_.clear();
  WIN32_FIND_DATAW file;
  const HANDLE search = FindFirstFileW((folder_ + kFile + L"*").c_str(), &file);
  for (bool isFound = search != INVALID_HANDLE_VALUE; isFound && known_.size() < kMostFiles;
       isFound = FindNextFileW(search, &file)) {
    LanguageFile texts;
    const std::wstring path = folder_ + L"\\" + file.cFileName;
    const std::wstring code = path.substr(folder_.size() + std::size(kFile) - 1);
    if (isCode(code) && texts.read(path)) known_.push_back({code, texts.name(), path});
  }
  if (search != INVALID_HANDLE_VALUE) FindClose(search);
  for (i32 i = 0; i < modules_.interfaceCount(); ++i) {
    const IPluginInterface& entry = *modules_.interfaceAt(i);
    const std::wstring_view name = entry.name();
    if (name.starts_with(kFamily) && isCode(name.substr(kFamily.size())))
      known_.push_back({std::wstring(name.substr(kFamily.size())), L"", entry.module()->path()});
  }
  for (Known& one : known_) {
    if (one.name.empty()) one.name = nameOf(one.code);
    if (one.name.empty()) one.name = one.code;
  }
  std::stable_sort(known_.begin(), known_.end(), [](const Known& a, const Known& b) { return a.code < b.code; });
  return static_cast<i32>(known_.size());
}

bool KTranslator::knownAt(i32 index, KnownLanguage& known) const noexcept {
  if (index < 0 || static_cast<std::size_t>(index) >= known_.size()) return false;
  const Known& one = known_[static_cast<std::size_t>(index)];
  known = {one.code.c_str(), one.name.c_str(), one.origin.c_str()};
  return true;
}

KTranslator::Language& KTranslator::chosen() {
  if (chosen_) return *chosen_;
  const std::wstring code = codeOfSetting(settings_);
  Language& language = languages_[code];
  if (language.code.empty()) {
    language.code = code;
    language.steps.push_back(&textsOf(code));
    if (const std::size_t sub = code.find(L'-'); sub != code.npos)
      language.steps.push_back(&textsOf(code.substr(0, sub)));
  }
  return *(chosen_ = &language);
}

KTranslator::Texts& KTranslator::textsOf(const std::wstring& code) {
  const auto [at, isNew] = texts_.try_emplace(code);
  Texts& texts = at->second;
  if (!isNew) return texts;
  forEachDeclared<IBLangPackage>(
      modules_, (std::wstring(kFamily) + code).c_str(), [&](IBLangPackage& package, IPluginInterface&) {
        texts.packages.push_back(Ref<IBSmartObject>::share(corvix::query<IBSmartObject>(&package)));
        return true;
      });
  texts.file.read(folder_ + kFile + code);
  return texts;
}

const wchar_t* KTranslator::find(const Texts& texts, const wchar_t* context, const wchar_t* text) {
  for (const Ref<IBSmartObject>& object : texts.packages) {
    const auto* const package = corvix::query<IBLangPackage>(object.get());
    const wchar_t* const found =
        callForeign(corvix::codeOf(object.get()), L"IBLangPackage", [&] { return package->text(context, text); });
    if (found && *found && wcsnlen(found, LanguageFile::kLongestText + 1) <= LanguageFile::kLongestText) return found;
  }
  return texts.file.find(context, text);
}

const wchar_t* KTranslator::translateIn(const wchar_t* context, const wchar_t* text) {
  if (!text || !*text) return L"";
  const wchar_t* const wanted = context ? context : L"";
  for (const Texts* const step : chosen().steps) {
    const wchar_t* found = find(*step, wanted, text);
    if (!found && *wanted) found = find(*step, L"", text);
    if (found) return found;
  }
  return text;
}

}  // namespace corvix
