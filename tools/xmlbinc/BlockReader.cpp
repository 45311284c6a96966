#include "tools/xmlbinc/BlockReader.h"

#include "tools/xmlbinc/BlockFormat.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/Limits.h"

#include <string>
#include <vector>

namespace corvix::xmlbinc {

namespace {

class BlockReader {
 public:
  explicit BlockReader(std::string_view bytes) : bytes_(bytes) {}

  Block run() {
    if (bytes_.size() > kMaxBlockBytes) {
      throw InputError(0, "too large: a block has at most " + std::to_string(kMaxBlockBytes) + " bytes");
    }
    if (!bytes_.starts_with(kBlockMagic)) throw InputError(0, "no block: it does not begin with \"xmlbin\"");
    at_ = kBlockMagic.size();
    if (u32("the version") != kBlockVersion) {
      throw InputError(kBlockMagic.size(), "the version is not " + std::to_string(kBlockVersion));
    }
    do {
      node();
      while (!childrenLeft_.empty() && childrenLeft_.back() == 0) {
        childrenLeft_.pop_back();
        builder_.closeElement();
      }
    } while (!childrenLeft_.empty());
    return {builder_.take(), at_};
  }

 private:
  std::size_t left() const { return bytes_.size() - at_; }

  std::uint32_t u32(const char* what) {
    if (left() < 4) throw InputError(at_, std::string("the block ends in ") + what);
    std::uint32_t value = 0;
    for (unsigned i = 0; i < 4; ++i)
      value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes_[at_++])) << 8 * i;
    return value;
  }

  void node() {
    if (!childrenLeft_.empty()) --childrenLeft_.back();
    const std::size_t offset = at_;
    const std::uint32_t type = u32("a node's type");
    if (type > static_cast<std::uint32_t>(NodeType::Attribute)) {
      throw InputError(offset, "node type " + std::to_string(type) + "; there are 0 to 3");
    }
    const StringId name = string();
    switch (static_cast<NodeType>(type)) {
      case NodeType::Element:
        builder_.openElement(name, offset);
        childrenLeft_.push_back(count());
        break;
      case NodeType::Attribute: {
        const StringId value = string();
        builder_.addLeaf(NodeType::Attribute, name, value, offset);
        break;
      }
      default:
        builder_.addLeaf(static_cast<NodeType>(type), name, 0, offset);
    }
  }

  /// Negative counts mean none.
  std::uint32_t count() {
    const std::size_t offset = at_;
    const auto children = static_cast<std::int32_t>(u32("a child count"));
    if (children <= 0) return 0;
    if (static_cast<std::uint32_t>(children) > left() / kSmallestNodeBytes) {
      throw InputError(offset, "child count " + std::to_string(children) + ", but only " + std::to_string(left()) +
                                   " bytes are left");
    }
    return static_cast<std::uint32_t>(children);
  }

  StringId string() {
    const std::size_t offset = at_;
    const std::uint32_t n = u32("a string's length");
    if (n > 0x7FFFFFFF) return reference(0U - n, offset);
    if (n > left() / 2) {
      throw InputError(
          offset, "string length " + std::to_string(n) + ", but only " + std::to_string(left()) + " bytes are left");
    }
    std::u16string text(n, u'\0');
    for (char16_t& unit : text) {
      const auto low = static_cast<unsigned char>(bytes_[at_]);
      const auto high = static_cast<unsigned char>(bytes_[at_ + 1]);
      unit = static_cast<char16_t>(high << 8 | low);
      at_ += 2;
    }
    ++stringsRead_;
    return builder_.addString(std::move(text));
  }

  /// `number` counts from 1; strings stand in the tree's table in the block's order.
  StringId reference(std::uint32_t number, std::size_t offset) const {
    if (number > stringsRead_) {
      throw InputError(offset, "reference to string " + std::to_string(number) + ", but only " +
                                   std::to_string(stringsRead_) + " were before it");
    }
    return number - 1;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::uint32_t stringsRead_ = 0;
  std::vector<std::uint32_t> childrenLeft_;
  TreeBuilder builder_;
};

}  // namespace

Block readBlock(std::string_view bytes) { return BlockReader(bytes).run(); }

}  // namespace corvix::xmlbinc
