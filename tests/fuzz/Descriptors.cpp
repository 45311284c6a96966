// Binary descriptors: the library's reader and the compiler's take the same blocks for the same trees.
#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlbinReader.h"
#include "tests/fuzz/Fuzz.h"
#include "tools/xmlbinc/BlockReader.h"
#include "tools/xmlbinc/InputError.h"

#include <optional>
#include <vector>

namespace corvix::fuzz {

namespace {

bool same(std::wstring_view a, const std::u16string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, char16_t y) { return x == y; });
}

// Both trees in document order, side by side.
void compare(const XMLNode& root, const xmlbinc::Tree& tree) {
  std::vector<const XMLNode*> open{&root};
  for (const xmlbinc::Node& node : tree.nodes) {
    require(!open.empty(), "the library's tree has as many nodes as the compiler's");
    const XMLNode& own = *open.back();
    open.pop_back();
    require(static_cast<u32>(own.type()) == static_cast<u32>(node.type), "nodes have the same type");
    require(same(own.nameView(), tree.name(node)), "nodes have the same name");
    if (own.type() == XmlNodeType::Attribute) {
      require(same(static_cast<const XMLNodeParam&>(own).valueView(), tree.value(node)),
              "attributes have the same value");
    } else if (own.type() == XmlNodeType::Element) {
      const auto& element = static_cast<const XMLNodeNode&>(own);
      require(static_cast<u32>(element.childCount()) == node.childCount, "elements have as many children");
      for (i32 i = element.childCount(); i > 0; --i) open.push_back(element.childAt(i - 1));
    }
  }
  require(open.empty(), "the library's tree has no more nodes than the compiler's");
}

}  // namespace

void descriptors(Bytes bytes) {
  const auto root = Ref<XMLNode>::adopt(readXmlbin(bytes.data(), static_cast<u32>(bytes.size())));
  std::optional<xmlbinc::Block> block;
  try {
    block = xmlbinc::readBlock({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  } catch (const xmlbinc::InputError&) {
  }
  require(static_cast<bool>(root) == block.has_value(), "both take the block or both refuse it");
  if (root) compare(*root, block->tree);
}

}  // namespace corvix::fuzz
