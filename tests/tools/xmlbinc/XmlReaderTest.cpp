#include "tests/tools/xmlbinc/XmlbincTesting.h"
#include "tools/xmlbinc/Limits.h"

#include <gtest/gtest.h>
#include <vector>

namespace corvix::xmlbinc {
namespace {

TEST(XmlReader, SaysWhereAndWhatIsWrong) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"", "1:1: there is no root element"},
      {" \n<!-- only -->\n", "3:1: there is no root element"},
      {"<a/>\n<b/>", "2:1: a second root element, \"b\"; a document has one"},
      {"<a/>x", "1:5: text outside of the root element"},
      {"<a/><![CDATA[x]]>", "1:14: text outside of the root element"},
      {"<a>\n <b>\n</a>", "3:1: closing tag of \"a\", but \"b\", opened in line 2, is to be closed first"},
      {"<a></A>", "1:4: closing tag of \"A\", but \"a\", opened in line 1, is to be closed first"},
      {"<a/></a>", "1:5: nothing is open that \"a\" could close"},
      {"<a>\n  <b>", "2:3: the element \"b\" is not closed"},
      {"<a b='1'\nb='2'/>", "2:1: the attribute \"b\" is given twice"},
      {"<a b='1'c='2'/>", "1:9: white space is missing before \"c\""},
      {"<a b=1/>", "1:6: an attribute's value is not in quotes"},
      {"<a b/>", "1:5: an attribute's name is not followed by \"=\""},
      {"<a / ></a>", "1:5: the tag goes on with neither an attribute nor its end"},
      {"<a b='1>", "1:6: the value is not ended by a quote"},
      {"<a b='1>\n<c/>", "2:1: \"<\" in the value that begins in line 1: write &lt;, or is the closing quote missing?"},
      {"<a 1='1'/>", "1:4: \"1\" is not a name"},
      {"<a'/><a'>", "1:2: \"a'\" is not a name"},
      {"<a b'='/>'/>", "1:5: a quote that begins no value; values are written name=\"value\""},
      {"<a>1 < 2</a>", "1:6: \"<\" without a name; write &lt; for the character"},
      {"<a\n<b/></a>", "2:1: \"<\" inside of the tag of \"a\"; is a \">\" missing?"},
      {"<a", "1:1: the tag is not ended by \">\""},
      {"<a>\xC3\xA9 &nbsp;</a>",
       "1:6: undefined entity \"&nbsp;\"; there are lt, gt, amp, quot, apos and character references such as &#160;"},
      {"<a b='x & y'/>", "1:9: \"&\" alone; write &amp;"},
      {"<a>x]]>y</a>", "1:5: \"]]>\" in a text; write ]]&gt;"},
      {"<a><!-- x -- y --></a>", "1:11: \"--\" inside of a comment"},
      {"<a><!-- x ---></a>", "1:11: a comment ending in \"-\""},
      {"<a><!-- x </a>", "1:4: the comment is not ended by \"-->\""},
      {"<a><![CDATA[ x </a>", "1:4: the CDATA section is not ended by \"]]>\""},
      {"<a><?x </a>", "1:4: the processing instruction is not ended by \"?>\""},
      {"<a><!ELEMENT b></a>", "1:4: \"<!\" begins neither a comment nor a CDATA section"},
      {"<!DOCTYPE a [<!ENTITY b 'c'>]><a/>", "1:1: document type declarations are not supported"},
      {" <?xml version='1.0'?><a/>",
       "1:2: an XML declaration, \"<?xml\", stands at the very start of a file or nowhere"},
      {"<a><?xml x=\"?></a>\"?></a>",
       "1:4: an XML declaration, \"<?xml\", stands at the very start of a file or nowhere"},
      {"<?xml encoding='utf-8'?><a/>", "1:1: the XML declaration does not begin with a version"},
      {"<?xml version='1.1'?><a/>", "1:16: XML version \"1.1\"; only 1.0 is supported"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>",
       "1:31: the file is UTF-8 but declares the encoding \"ISO-8859-1\"; UTF-8, and UTF-16 with a byte order "
       "mark, are supported"},
      {"<a>\n\xC3\xA9\xFF</a>", "2:2: not valid UTF-8; save the file as UTF-8"},
      {"<a>\xED\xA0\x80</a>", "1:4: not valid UTF-8; save the file as UTF-8"},
      {"<a>\xC0\xBC</a>", "1:4: not valid UTF-8; save the file as UTF-8"},
      {"<a>\r\nx\x01</a>", "2:2: the character U+0001 is not allowed in XML"},
      {std::string("<\0a\0/\0>\0", 8),
       "1:2: the character U+0000 is not allowed in XML; UTF-16 without a byte order mark is not recognised"},
      {std::string("\xFE\xFF\0<\xD8\0\0>", 8), "1:2: not valid UTF-16: half a surrogate pair"},
      {std::string("\xFF\xFE<\0a\0/\0>", 9), "1:4: not valid UTF-16: the file has an odd number of bytes"},
      {std::string(kMaxXmlBytes + 1, ' '), "1:1: too large: a descriptor has at most 8388608 bytes"},
  };
  for (const auto& [xml, error] : rows) EXPECT_EQ(compileError(xml), error) << xml.substr(0, 80);
  for (const std::string bad : {"&#0;", "&#xD800;", "&#x110000;", "&#x100000041;", "&#-65;", "&#;"})
    EXPECT_EQ(compileError("<a>" + bad + "</a>"), "1:4: \"" + bad + "\" refers to no character that XML allows");
}

TEST(XmlReader, TakesEveryEncodingToTheSameBlock) {
  const std::u16string text = u"<a b='\u00E9\U0001F600'>\r\n x</a>";
  const auto utf16 = [](std::u16string_view units, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char16_t unit : units)
      for (const bool first : {true, false}) bytes += static_cast<char>(first == bigEndian ? unit >> 8 : unit & 0xFF);
    return bytes;
  };
  const std::string utf8 = "<a b='\xC3\xA9\xF0\x9F\x98\x80'>\n x</a>";
  const std::string wanted = Bytes().element(u"a", 2).attribute(u"b", u"\u00E9\U0001F600").text(u"\n x").bytes();
  const std::string inputs[] = {
      "\xEF\xBB\xBF" + utf8,
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>" + utf8,
      "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\r\n" + utf8,
      utf16(text, false),
      utf16(text, true),
      utf16(u"<?xml version='1.0' encoding='UTF-16'?>" + text, false),
      utf16(u"<?xml version='1.0' encoding='utf-16be'?>" + text, true),
  };
  for (const std::string& input : inputs) EXPECT_EQ(compiled(input), wanted) << compileError(input);
  EXPECT_NE(compileError(utf16(u"<?xml version='1.0' encoding='UTF-8'?>" + text, false)), "");
  EXPECT_NE(compileError(utf16(u"<?xml version='1.0' encoding='UTF-16BE'?>" + text, false)), "");
}

}  // namespace
}  // namespace corvix::xmlbinc
