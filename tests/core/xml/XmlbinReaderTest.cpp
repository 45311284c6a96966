#include "core/xml/XmlbinReader.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include <windows.h>

#include "core/baselib/objects/Ref.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/Soak.h"

namespace corvix {
namespace {

// Writes blocks by hand, right or wrong.
class Block {
 public:
  Block() { bytes.assign("xmlbin\0\1\0\0", 10); }
  Block& word(i32 value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    return *this;
  }
  Block& units(std::wstring_view text) {
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return *this;
  }
  Block& string(std::wstring_view text) { return word(static_cast<i32>(text.size())).units(text); }
  Block& text(std::wstring_view name) { return word(0).string(name); }
  Block& element(std::wstring_view name, i32 count) { return word(2).string(name).word(count); }
  Block& attribute(std::wstring_view name, std::wstring_view value) { return word(3).string(name).string(value); }
  Block& raw(std::string_view more) {
    bytes += more;
    return *this;
  }
  std::string bytes;
};

// The block ends where readable memory ends: one byte read too many ends the test.
class Guarded {
 public:
  explicit Guarded(std::string_view bytes) {
    const std::size_t pages = (bytes.size() + kPage) / kPage + 1;
    base_ = static_cast<char*>(VirtualAlloc(nullptr, pages * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD old = 0;
    VirtualProtect(base_ + (pages - 1) * kPage, kPage, PAGE_NOACCESS, &old);
    start_ = base_ + (pages - 1) * kPage - bytes.size();
    std::memcpy(start_, bytes.data(), bytes.size());
    size_ = static_cast<u32>(bytes.size());
  }
  ~Guarded() { VirtualFree(base_, 0, MEM_RELEASE); }
  Ref<XMLNode> read() const { return Ref<XMLNode>::adopt(readXmlbin(start_, size_)); }

 private:
  static constexpr std::size_t kPage = 4096;
  char* base_;
  char* start_;
  u32 size_;
};

Ref<XMLNode> read(const Block& block) { return Guarded(block.bytes).read(); }

std::wstring show(const XMLNode& node) {
  std::wstring text(node.nameView());
  if (node.type() == XmlNodeType::Attribute) {
    text += L"=" + std::wstring(static_cast<const XMLNodeParam&>(node).valueView());
  } else if (node.type() == XmlNodeType::Element) {
    const auto& element = static_cast<const XMLNodeNode&>(node);
    text += L"(";
    for (i32 i = 0; i < element.childCount(); ++i) {
      text += (i ? L" " : L"") + show(*element.childAt(i));
    }
    text += L")";
  }
  return text;
}

struct GoodRow {
  const char* why;
  Block block;
  const wchar_t* tree;
};

TEST(XmlbinReader, Reads) {
  const GoodRow rows[] = {
      {"a text alone", Block().text(L"t"), L"t"},
      {"a comment alone", Block().word(1).string(L"c"), L"c"},
      {"an attribute as the root", Block().attribute(L"a", L"v"), L"a=v"},
      {"children keep their mixed order",
       Block().element(L"e", 3).attribute(L"a", L"1").element(L"f", 0).attribute(L"b", L"2"), L"e(a=1 f() b=2)"},
      {"a negative count is none", Block().element(L"e", -5), L"e()"},
      {"the smallest negative count", Block().element(L"e", INT32_MIN), L"e()"},
      {"bytes behind the root", Block().element(L"e", 0).raw("whatever"), L"e()"},
      {"back-references count every string, the empty one too",
       Block().element(L"A", 3).attribute(L"", L"v").word(3).word(-2).word(-1).word(0).word(-3), L"A(=v =A v)"},
      {"a back-reference adds nothing", Block().element(L"A", 3).word(0).word(-1).text(L"B").word(0).word(-2),
       L"A(A B B)"},
      {"-k with exactly k strings", Block().element(L"A", 1).word(3).string(L"B").word(-2), L"A(B=B)"},
  };
  for (const GoodRow& row : rows) {
    SCOPED_TRACE(row.why);
    const Ref<XMLNode> root = read(row.block);
    ASSERT_TRUE(root);
    EXPECT_EQ(show(*root), row.tree);
    EXPECT_EQ(root->refCount(), 0u);
  }
}

struct BadRow {
  const char* why;
  std::string bytes;
};

std::string patched(Block block, std::size_t at, char value) {
  block.bytes[at] = value;
  return block.bytes;
}

TEST(XmlbinReader, RefusesWhatIsMalformed) {
  const BadRow rows[] = {
      {"nothing", ""},
      {"a header alone", Block().bytes},
      {"nine bytes", Block().bytes.substr(0, 9)},
      {"another magic", patched(Block().text(L"t"), 5, 'N')},
      {"version 0x101", patched(Block().text(L"t"), 6, 1)},
      {"version 0x10100", patched(Block().text(L"t"), 8, 1)},
      {"version 0", patched(Block().text(L"t"), 7, 0)},
      {"type 4", Block().word(4).string(L"t").bytes},
      {"type -1", Block().word(-1).string(L"t").bytes},
      {"a name that is longer than what is left", Block().word(0).word(3).units(L"ab").bytes},
      {"fewer bytes than units, but more than half", Block().word(0).word(4).units(L"abc").bytes},
      {"the largest length", Block().word(0).word(INT32_MAX).units(L"ab").bytes},
      {"a back-reference before any string", Block().word(0).word(-1).bytes},
      {"a back-reference one too far", Block().element(L"A", 1).word(0).word(-2).bytes},
      {"the smallest back-reference", Block().word(0).word(INT32_MIN).bytes},
      {"no count", Block().word(2).string(L"e").bytes},
      {"one child short", Block().element(L"e", 2).text(L"t").bytes},
      {"two thousand million children", Block().element(L"e", INT32_MAX).text(L"t").bytes},
      {"an attribute without value", Block().word(3).string(L"a").bytes},
  };
  for (const BadRow& row : rows) EXPECT_FALSE(Guarded(row.bytes).read()) << row.why;
  EXPECT_EQ(readXmlbin(nullptr, 0), nullptr);
}

Block sample() {
  return Block()
      .element(L"root", 4)
      .attribute(L"a", L"one")
      .element(L"child", 2)
      .text(L"text")
      .word(3)
      .word(-1)
      .word(-2)
      .word(1)
      .string(L"comment")
      .element(L"last", 0);
}

TEST(XmlbinReader, EveryTruncationFailsAndStaysInside) {
  const std::string whole = sample().bytes;
  ASSERT_TRUE(Guarded(whole).read());
  for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(Guarded(whole.substr(0, size)).read()) << size;
}

TEST(XmlbinReader, DamagedBlocksNeverLeaveTheBlockNorMemoryBehind) {
  std::mt19937 random(11);
  const std::string whole = sample().bytes;
  Guarded(whole).read();
  const std::size_t blocks = testing_support::heapBlocksInUse();
  for (int i = 0; i < testing_support::soak(3000, 1000000); ++i) {
    std::string damaged = whole;
    for (int changes = 1 + i % 3; changes; --changes) {
      damaged[10 + random() % (damaged.size() - 10)] = static_cast<char>(random() % 4 ? random() % 8 : random());
    }
    Guarded(damaged).read();
  }
  EXPECT_EQ(testing_support::heapBlocksInUse(), blocks);
}

TEST(XmlbinReader, AMillionDeepIsReadAndReleased) {
  Block block;
  constexpr int kDepth = 1000000;
  block.bytes.reserve(kDepth * 12 + 64);
  block.word(2).string(L"e").word(1);
  for (int i = 1; i < kDepth; ++i) block.word(2).word(-1).word(1);
  const std::string cut = block.bytes;  // the innermost element lacks its child
  block.text(L"t");
  EXPECT_TRUE(Ref<XMLNode>::adopt(readXmlbin(block.bytes.data(), static_cast<u32>(block.bytes.size()))));
  EXPECT_EQ(readXmlbin(cut.data(), static_cast<u32>(cut.size())), nullptr);
}

// Names the node that goes, in the order of the going.
class Mourner : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Mourner, 0xA6E4B3C9, 0xA74E2BD1, 0xDC974064, 0x197E6842, BSmartObject, IDestroyListener)

