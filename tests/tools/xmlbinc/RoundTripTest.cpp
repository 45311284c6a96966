#include "tests/tools/xmlbinc/XmlbincTesting.h"

#include <gtest/gtest.h>

namespace corvix::xmlbinc {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

TEST(RoundTrip, CompilesDecompilesAndCompilesToTheSameBytes) {
  struct Row {
    std::string xml, back;  ///< without declaration and last line end
    const char* why;
  };
  const Row rows[] = {
      {"<a> \n <b/> </a>", "<a>\n  <b/>\n</a>", "white space between elements is layout"},
      {"<a>&#32;</a>", "<a>&#32;</a>", "a reference makes it text"},
      {"<a>&#9; \n</a>", "<a>&#9; \n</a>", "the first of several is enough"},
      {"<a><![CDATA[ ]]></a>", "<a>&#32;</a>", "so does a CDATA section"},
      {"<a><![CDATA[]]></a>", "<a><![CDATA[]]></a>", "an empty text"},
      {"<a> x </a>", "<a> x </a>", "other text keeps its blanks"},
      {"<a>x<![CDATA[<y>&]]>&amp;z</a>", "<a>x&lt;y&gt;&amp;&amp;z</a>", "CDATA and text are one"},
      {"<a>x<?pi y?>z</a>", "<a>xz</a>", "instructions are dropped without parting a text"},
      {"<a>x<!--y-->z</a>", "<a>x<!--y-->z</a>", "a comment parts texts"},
      {"<a>x<b> <c/></b>y</a>", "<a>x<b><c/></b>y</a>", "no layout is added around a text"},
      {"<a>]]&gt;</a>", "<a>]]&gt;</a>", "the end of CDATA as text"},
      {"<a>1\r\n2\r3\n4&#13;5</a>", "<a>1\n2\n3\n4&#13;5</a>", "line ends are one character"},
      {"<a b='\t\n\r\n'/>", "<a b=\"   \"/>", "white space in an attribute becomes blanks"},
      {"<a b='&#9;&#10;&#13;'/>", "<a b=\"&#9;&#10;&#13;\"/>", "unless it is referred to"},
      {"<a b='\"&lt;&amp;>&apos;'/>", "<a b=\"&quot;&lt;&amp;>'\"/>", "quotes and marks in an attribute"},
      {"<\xC3\xA9 b='\xF0\x9F\x98\x80'>&#x1F600;</\xC3\xA9>",
       "<\xC3\xA9 b=\"\xF0\x9F\x98\x80\">\xF0\x9F\x98\x80</\xC3\xA9>", "letters of two bytes and of two units"},
      {"<!--before--><a/><!--after-->", "<a/>", "comments outside of the root are dropped"},
      {"<a><!-- <b/> &amp; --></a>", "<a>\n  <!-- <b/> &amp; -->\n</a>", "a comment is taken as it is"},
      {"<a" + std::string(120, ' ') + "b='1'/>", "<a b=\"1\"/>", "blanks between attributes"},
      {"<a><b c='" + std::string(60, 'x') + "' d='" + std::string(60, 'y') + "'/></a>",
       "<a>\n  <b\n      c=\"" + std::string(60, 'x') + "\"\n      d=\"" + std::string(60, 'y') + "\"/>\n</a>",
       "many attributes stand on lines of their own"},
  };
  for (const Row& row : rows) {
    const std::string block = compiled(row.xml);
    const std::string back = decompiled(block);
    EXPECT_EQ(back, std::string(kDeclaration) + row.back + "\n") << row.why;
    EXPECT_EQ(compiled(back), block) << row.why;
  }
}

TEST(RoundTrip, EveryCharacterComesBackWhereverItStands) {
  for (const int c : {0x9, 0xA, 0xD, 0x20, 0x22, 0x26, 0x27, 0x3C, 0x3E, 0x5D, 0x7F, 0x85, 0xA0, 0xD7FF, 0xE000, 0xFEFF,
                      0xFFFD, 0x10000, 0x10FFFF}) {
    const std::string reference = "&#" + std::to_string(c) + ";";
    const std::string value = reference + "x" + reference + reference;
    const std::string block =
        compiled("<a b='" + value + "' c='" + reference + "'><d>" + value + "</d><d>" + reference + "</d></a>");
    EXPECT_EQ(compiled(decompiled(block)), block) << reference;
  }
}

TEST(RoundTrip, AsDeepAsXmlIsTaken) {
  for (const std::size_t depth : {1000U, 1001U, 1'000'000U}) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
    for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
    if (depth > 1000) {
      EXPECT_EQ(compileError(xml), "1:3001: nested too deeply: 1000 elements inside each other are the most");
    } else {
      EXPECT_EQ(compiled(decompiled(compiled(xml))), compiled(xml));
    }
  }
}

TEST(Decompile, RefusesWhatXmlCannotSay) {
  const std::u16string half(1, static_cast<char16_t>(0xD83D));
  const auto inA = [](int count = 1) { return Bytes().element(u"a", static_cast<std::uint32_t>(count)); };
  const std::pair<Bytes, const char*> rows[] = {
      {Bytes().text(u"x"), "10: the text \"x\" is the root, which in XML is an element"},
      {Bytes().attribute(u"x", u""), "10: the attribute \"x\" is the root, which in XML is an element"},
      {inA(2).text(u"x").text(u"y"), "34: the text \"y\" in \"a\" follows another text, which XML cannot say"},
      {inA(2).element(u"b", 0).attribute(u"x", u""),
       "38: the attribute \"x\" in \"a\" comes after other content of its element, which XML cannot say"},
      {inA(2).attribute(u"x", u"").attribute(u"x", u""), "38: the attribute \"x\" in \"a\" is given twice"},
      {Bytes().element(u"", 0), "10: the element \"\" has a name that is none in XML"},
      {Bytes().element(u"1", 0), "10: the element \"1\" has a name that is none in XML"},
      {inA().attribute(u"b c", u""), "24: the attribute \"b c\" in \"a\" has a name that is none in XML"},
      {inA().text(half), "24: the text \"\\uD83D\" in \"a\" holds half a surrogate pair"},
      {inA().attribute(u"b", half), "24: the attribute \"b\" in \"a\" holds half a surrogate pair"},
      {inA().text(std::u16string(1, u'\0')),
       "24: the text \"\\u0000\" in \"a\" holds a character that XML does not allow"},
      {inA().comment(u"--"), "24: the comment \"--\" in \"a\" holds \"--\" or ends in \"-\""},
      {inA().comment(u"x-"), "24: the comment \"x-\" in \"a\" holds \"--\" or ends in \"-\""},
      {inA().comment(u"\r"), "24: the comment \"\\u000D\" in \"a\" holds a carriage return"},
  };
  for (const auto& [block, error] : rows) EXPECT_EQ(decompileError(block.bytes()), error);
}

}  // namespace
}  // namespace corvix::xmlbinc
