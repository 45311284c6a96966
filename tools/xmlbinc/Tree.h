// The node tree between the two forms of a descriptor, XML text and binary block.
// Nodes stand in document order, an element before its children: walking, writing and releasing a tree needs no
// recursion, however deep it is. Strings are held once per table entry, so a block that repeats a long string by
// reference costs no more memory here than it does on disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace corvix::xmlbinc {

/// The values are those of the block.
enum class NodeType : std::uint8_t { Text = 0, Comment = 1, Element = 2, Attribute = 3 };

using StringId = std::uint32_t;

struct Node {
  NodeType type;
  StringId name;             ///< text and comments: their text
  StringId value;            ///< attributes only
  std::uint32_t childCount;  ///< elements only: direct children of every type
  std::uint32_t end;         ///< index of the first node behind this one and everything in it
  std::uint32_t offset;      ///< where it began in what was read, in bytes
};

struct Tree {
  std::vector<std::u16string> strings;
  std::vector<Node> nodes;

  const std::u16string& name(const Node& node) const { return strings[node.name]; }
  const std::u16string& value(const Node& node) const { return strings[node.value]; }
};

/// Appends nodes in document order; elements are opened and closed as they come.
class TreeBuilder {
 public:
  StringId addString(std::u16string text) {
    tree_.strings.push_back(std::move(text));
    return static_cast<StringId>(tree_.strings.size() - 1);
  }

  void addLeaf(NodeType type, StringId name, StringId value, std::size_t offset) {
    push(type, name, value, offset);
    tree_.nodes.back().end = nextIndex();
  }

  void openElement(StringId name, std::size_t offset) {
    push(NodeType::Element, name, 0, offset);
    open_.push_back(nextIndex() - 1);
  }

  void closeElement() {
    tree_.nodes[open_.back()].end = nextIndex();
    open_.pop_back();
  }

  const std::u16string& string(StringId id) const { return tree_.strings[id]; }
  bool empty() const { return tree_.nodes.empty(); }
  Tree take() { return std::move(tree_); }

 private:
  std::uint32_t nextIndex() const { return static_cast<std::uint32_t>(tree_.nodes.size()); }

  void push(NodeType type, StringId name, StringId value, std::size_t offset) {
    if (!open_.empty()) ++tree_.nodes[open_.back()].childCount;
    tree_.nodes.push_back({type, name, value, 0, 0, static_cast<std::uint32_t>(offset)});
  }

  Tree tree_;
  std::vector<std::uint32_t> open_;
};

}  // namespace corvix::xmlbinc
