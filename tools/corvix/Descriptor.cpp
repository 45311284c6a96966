#include "tools/corvix/Descriptor.h"

#include "tools/corvix/Text.h"
#include "tools/xmlbinc/BlockReader.h"

#include <algorithm>

namespace corvix::tool {

namespace {

using xmlbinc::Node;
using xmlbinc::NodeType;

// One text of a block may stand in thousands of places.
std::string textOf(std::u16string_view text) {
  constexpr std::size_t kLongest = 65536;  // what the library takes in
  return utf8(text.substr(0, kLongest)) + (text.size() > kLongest ? "..." : "");
}

Element elementAt(const xmlbinc::Tree& tree, std::size_t index) {
  Element element;
  const std::size_t end = tree.nodes[index].end;
  for (std::size_t i = index + 1; i < end; i = tree.nodes[i].end) {
    const Node& node = tree.nodes[i];
    if (node.type == NodeType::Attribute)
      element.attributes.emplace_back(textOf(tree.name(node)), textOf(tree.value(node)));
  }
  return element;
}

std::optional<ClassWords> identifierOf(const Element& element) {
  const std::wstring text = wide(element.value("GUID"));
  return parseClassWords(text.data(), text.size());
}

}  // namespace

std::string Element::value(std::string_view name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [name](const auto& attribute) { return attribute.first == name; });
  return found == attributes.end() ? std::string() : found->second;
}

Descriptor readDescriptor(std::string_view block) {
  Descriptor descriptor;
  descriptor.tree = xmlbinc::readBlock(block).tree;
  const xmlbinc::Tree& tree = descriptor.tree;
  const auto isElement = [&](std::size_t i, std::u16string_view name) {
    return tree.nodes[i].type == NodeType::Element && tree.name(tree.nodes[i]) == name;
  };
  std::size_t plugin = 1;
  while (plugin < tree.nodes.size() && !isElement(plugin, u"Plugin")) plugin = tree.nodes[plugin].end;
  if (plugin >= tree.nodes.size()) return descriptor;
  descriptor.plugin = elementAt(tree, plugin);
  descriptor.identifier = identifierOf(descriptor.plugin);
  for (std::size_t i = plugin + 1; i < tree.nodes[plugin].end; i = tree.nodes[i].end) {
    if (isElement(i, u"Setting")) descriptor.settings.push_back(elementAt(tree, i));
    if (isElement(i, u"Requires")) descriptor.requirements.push_back(elementAt(tree, i));
    if (!isElement(i, u"Interface")) continue;
    const Element element = elementAt(tree, i);
    if (const auto words = identifierOf(element))
      descriptor.interfaces.push_back({element, element.value("Name"), *words});
  }
  return descriptor;
}

std::string textOf(const ClassWords& words) {
  std::string text = PlainIdentifier(words).text();
  text.pop_back();  // the blank at the end
  return text;
}

}  // namespace corvix::tool
