// The plug-in format-text, as programs see it.
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/TextSource.h"
#include "shell/history/StateList.h"
#include "shell/services/Report.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"
#include "tests/support/Soak.h"

#include <gtest/gtest.h>

#include <random>

namespace corvix {
namespace {

using namespace testing_support;
using Editor = ITextEditor;

class TextFormatTest : public testing::Test {
 protected:
  TextFormatTest() { shell().stateHistory(); }
  void TearDown() override {
    while (manager.documentCount()) ASSERT_TRUE(manager.closeDocument(manager.documentAt(0)));
  }
  IDocument* open(const wchar_t* name, std::string_view bytes) {
    std::ofstream(folder.file(name), std::ios::binary) << bytes;
    return manager.openDocument(folder.file(name).c_str());
  }
  std::string saved(IDocument* document) {
    query<Editor>(document)->setEncoding(query<Editor>(document)->encoding());
    EXPECT_TRUE(manager.saveDocument(document)) << report();
    return bytesOf(document->location());
  }
  std::string report() { return narrow(reportText(*manager.report()).view()); }
  static std::wstring textOf(IDocument* document) {
    const ITextSource& source = *query<ITextSource>(document);
    std::wstring text(source.textLength() + 8, L'#');
    text.resize(source.copyText(0, ~0u, text.data()));
    return text;
  }

  OwnFolder folder;
  IDocManager& manager = *shell().docManager();
};

TEST_F(TextFormatTest, KeepsEncodingMarkAndLineEnds) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view bytes;
    const wchar_t* text;
    i32 encoding;
    i32 lineEnd;
  } rows[] = {
      {"", L"", Editor::kUtf8, Editor::kLf},
      {"a\nb", L"a\nb", Editor::kUtf8, Editor::kLf},
      {"a\r\nb\r\n", L"a\nb\n", Editor::kUtf8, Editor::kCrLf},
      {"a\rb\r", L"a\nb\n", Editor::kUtf8, Editor::kCr},
      {"\r\r\n\n\n\r", L"\n\n\n\n\n", Editor::kUtf8, Editor::kMixed},
      {"\xC3\xA9\xF0\x9F\x98\x80", L"\x00E9\xD83D\xDE00", Editor::kUtf8, Editor::kLf},
      {"\xEF\xBB\xBF"
       "a\n",
       L"a\n", Editor::kUtf8Marked, Editor::kLf},
      {"\xEF\xBB\xBF", L"", Editor::kUtf8Marked, Editor::kLf},
      {"\xFF\xFE"
       "a\0\r\0\n\0\x3D\xD8\x00\xDE"sv,
       L"a\n\xD83D\xDE00", Editor::kUtf16LittleMarked, Editor::kCrLf},
      {"\xFE\xFF\0a\0\n"sv, L"a\n", Editor::kUtf16BigMarked, Editor::kLf},
      {"a\0b\0"sv, L"ab", Editor::kUtf16Little, Editor::kLf},
      {"\0a\0b"sv, L"ab", Editor::kUtf16Big, Editor::kLf},
      {"\xFF\xFE\x3D\xD8"sv, L"\xD83D", Editor::kUtf16LittleMarked, Editor::kLf},  // half a character
      {"caf\xE9", L"caf\x00E9", Editor::kAnsi, Editor::kLf},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    IDocument* const document = open(L"x.txt", row.bytes);
    ASSERT_TRUE(document) << report();
    Editor& editor = *query<Editor>(document);
    EXPECT_EQ(textOf(document), row.text);
    EXPECT_EQ(editor.encoding(), row.encoding);
    EXPECT_EQ(editor.lineEnd(), row.lineEnd);
    EXPECT_EQ(saved(document), row.bytes);
    EXPECT_TRUE(editor.replaceText(0, 0, L"\r\n", 2) && document->isModified() && document->history()->goBack());
    EXPECT_TRUE(!document->isModified() && saved(document) == row.bytes);
    manager.closeDocument(document);
  }
  IDocument* const document = open(L"x.txt", "\xC3\xA9\r\n\xF0\x9F\x98\x80\n");
  Editor& editor = *query<Editor>(document);
  const std::pair<i32, std::string_view> ways[] = {{Editor::kUtf16Big, "\0\xE9\0\r\xD8\x3D\xDE\x00\0\r"sv},
                                                   {Editor::kUtf8Marked, "\xEF\xBB\xBF\xC3\xA9\r\xF0\x9F\x98\x80\r"}};
  EXPECT_TRUE(editor.setLineEnd(Editor::kCr) && !editor.setLineEnd(Editor::kMixed) && !editor.setEncoding(99));
  for (const auto& [encoding, bytes] : ways) {
    EXPECT_TRUE(editor.setEncoding(encoding) && document->isModified());
    EXPECT_EQ(saved(document), bytes);
  }
  editor.setEncoding(Editor::kAnsi);
  EXPECT_FALSE(manager.saveDocument(document));
  EXPECT_NE(report().find("save it as UTF-8"), std::string::npos) << report();
}

