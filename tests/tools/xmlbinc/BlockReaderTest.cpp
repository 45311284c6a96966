#include "tests/tools/xmlbinc/XmlbincTesting.h"

#include <gtest/gtest.h>

namespace corvix::xmlbinc {
namespace {

TEST(BlockWriter, LaysNodesOutInDocumentOrder) {
  const std::string block = compiled("<a n='v'>t<!--c--><b/></a>");
  EXPECT_EQ(block, Bytes().element(u"a", 4).attribute(u"n", u"v").text(u"t").comment(u"c").element(u"b", 0).bytes());
}

TEST(BlockWriter, RefersToEarlierStringsByTheirNumber) {
  struct Row {
    const char* xml;
    std::string block;
    const char* why;
  };
  const Row rows[] = {
      {"<a><a/></a>", Bytes().element(u"a", 1).u32(2).back(1).u32(0).bytes(), "the first string is -1"},
      {"<a b='a' c='b'/>", Bytes().element(u"a", 2).u32(3).string(u"b").back(1).u32(3).string(u"c").back(2).bytes(),
       "names and values share one table, references add nothing to it"},
      {"<a b='' c='' d='d'/>",
       Bytes().element(u"a", 3).attribute(u"b", u"").u32(3).string(u"c").back(3).u32(3).string(u"d").back(5).bytes(),
       "the empty string has a number too"},
      {"<a>b<b/></a>", Bytes().element(u"a", 2).text(u"b").u32(2).back(2).u32(0).bytes(), "texts count as well"},
      {"<a A='a'/>", Bytes().element(u"a", 1).u32(3).string(u"A").back(1).bytes(), "the case of letters counts"},
  };
  for (const Row& row : rows) EXPECT_EQ(compiled(row.xml), row.block) << row.xml << ": " << row.why;
}

TEST(BlockReader, ReadsWhatOtherWritersMayWrite) {
  struct Row {
    std::string block;
    const char *root, *why;
  };
  const Row rows[] = {
      {Bytes().element(u"a", 1).element(u"a", 0).bytes(), "<a>\n  <a/>\n</a>", "a string written out twice"},
      {Bytes().element(u"a", 0x80000000).bytes(), "<a/>", "a negative count means no children"},
      {Bytes().element(u"a", 2).attribute(u"b", u"").u32(3).string(u"c").back(3).bytes(), "<a b=\"\" c=\"\"/>",
       "a reference to the empty string"},
      {Bytes().element(u"a", 0).bytes() + "rest", "<a/>", "bytes behind the root"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(decompiled(row.block), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + std::string(row.root) + "\n")
        << row.why;
  }
}

TEST(BlockReader, NamesTheByteAtWhichABlockIsWrong) {
  const std::string header = Bytes().bytes();
  const std::pair<std::string, const char*> rows[] = {
      {"", "0: no block: it does not begin with \"xmlbin\""},
      {"XMLBIN" + header.substr(6), "0: no block: it does not begin with \"xmlbin\""},
      {"xmlbin", "6: the block ends in the version"},
      {std::string("xmlbin\1\1\0\0", 10), "6: the version is not 256"},
      {header, "10: the block ends in a node's type"},
      {Bytes().u32(4).string(u"a").bytes(), "10: node type 4; there are 0 to 3"},
      {Bytes().u32(2).bytes(), "14: the block ends in a string's length"},
      {Bytes().u32(2).u32(1).bytes() + "a", "14: string length 1, but only 1 bytes are left"},
      {Bytes().u32(2).u32(0x7FFFFFFF).bytes(), "14: string length 2147483647, but only 0 bytes are left"},
      {Bytes().u32(2).string(u"a").bytes(), "20: the block ends in a child count"},
      {Bytes().element(u"a", 1).bytes(), "20: child count 1, but only 0 bytes are left"},
      {Bytes().element(u"a", 0x7FFFFFFF).text(u"b").bytes(), "20: child count 2147483647, but only 10 bytes are left"},
      {Bytes().element(u"a", 1).u32(3).string(u"b").u32(9).bytes(), "34: string length 9, but only 0 bytes are left"},
      {Bytes().u32(2).back(1).bytes(), "14: reference to string 1, but only 0 were before it"},
      {Bytes().element(u"a", 1).u32(3).back(1).back(2).bytes(), "32: reference to string 2, but only 1 were before it"},
      {Bytes().element(u"a", 1).u32(1).u32(0x80000000).bytes(),
       "28: reference to string 2147483648, but only 1 were before it"},
  };
  for (const auto& [block, error] : rows) EXPECT_EQ(decompileError(block), error);
}

TEST(BlockReader, EveryTruncationIsAnError) {
  const std::string block = compiled("<a n='v' m='n'>text<!--c--><b><n/></b></a>");
  for (std::size_t size = 0; size < block.size(); ++size) {
    EXPECT_THROW(readBlock(std::string_view(block).substr(0, size)), InputError) << size;
  }
}

TEST(BlockReader, SurvivesAMillionNestedElements) {
  Bytes block;
  block.element(u"a", 1);
  for (int i = 2; i < 1'000'000; ++i) block.u32(2).back(1).u32(1);
  EXPECT_NE(decompileError(block.bytes()).find("child count 1, but only 0"), std::string::npos);
  const std::string closed = block.text(u"").bytes();
  EXPECT_EQ(readBlock(closed).tree.nodes.size(), 1'000'000U);
  EXPECT_NE(decompileError(closed).find("nested too deeply"), std::string::npos);
}

TEST(BlockReader, RepeatedReferencesDoNotMultiplyMemory) {
  constexpr std::uint32_t kRepeats = 100'000;
  Bytes block;
  block.element(u"a", kRepeats).text(std::u16string(100'000, u'x'));
  for (std::uint32_t i = 1; i < kRepeats; ++i) block.u32(1).back(2);
  const Block read = readBlock(block.bytes());
  EXPECT_EQ(read.tree.nodes.size(), kRepeats + 1);
  EXPECT_EQ(read.tree.strings.size(), 2U);
  EXPECT_NE(decompileError(block.bytes()).find("too large"), std::string::npos);
}

}  // namespace
}  // namespace corvix::xmlbinc
