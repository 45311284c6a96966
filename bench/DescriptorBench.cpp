// Reading a descriptor, release of the tree included, against rapidxml on the same tree as text: bare, and with
// the tree copied into wide strings as a user of it would need.
#include "bench/Bench.h"
#include "core/xml/XmlbinReader.h"
#include "tools/xmlbinc/BlockWriter.h"
#include "tools/xmlbinc/XmlReader.h"

#include <rapidxml/rapidxml.hpp>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace corvix::bench {
namespace {

struct WideNode {
  std::wstring name;
  std::wstring value;
  std::vector<std::pair<std::wstring, std::wstring>> attributes;
  std::vector<std::unique_ptr<WideNode>> children;
};

std::wstring widen(const char* text, std::size_t length) { return {text, text + length}; }

std::unique_ptr<WideNode> copyOf(const rapidxml::xml_node<>& node) {
  auto copy = std::make_unique<WideNode>();
  copy->name = widen(node.name(), node.name_size());
  copy->value = widen(node.value(), node.value_size());
  for (auto* attribute = node.first_attribute(); attribute; attribute = attribute->next_attribute()) {
    copy->attributes.emplace_back(widen(attribute->name(), attribute->name_size()),
                                  widen(attribute->value(), attribute->value_size()));
  }
  for (auto* child = node.first_node(); child; child = child->next_sibling()) copy->children.push_back(copyOf(*child));
  return copy;
}

std::string readDescriptor() {
  std::ifstream file(CORVIX_DESCRIPTOR_XML, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (text.empty()) throw std::runtime_error("cannot read " CORVIX_DESCRIPTOR_XML);
  return text;
}

// What stands inside the Plugin element, so many times.
std::string enlarged(const std::string& xml, int times) {
  const std::size_t begin = xml.find("<Interface");
  const std::size_t end = xml.find("</Plugin>");
  std::string result = xml.substr(0, begin);
  for (int i = 0; i < times; ++i) result.append(xml, begin, end - begin);
  return result + xml.substr(end);
}

void measure(Report& report, const std::string& name, const std::string& xml, double wantedOfBare) {
  xmlbinc::SourceText source;
  source.load(xml);
  const std::string block = xmlbinc::writeBlock(xmlbinc::readXml(source));
  const auto ours = [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      XMLNode* root = readXmlbin(block.data(), static_cast<u32>(block.size()));
      if (!root) std::abort();
      keep(root);
      root->release();
    }
  };
  std::vector<char> text;
  const auto parse = [&](rapidxml::xml_document<>& document) {
    text.assign(xml.c_str(), xml.c_str() + xml.size() + 1);
    document.parse<0>(text.data());
  };
  report.compare(name, "rapidxml, tree copied to wide strings", 0.4, ours, [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      rapidxml::xml_document<> document;
      parse(document);
      auto tree = copyOf(*document.first_node());
      keep(tree);
    }
  });
  report.compare(name, "rapidxml, default flags", wantedOfBare, ours, [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      rapidxml::xml_document<> document;
      parse(document);
      auto* root = document.first_node();
      keep(root);
    }
  });
}

// A module with so many interfaces of its own, against a parser that copies nothing: its document and its text are kept
// while they are used, as ours is.
std::string withInterfaces(const std::string& xml, int count) {
  std::string result = xml.substr(0, xml.find("<Interface"));
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    result += "<Interface Name=\"Example.Interface" + number + "\" GUID=\"0x1A2B3C4D, 0x5E6F7081, 0x92A3B4C5, " +
              number + "\" sHumanName=\"Example " + number + "\"/>\n";
  }
  return result + xml.substr(xml.find("</Plugin>"));
}

void measureDescriptor(Report& report) {
  const std::string own = readDescriptor();
  measure(report, "read the library's own descriptor", own, 3.0);
  measure(report, "read one 100 times larger", enlarged(own, 100), 3.0);
  measure(report, "read one of 1000 interfaces", withInterfaces(own, 1000), 2.0);
}

const Area area{"descriptor", measureDescriptor};

}  // namespace
}  // namespace corvix::bench