TEST_F(TextFormatTest, RefusesWhatIsNoText) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, const char*> rows[] = {
      {"a\0bcdef"sv, "Text: it is none of these"},
      {"\0\1\2\3"sv, "Text: it is none of these"},
      {"\xFF\xFE"
       "a"sv,
       "ends in the middle of a unit"},
      {"\xFF\xFE\0\0"sv, "there are zeros in it"},
  };
  for (const auto& [bytes, why] : rows) {
    EXPECT_FALSE(open(L"x.txt", bytes));
    EXPECT_NE(report().find(why), std::string::npos) << report();
  }
  const std::string late(5000, 'x');
  EXPECT_FALSE(open(L"y.txt", late + '\0'));
}

// Against a text that is edited by plain means, and its stands as the history has them.
TEST_F(TextFormatTest, GoesBackAndForwardThroughAnyEdits) {
  IDocument* const document = open(L"x.txt", "one\r\ntwo\nthree\rfour");
  Editor& editor = *query<Editor>(document);
  ITextSource& source = *query<ITextSource>(document);
  IStateList& history = *document->history();
  struct Copy final : ITextListener {
    int onTextChanged(ITextSource& from, u32 at, u32 removed, u32 inserted) override {
      std::wstring put(inserted, 0);
      from.copyText(at, inserted, put.data());
      text.replace(at, removed, put);
      return notify::kGoOn;
    }
    std::wstring text;
  } copy;
  copy.text = textOf(document);
  source.textSender().addListener(&copy);
  const std::string bytes = saved(document);
  const std::wstring pieces[] = {L"", L"x", L" ", L"\n", L"a\r\nb\n", L"\xD83D\xDE00", L"much more of it"};
  std::mt19937 random(5);
  for (int i = 0; i < soak(3000, 100000); ++i) {
    const unsigned what = random() % 10;
    const auto from = random() % (source.textLength() + 2);
    if (what < 2) {
      history.goBack();
    } else if (what < 3) {
      history.goForward();
    } else {
      const std::wstring& piece = pieces[random() % std::size(pieces)];
      ASSERT_TRUE(
          editor.replaceText(static_cast<u32>(from), random() % 4, piece.c_str(), static_cast<u32>(piece.size())));
    }
    ASSERT_EQ(textOf(document), copy.text);
    if (i % 50) continue;
    u32 line = 0;
    for (u32 at = 0; at < copy.text.size(); ++at) {
      ASSERT_EQ(source.lineOf(at), line);
      line += copy.text[at] == L'\n';
      if (at && copy.text[at] >= 0xDC00 && copy.text[at] <= 0xDFFF) {
        ASSERT_TRUE(copy.text[at - 1] >= 0xD800 && copy.text[at - 1] <= 0xDBFF) << "half a character";
      }
    }
    ASSERT_EQ(source.lineCount(), line + 1);
    ASSERT_EQ(source.lineStart(line + 1), source.textLength());
  }
  source.textSender().removeListener(&copy);
  while (history.goBack()) {
  }
  EXPECT_TRUE(!document->isModified() && saved(document) == bytes);
}

