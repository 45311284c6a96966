#include "shell/language/KTranslator_p.h"

#include "core/baselib/system/KernelFile_p.h"
#include "core/settings/BSettings_p.h"
#include "shell/language/Sentence.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/modules/KPluginManager_p.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"

#include <functional>
#include <gtest/gtest.h>

namespace corvix {
namespace {

using testing_support::addAttributes;
using testing_support::AttributeRows;
using testing_support::OwnFolder;

// Answers for one text what it is told to.
class Package final : public BSmartObject, public IBLangPackage {
  CORVIX_IDENTITY(Package, 0x7D10E2C6, 0x29F4B85A, 0xC3610F9E, 0x14D8A7B3, BSmartObject, IBLangPackage)
 public:
  using Answer = const wchar_t* (*)();
  explicit Package(Answer answer) : answer_(answer) {}
  const wchar_t* languageCode() const noexcept override { return L"de"; }
  const wchar_t* text(const wchar_t*, const wchar_t* source) const override {
    return std::wcscmp(source, L"Open") == 0 ? answer_() : nullptr;
  }

 private:
  Answer answer_;
};

class Translator : public testing::Test, public ILanguageListener {
  CORVIX_IDENTITY(Translator, 0x70A1BB32, 0x1C5D4E9F, 0x8E3602D7, 0xB94F7A10, ILanguageListener)

 protected:
  Translator() { testing_support::Descriptor().registerIn(*manager_); }
  int onLanguageChanged(IBTranslator& translator) override {
    told_ += testing_support::narrow(translator.language()) + " ";
    return notify::kGoOn;
  }
  const wchar_t* german(const wchar_t* text, const wchar_t* context = L"") {
    return translator_->translateIn(context, text);
  }

