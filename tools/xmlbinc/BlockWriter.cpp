#include "tools/xmlbinc/BlockWriter.h"

#include "tools/xmlbinc/BlockFormat.h"

#include <string_view>
#include <unordered_map>

namespace corvix::xmlbinc {

namespace {

class BlockWriter {
 public:
  std::string run(const Tree& tree) {
    bytes_ = kBlockMagic;
    u32(kBlockVersion);
    for (const Node& node : tree.nodes) {
      u32(static_cast<std::uint32_t>(node.type));
      string(tree.name(node));
      if (node.type == NodeType::Element) u32(node.childCount);
      if (node.type == NodeType::Attribute) string(tree.value(node));
    }
    return std::move(bytes_);
  }

 private:
  void u16(std::uint32_t value) {
    bytes_ += static_cast<char>(value & 0xFF);
    bytes_ += static_cast<char>(value >> 8 & 0xFF);
  }

  void u32(std::uint32_t value) {
    u16(value & 0xFFFF);
    u16(value >> 16);
  }

  void string(std::u16string_view text) {
    const auto [known, isNew] = numbers_.try_emplace(text, static_cast<std::uint32_t>(numbers_.size() + 1));
    if (!isNew) {
      u32(0U - known->second);
      return;
    }
    u32(static_cast<std::uint32_t>(text.size()));
    for (const char16_t unit : text) u16(unit);
  }

  std::string bytes_;
  std::unordered_map<std::u16string_view, std::uint32_t> numbers_;
};

}  // namespace

std::string writeBlock(const Tree& tree) { return BlockWriter().run(tree); }

}  // namespace corvix::xmlbinc
