#include "tools/xmlbinc/PluginAttributes.h"

#include <algorithm>

namespace corvix::xmlbinc {

namespace {

class Copy {
 public:
  Copy(const Tree& tree, const NamedValues& values) : tree_(tree), values_(values) {}

  Tree run() {
    std::vector<std::uint32_t> ends;  // of the elements that are open
    for (std::uint32_t i = 0; i < tree_.nodes.size(); ++i) {
      const Node& node = tree_.nodes[i];
      for (; !ends.empty() && ends.back() == i; ends.pop_back()) builder_.closeElement();
      if (node.type != NodeType::Element) {
        if (!isReplaced(i)) builder_.addLeaf(node.type, string(node.name), value(node), node.offset);
        continue;
      }
      builder_.openElement(string(node.name), node.offset);
      ends.push_back(node.end);
      if (!plugin_ && ends.size() == 2 && tree_.name(node) == u"Plugin") {
        plugin_ = &node;
        for (const auto& [name, text] : values_) addAttribute(name, text, node.offset);
      }
    }
    for (; !ends.empty(); ends.pop_back()) builder_.closeElement();
    return builder_.take();
  }

 private:
  StringId string(StringId id) { return builder_.addString(tree_.strings[id]); }
  StringId value(const Node& node) { return node.type == NodeType::Attribute ? string(node.value) : 0; }

  void addAttribute(const std::u16string& name, const std::u16string& text, std::size_t offset) {
    const StringId id = builder_.addString(name);
    builder_.addLeaf(NodeType::Attribute, id, builder_.addString(text), offset);
  }

  bool isReplaced(std::uint32_t index) const {
    const Node& node = tree_.nodes[index];
    if (!plugin_ || node.type != NodeType::Attribute) return false;
    // The plugin's own attributes stand right behind it.
    for (const Node* before = &node; before != plugin_; --before) {
      if (before->type != NodeType::Attribute) return false;
    }
    return std::any_of(values_.begin(), values_.end(), [&](const auto& one) { return one.first == tree_.name(node); });
  }

  const Tree& tree_;
  const NamedValues& values_;
  const Node* plugin_ = nullptr;
  TreeBuilder builder_;
};

}  // namespace

Tree withPluginAttributes(const Tree& tree, const NamedValues& values) { return Copy(tree, values).run(); }

}  // namespace corvix::xmlbinc