  OwnFolder folder_;
  KClassFactoryLocal factory_;
  struct : IUserAlert {
    void show(const std::wstring&, const wchar_t*) override {}
  } alert_;
  Ref<BSettings> settings_ = make<BSettings>();
  Ref<KPluginManager> manager_ = make<KPluginManager>(factory_, alert_, settings_);
  Ref<KTranslator> translator_ = make<KTranslator>(*manager_, *settings_, folder_.path().wstring());
  std::string told_;
};

TEST_F(Translator, ReadsFilesOfTexts) {
  std::filesystem::copy_file(CORVIX_GERMAN, folder_.file(L"brisvaneres.de"));
  EXPECT_TRUE(translator_->setLanguage(L"de-AT"));
  EXPECT_EQ(german(L"Work"), std::wstring(L"Arbeiten")) << "a sub-language has what the language has";
  EXPECT_EQ(german(L"Work", L"Toolbar.Main"), std::wstring(L"Los"));
  EXPECT_EQ(german(L"Work", L"Elsewhere"), std::wstring(L"Arbeiten"));
  const wchar_t own[] = L"Has none";
  EXPECT_EQ(german(own), own);
  EXPECT_EQ(german(nullptr), std::wstring());
  const wchar_t* const kept = german(L"Work");
  EXPECT_TRUE(translator_->setLanguage(L"fr"));
  EXPECT_EQ(german(L"Work"), std::wstring(L"Work"));
  EXPECT_EQ(kept, std::wstring(L"Arbeiten"));
  EXPECT_EQ(translator_->takeStock(), 1);
  KnownLanguage known;
  EXPECT_TRUE(translator_->knownAt(0, known));
  EXPECT_EQ(known.name, std::wstring(L"Deutsch"));
  EXPECT_FALSE(translator_->knownAt(1, known) || translator_->knownAt(-1, known));
}

TEST_F(Translator, FollowsTheSettingAndTellsListeners) {
  translator_->sender().addListener(this);
  struct Row {
    const wchar_t *stored, *code;
  };
  for (const Row& row : {Row{L"1031", L"de-DE"}, {L"tlh-Latn", L"tlh-Latn"}, {L"3079", L"de-AT"}}) {
    settings_->setValue(L"General", L"Language", row.stored);
    EXPECT_EQ(translator_->language(), std::wstring(row.code));
  }
  EXPECT_EQ(told_, "de-DE tlh-Latn de-AT ");
  for (const wchar_t* stored : {L"0", L"", L"99999999999", L"..\\..\\x", L"12345678"}) {
    settings_->setValue(L"General", L"Language", stored);
    EXPECT_NE(translator_->language(), std::wstring(L"de-AT")) << stored;
  }
  told_.clear();
  for (const wchar_t* code : {L"..\\de", L"de/x", L"de\x0416", L"a234567890123456789012345678901234"})
    EXPECT_FALSE(translator_->setLanguage(code));
  EXPECT_EQ(told_, "") << "and nothing has changed";
  EXPECT_TRUE(translator_->setLanguage(L"de"));
  Variant stored;
  settings_->getValue(L"General", L"Language", stored);
  EXPECT_EQ(stored.toInteger(), 1031);
  translator_->sender().removeListener(this);
}

TEST_F(Translator, ADeclaredPackageComesBeforeTheFileAndMayBeHostile) {
  static const std::wstring megabyte(1 << 20, L'x');
  std::filesystem::copy_file(CORVIX_GERMAN, folder_.file(L"brisvaneres.de"));
  struct Row {
    const wchar_t* wanted;
    Package::Answer answer;
  };
  for (const Row& row : {Row{L"Öffnen", [] { return L"Öffnen"; }},
                         {L"Open", []() -> const wchar_t* { return nullptr; }},
                         {L"Open", [] { return L""; }},
                         {L"Open", [] { return megabyte.c_str(); }},
                         {L"Open", []() -> const wchar_t* { throw 1; }}}) {
    auto& factory = static_cast<KClassFactoryLocal&>(*queryClassFactoryLocal());  // of this program as a module
    const auto manager = make<KPluginManager>(factory, alert_, settings_);
    testing_support::Descriptor().registerIn(*manager);
    manager->registerInstance(L"LangPackage.de", make<Package>(row.answer));
    const auto translator = make<KTranslator>(*manager, *settings_, folder_.path().wstring());
    translator->setLanguage(L"de");
    EXPECT_EQ(translator->translate(L"Open"), std::wstring(row.wanted));
    EXPECT_EQ(translator->translate(L"Work"), std::wstring(L"Arbeiten"));
    EXPECT_GE(translator->takeStock(), 2);
    factory.setInstance(L"LangPackage.de", {});
  }
}

// Translates one text.
class OneText final : public IBTranslator {
  CORVIX_IDENTITY(OneText, 0x5A03D9E1, 0x92C76B4F, 0x0E18F5A3, 0xB7426D9C, IBTranslator)
 public:
  explicit OneText(const wchar_t* text) : text_(text) {}
  const wchar_t* translate(const wchar_t*) override { return text_; }
  const wchar_t* translateIn(const wchar_t*, const wchar_t*) override { return text_; }
  const wchar_t* language() override { return L"de"; }
  bool setLanguage(const wchar_t*) override { return false; }
  i32 takeStock() override { return 0; }
  bool knownAt(i32, KnownLanguage&) const noexcept override { return false; }
  BNotifySender& sender() noexcept override { return sender_; }

