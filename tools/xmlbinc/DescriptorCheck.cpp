#include "tools/xmlbinc/DescriptorCheck.h"

#include "tools/xmlbinc/Suggestion.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace corvix::xmlbinc {

namespace {

class DescriptorCheck {
 public:
  explicit DescriptorCheck(const Tree& tree) : tree_(tree) {}

  std::vector<Warning> run() {
    const ElementRule& root = descriptorRules().front();
    const Element element = elementAt(0);
    if (element.name != root.name) {
      findings_.warn(element.offset, "the root element is " + quoted(element.name) + ", not " + quoted(root.name));
    }
    check(0, element, root);
    std::stable_sort(findings_.warnings.begin(), findings_.warnings.end(),
                     [](const Warning& a, const Warning& b) { return a.offset < b.offset; });
    return std::move(findings_.warnings);
  }

 private:
  Element elementAt(std::uint32_t index) const {
    const Node& node = tree_.nodes[index];
    Element element{utf8(node.name), node.offset, {}};
    for (std::uint32_t i = index + 1; i < node.end && tree_.nodes[i].type == NodeType::Attribute; ++i) {
      const Node& attribute = tree_.nodes[i];
      element.attributes.push_back({utf8(attribute.name), utf8(attribute.value), attribute.offset});
    }
    return element;
  }

  std::string utf8(StringId id) const { return toUtf8(tree_.strings[id]).value_or(""); }

  /// Calls itself as deep as the rules nest, not as the descriptor does: what no rule knows is not entered.
  void check(std::uint32_t index, const Element& element, const ElementRule& rule) {
    checkAttributes(element, rule);
    if (rule.check != nullptr) rule.check(element, findings_);
    std::unordered_set<std::string_view> children;
    const std::uint32_t end = tree_.nodes[index].end;
    for (std::uint32_t i = index + 1; i < end; i = tree_.nodes[i].end) {
      if (tree_.nodes[i].type == NodeType::Element) checkChild(i, rule, children);
      if (tree_.nodes[i].type == NodeType::Text) {
        findings_.warn(tree_.nodes[i].offset, "the text in " + quoted(element.name) + " is ignored");
      }
    }
    for (const ElementRule& child : descriptorRules()) {
      if (child.parent != rule.name || child.ifMissing.empty() || children.contains(child.name)) continue;
      findings_.warn(element.offset, missing(rule.name, child.name, child.ifMissing));
    }
  }

  static std::string missing(std::string_view owner, std::string_view what, std::string_view consequence) {
    return std::string(owner) + " without " + std::string(what) + ": " + std::string(consequence);
  }

  void checkAttributes(const Element& element, const ElementRule& rule) {
    std::vector<std::string_view> known;
    for (const AttributeRule& attribute : rule.attributes) {
      known.push_back(attribute.name);
      if (!attribute.ifMissing.empty() && element.find(attribute.name) == nullptr) {
        findings_.warn(element.offset, missing(rule.name, attribute.name, attribute.ifMissing));
      }
    }
    for (const Attribute& attribute : element.attributes) {
      const auto found = std::find(known.begin(), known.end(), attribute.name);
      if (found == known.end()) {
        if (!isMistyped(attribute.name, known)) continue;  // further ones are for whoever reads them
        findings_.warn(attribute.offset, "unknown attribute " + quoted(attribute.name) + " of " + element.name +
                                             suggestion(attribute.name, known));
        continue;
      }
      const AttributeRule& attributeRule = rule.attributes[static_cast<std::size_t>(found - known.begin())];
      if (attributeRule.check != nullptr) attributeRule.check(attribute, findings_);
    }
  }

  /// `siblings` holds the names of the known elements before this one.
  void checkChild(std::uint32_t index, const ElementRule& parent, std::unordered_set<std::string_view>& siblings) {
    const Element element = elementAt(index);
    std::vector<std::string_view> known;
    for (const ElementRule& rule : descriptorRules()) {
      if (rule.parent == parent.name) known.push_back(rule.name);
      if (rule.name != element.name) continue;
      if (rule.parent != parent.name) {
        findings_.warn(element.offset,
                       quoted(element.name) + " does not belong in " + quoted(parent.name) + " and is ignored there");
      } else if (!siblings.insert(rule.name).second && !rule.ifMissing.empty()) {
        findings_.warn(element.offset, "another " + quoted(element.name) + "; only the first is read");
      } else {
        check(index, element, rule);
      }
      return;
    }
    if (!isMistyped(element.name, known)) return;  // a tree of somebody else's: a menu, views
    findings_.warn(element.offset, "unknown element " + quoted(element.name) + " in " + quoted(parent.name) +
                                       suggestion(element.name, known));
  }

  const Tree& tree_;
  Findings findings_;
};

}  // namespace

std::vector<Warning> checkDescriptor(const Tree& tree) { return DescriptorCheck(tree).run(); }

}  // namespace corvix::xmlbinc