TEST_F(TextFormatTest, MergesWhatIsTypedIntoWordsAndLines) {
  IDocument* const document = manager.newDocument(L"DocFormat.Text");
  ASSERT_TRUE(document) << report();
  Editor& editor = *query<Editor>(document);
  IStateList& history = *document->history();
  const auto steps = [&] {
    std::vector<std::wstring> stands;
    while (history.goBack()) stands.push_back(textOf(document));
    while (history.goForward()) {
    }
    return stands;
  };
  const std::wstring typed = L"two words\nline";
  for (u32 i = 0; i < typed.size(); ++i) editor.replaceText(i, 0, &typed[i], 1);
  EXPECT_EQ(steps(), (std::vector<std::wstring>{L"two words\n", L"two words", L"two ", L""}));
  EXPECT_STREQ(history.backText(), L"typing");
  for (u32 i = 0; i < 3; ++i) editor.replaceText(static_cast<u32>(typed.size()) - 1 - i, 1, nullptr, 0);
  editor.replaceText(0, 3, L"three", 5);
  EXPECT_EQ(steps().size(), 6u);
  EXPECT_EQ(steps()[1], typed);
  EXPECT_EQ(textOf(document), L"three words\nl");
}

TEST_F(TextFormatTest, ReadsHeadingsOutOfMarkdownAndWritesPages) {
  IDocument* const document =
      open(L"x.md",
           "# One *two* `three`\n\ntext <b> [x](javascript:alert)\n\nFour\n====\n\n    # code\n\n### Six & seven\n");
  ASSERT_TRUE(document) << report();
  IOutline& outline = *query<IOutline>(document);
  std::string all;
  for (i32 i = 0; i < outline.headingCount(); ++i)
    all += std::to_string(outline.headingLevel(i)) + narrow(outline.headingText(i)) + '@' +
           std::to_string(outline.headingPlace(i)) + ' ';
  EXPECT_EQ(all, "1One two three@0 1Four@53 3Six & seven@76 ");
  EXPECT_FALSE(outline.headingText(-1) || outline.headingText(3) || outline.headingLevel(3));
  const auto page = folder.file(L"x.html");
  EXPECT_TRUE(manager.saveDocumentAs(document, page.c_str(), nullptr)) << report();
  EXPECT_NE(bytesOf(page).find("<title>One two three</title>"), std::string::npos);
  EXPECT_NE(bytesOf(page).find("<h1>One <em>two</em> <code>three</code></h1>"), std::string::npos);
  EXPECT_EQ(bytesOf(page).find("javascript"), std::string::npos);
  EXPECT_EQ(bytesOf(page).find("<b>"), std::string::npos);
  EXPECT_STREQ(document->title(), L"x.md") << "a page is a copy";
  query<Editor>(document)->replaceText(0, 0, L"# New\n\n", 7);
  EXPECT_STREQ(outline.headingText(0), L"New");
  ASSERT_TRUE(open(L"plain.txt", "1 < 2 & 3"));
  EXPECT_TRUE(manager.saveDocumentAs(manager.activeDocument(), page.c_str(), nullptr)) << report();
  EXPECT_NE(bytesOf(page).find("<title>plain.txt</title>\n</head>\n<body>\n<pre>\n1 &lt; 2 &amp; 3</pre>"),
            std::string::npos);
}

TEST_F(TextFormatTest, TakesMarkdownThatIsMadeToHurt) {
  const auto repeated = [](const char* what, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += what;
    return text;
  };
  for (const char* const piece : {"> ", "[", "*a **", "# ", "- ", "![](", "`", "<", "&#0;"}) {
    IDocument* const document = open(L"x.md", repeated(piece, 20000));
    ASSERT_TRUE(document) << report();
    query<IOutline>(document)->headingCount();
    EXPECT_TRUE(manager.saveDocumentAs(document, folder.file(L"x.html").c_str(), nullptr)) << piece << report();
    manager.closeDocument(document);
  }
}

}  // namespace
}  // namespace corvix
