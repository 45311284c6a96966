#include "tools/xmlbinc/BlockWriter.h"

#include "tools/xmlbinc/BlockFormat.h"
#include "tools/xmlbinc/ByteWriter.h"

#include <string_view>
#include <unordered_map>

namespace corvix::xmlbinc {

namespace {

class BlockWriter {
 public:
  std::string run(const Tree& tree) {
    bytes_.u32(kBlockVersion);
    for (const Node& node : tree.nodes) {
      bytes_.u32(static_cast<std::uint32_t>(node.type));
      string(tree.name(node));
      if (node.type == NodeType::Element) bytes_.u32(node.childCount);
      if (node.type == NodeType::Attribute) string(tree.value(node));
    }
    return bytes_.take();
  }

 private:
  void string(std::u16string_view text) {
    const auto [known, isNew] = numbers_.try_emplace(text, static_cast<std::uint32_t>(numbers_.size() + 1));
    if (!isNew) {
      bytes_.u32(0U - known->second);
      return;
    }
    bytes_.u32(static_cast<std::uint32_t>(text.size()));
    bytes_.units(text);
  }

  ByteWriter bytes_{kBlockMagic};
  std::unordered_map<std::u16string_view, std::uint32_t> numbers_;
};

}  // namespace

std::string writeBlock(const Tree& tree) { return BlockWriter().run(tree); }

}  // namespace corvix::xmlbinc