 public:
  Mourner() { destroyNotifications().addListener(static_cast<IDestroyListener*>(this)); }
  ~Mourner() override { destroyNotifications().removeListener(static_cast<IDestroyListener*>(this)); }
  int onDestroy(IBRTTISupport* sender) override {
    const auto* const node = static_cast<XMLNode*>(sender->query(XMLNode::classInfo()));
    if (node) log += std::wstring(node->nameView()) + L" ";
    return notify::kGoOn;
  }
  std::wstring log;
};

TEST(XmlNode, ReleasingTheRootTellsOfParentsBeforeChildrenFirstToLast) {
  Mourner mourner;
  read(Block().element(L"a", 3).element(L"b", 1).text(L"c").text(L"d").element(L"e", 1).text(L"f"));
  EXPECT_EQ(mourner.log, L"a b c d e f ");
}

TEST(XmlNode, ChildrenKnowTheirParent) {
  const Ref<XMLNode> root = read(sample());
  auto& element = static_cast<XMLNodeNode&>(*root);
  EXPECT_EQ(root->parent(), nullptr);
  for (i32 i = 0; i < element.childCount(); ++i) EXPECT_EQ(element.childAt(i)->parent(), &element) << i;
}

TEST(XmlNode, AHeldChildOutlivesItsTree) {
  Ref<XMLNode> root = read(sample());
  auto& element = static_cast<XMLNodeNode&>(*root);
  const auto held = Ref<XMLNode>::share(element.childAt(1));
  const auto taken = Ref<XMLNode>::adopt(element.removeChild(0));
  Mourner mourner;
  root.reset();
  EXPECT_EQ(mourner.log, L"root comment last ");
  EXPECT_EQ(show(*held), L"child(text root=a)");
  EXPECT_EQ(show(*taken), L"a=one");
}

TEST(XmlNode, ChildrenAreInsertedMovedAndCounted) {
  auto parent = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"p");
  for (int i = 0; i < 20; ++i) {
    auto child = make<XMLNodeText>(parent.get(), XmlNodeType::Text, std::to_wstring(i));
    if (i % 2) {
      parent->appendChild(child.get());
    } else {
      parent->insertChild(child.get(), 0);
    }
    EXPECT_EQ(child->refCount(), 1u);
  }
  parent->appendChild(nullptr);
  const auto taken = Ref<XMLNode>::adopt(parent->removeChild(10));
  EXPECT_EQ(taken->name(), L"1");
  EXPECT_EQ(taken->parent(), parent.get());
  EXPECT_EQ(taken->refCount(), 0u);
  EXPECT_EQ(show(*parent), L"p(18 16 14 12 10 8 6 4 2 0 3 5 7 9 11 13 15 17 19)");
}

TEST(XmlNode, ChildrenComeAndGoAtBothEndsAndBetween) {
  std::mt19937 random(7);
  for (const u32 most : {3u, 12u, 60u}) {  // how many there mostly are
    const auto parent = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"p");
    std::vector<XMLNode*> expected;
    for (int step = 0; step < 600; ++step) {
      const i32 count = static_cast<i32>(expected.size());
      const bool adds = random() % most >= static_cast<u32>(count) / 2;
      const i32 last = adds ? count : count - 1;
      const i32 place = std::array<i32, 3>{0, last, static_cast<i32>(random()) % (last + 1)}[random() % 3];
      const i32 at = place < 0 ? -place : place;
      if (adds) {
        const auto child = make<XMLNodeText>(parent.get(), XmlNodeType::Text, L"c");
        parent->insertChild(child.get(), at);
        expected.insert(expected.begin() + at, child.get());
      } else {
        EXPECT_EQ(Ref<XMLNode>::adopt(parent->removeChild(at)).get(), expected[static_cast<std::size_t>(at)]);
        expected.erase(expected.begin() + at);
      }
      ASSERT_EQ(parent->childCount(), static_cast<i32>(expected.size()));
      for (i32 i = 0; i < parent->childCount(); ++i)
        ASSERT_EQ(parent->childAt(i), expected[static_cast<std::size_t>(i)]) << step;
    }
  }
}

// Trees that grew by hand go like those that were read: an arena's element may hold nodes that are none of its.
TEST(XmlNode, TreesOfBothKindsMix) {
  Ref<XMLNode> root = read(sample());
  auto& element = static_cast<XMLNodeNode&>(*root);
  {
    auto made = make<XMLNodeNode>(&element, XmlNodeType::Element, L"made");
    made->appendChild(make<XMLNodeParam>(made.get(), XmlNodeType::Attribute, L"k", L"v").get());
    made->appendChild(Ref<XMLNode>::adopt(element.removeChild(1)).get());
    element.appendChild(made.get());
  }
  EXPECT_EQ(show(*root), L"root(a=one comment last() made(k=v child(text root=a)))");
}

}  // namespace
}  // namespace corvix
