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
  DescriptorCheck(const Tree& tree, const Form& form) : tree_(tree), form_(form) {}

  std::vector<Warning> run() {
    const ElementRule& root = form_.rules.front();
    const Element element = elementAt(0);
    if (element.name != root.name) {
      findings_.warn(element.offset, "the root element is " + quoted(element.name) + ", not " + quoted(root.name));
    }
    open_.push_back({0, &root});
    while (!open_.empty()) {
      const Open next = open_.back();
      open_.pop_back();
      check(next.index, elementAt(next.index), *next.rule);
    }
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

  /// Elements inside it are opened for later. What no rule knows is not entered.
  void check(std::uint32_t index, const Element& element, const ElementRule& rule) {
    checkAttributes(element, rule);
    if (rule.check != nullptr) rule.check(element, findings_);
    std::unordered_set<std::string_view> children;
    const auto opened = static_cast<std::ptrdiff_t>(open_.size());
    const std::uint32_t end = tree_.nodes[index].end;
    for (std::uint32_t i = index + 1; i < end; i = tree_.nodes[i].end) {
      if (tree_.nodes[i].type == NodeType::Element) checkChild(i, rule, children);
      if (tree_.nodes[i].type == NodeType::Text) {
        findings_.warn(tree_.nodes[i].offset, "the text in " + quoted(element.name) + " is ignored");
      }
    }
    std::reverse(open_.begin() + opened, open_.end());  // the first of them is next
    for (const ElementRule& child : form_.rules) {
      if (!child.belongsIn(rule.name) || child.ifMissing.empty() || children.contains(child.name)) continue;
      findings_.warn(element.offset, missing(rule.name, child.name, child.ifMissing));
    }
  }

  static std::string missing(std::string_view owner, std::string_view what, std::string_view consequence) {
    return std::string(owner) + " without " + std::string(what) + ": " + std::string(consequence);
  }

  void checkAttributes(const Element& element, const ElementRule& rule) {
    std::vector<AttributeRule> rules(rule.attributes.begin(), rule.attributes.end());
    if (const FamilyRule* family = rule.name == "Interface" ? familyOf(element.value("Name")) : nullptr)
      rules.insert(rules.end(), family->attributes.begin(), family->attributes.end());
    std::vector<std::string_view> known;
    for (const AttributeRule& attribute : rules) {
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
      const AttributeRule& attributeRule = rules[static_cast<std::size_t>(found - known.begin())];
      if (attributeRule.check != nullptr) attributeRule.check(attribute, findings_);
    }
  }

  /// `siblings` holds the names of the known elements before this one.
  void checkChild(std::uint32_t index, const ElementRule& parent, std::unordered_set<std::string_view>& siblings) {
    const Element element = elementAt(index);
    std::vector<std::string_view> known;
    for (const ElementRule& rule : form_.rules) {
      if (rule.belongsIn(parent.name)) known.push_back(rule.name);
      if (rule.name != element.name) continue;
      if (!rule.belongsIn(parent.name)) {
        findings_.warn(element.offset,
                       quoted(element.name) + " does not belong in " + quoted(parent.name) + " and is ignored there");
      } else if (!siblings.insert(rule.name).second && !rule.ifMissing.empty()) {
        findings_.warn(element.offset, "another " + quoted(element.name) + "; only the first is read");
      } else {
        open_.push_back({index, &rule});
      }
      return;
    }
    if (!isMistyped(element.name, known)) return;  // a tree of somebody else's: a menu, views
    findings_.warn(element.offset, "unknown element " + quoted(element.name) + " in " + quoted(parent.name) +
                                       suggestion(element.name, known));
  }

  struct Open {
    std::uint32_t index;
    const ElementRule* rule;
  };

  const Tree& tree_;
  const Form& form_;
  Findings findings_;
  std::vector<Open> open_;
};

}  // namespace

std::vector<Warning> check(const Tree& tree, const Form& form) { return DescriptorCheck(tree, form).run(); }

const Form& formOf(const Tree& tree) {
  const Node& root = tree.nodes.front();
  for (std::uint32_t i = 1; i < root.end; i = tree.nodes[i].end) {
    if (tree.nodes[i].type == NodeType::Element) return formWith(toUtf8(tree.name(tree.nodes[i])).value_or(""));
  }
  return formWith({});
}

}  // namespace corvix::xmlbinc