 private:
  const wchar_t* text_;
  BNotifySender sender_;
};

TEST(Sentence, TakesATranslationWithTheSamePlaces) {
  const struct {
    const wchar_t *own, *other, *composed;
  } rows[] = {{L"Page %1 of %2", L"Seite %1 von %2", L"Seite a%2 von b"},
              {L"Page %1 of %2", L"von %2 die %1.", L"von b die a%2."},
              {L"Page %1 of %2", L"Seite %1", L"Page a%2 of b"},
              {L"Page %1 of %2", L"%1 %1 %2", L"Page a%2 of b"},
              {L"Page %1 of %2", L"%1 %2 %3", L"Page a%2 of b"},
              {L"Page %1 of %2", L"%1 % %2 %0 %", L"a%2 % b %0 %"},
              {L"%1 %", L"%1 Prozent", L"a%2 Prozent"},
              {L"No place", L"Kein %1", L"No place"},
              {L"%3 %9 %1%1", L"%3 %9 %1%1", L"%3 %9 a%2a%2"},
              {L"", L"", L""},
              {nullptr, L"", L""}};
  for (const auto& row : rows) {
    OneText translator(row.other);
    EXPECT_EQ(composeSentence(&translator, row.own, {L"a%2", L"b"}), row.composed) << row.other;
  }
  EXPECT_EQ(composeSentence(nullptr, L"Page %1", {L"1"}), L"Page 1");
}

TEST_F(Translator, LeavesOutFilesThatAreNone) {
  std::ofstream(folder_.file(L"brisvaneres.aa")) << "a text";
  std::filesystem::create_directory(folder_.file(L"brisvaneres.bb"));
  std::filesystem::copy_file(modulePath(nullptr), folder_.file(L"brisvaneres.cc"));
  for (const wchar_t* code : {L"aa", L"bb", L"cc", L"dd"}) {
    EXPECT_TRUE(translator_->setLanguage(code));
    EXPECT_EQ(translator_->translate(L"Work"), std::wstring(L"Work")) << code;
  }
  EXPECT_EQ(translator_->takeStock(), 0);
}

// The tree of a file of texts.
Ref<XMLNodeNode> language(const std::function<void(XMLNodeNode&)>& fill) {
  const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  const auto element = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Language");
  root->appendChild(element.get());
  fill(*element);
  return root;
}

void addText(XMLNodeNode& language, AttributeRows attributes) {
  const auto text = make<XMLNodeNode>(&language, XmlNodeType::Element, L"Text");
  addAttributes(*text, attributes);
  language.appendChild(text.get());
}

TEST(LanguageFile, TakesWhatHasBothTextsWithinTheLimits) {
  const std::wstring longest(LanguageFile::kLongestText, L'x'), tooLong = longest + L'x';
  LanguageFile file;
  const auto tree = language([&](XMLNodeNode& texts) {
    addText(texts, {{L"From", L"a"}, {L"To", L"1"}});
    addText(texts, {{L"From", L"a"}, {L"To", L"second"}});
    addText(texts, {{L"From", L"a"}, {L"To", L"2"}, {L"In", L"c"}});
    addText(texts, {{L"From", L"b"}, {L"To", longest.c_str()}});
    addText(texts, {{L"From", L"d"}, {L"To", tooLong.c_str()}});
    addText(texts, {{L"From", tooLong.c_str()}, {L"To", L"3"}});
    addText(texts, {{L"From", L"e"}});
    addText(texts, {{L"To", L"e"}});
  });
  EXPECT_TRUE(file.take(tree.get(), L"x"));
  EXPECT_EQ(file.count(), 3u);
  EXPECT_EQ(file.find(L"", L"a"), std::wstring(L"1"));
  EXPECT_EQ(file.find(L"c", L"a"), std::wstring(L"2"));
  EXPECT_EQ(file.find(L"", L"b"), longest);
  for (const wchar_t* none : {L"d", L"e", L""}) EXPECT_EQ(file.find(L"", none), nullptr) << none;
  EXPECT_FALSE(LanguageFile().take(nullptr, L"x"));
  EXPECT_FALSE(LanguageFile().take(language([](XMLNodeNode&) {}).get(), L"x"));
}

TEST(LanguageFile, TakesSoManyTextsAndNoMore) {
  LanguageFile file;
  std::wstring source;
  const auto tree = language([&](XMLNodeNode& texts) {
    for (std::size_t i = 0; i < LanguageFile::kMostTexts + 5; ++i) {
      source = std::to_wstring(i);
      addText(texts, {{L"From", source.c_str()}, {L"To", L"x"}});
    }
  });
  EXPECT_TRUE(file.take(tree.get(), L"x"));
  EXPECT_EQ(file.count(), LanguageFile::kMostTexts);
}

}  // namespace
}  // namespace corvix
