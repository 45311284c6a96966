#include "tools/xmlbinc/XmlReader.h"

#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/MarkupScan.h"
#include "tools/xmlbinc/Unicode.h"

#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <string_view>
#include <unordered_set>

namespace corvix::xmlbinc {

namespace {

using XmlNode = rapidxml::xml_node<char>;

std::string_view nameOf(const rapidxml::xml_base<char>& node) { return {node.name(), node.name_size()}; }
std::string_view valueOf(const rapidxml::xml_base<char>& node) { return {node.value(), node.value_size()}; }

/// The parser's messages in words that help an author.
std::string explained(std::string_view message) {
  struct Row {
    std::string_view message;
    std::string_view explanation;
  };
  static constexpr Row kRows[] = {{"expected <", "text outside of the root element"},
                                  {"expected >", "the tag goes on with neither an attribute nor its end"},
                                  {"expected =", "an attribute's name is not followed by \"=\""},
                                  {"expected ' or \"", "an attribute's value is not in quotes"}};
  for (const Row& row : kRows) {
    if (row.message == message) return std::string(row.explanation);
  }
  return std::string(message);
}

/// `reference` is what stands between "&" and ";".
char32_t referencedCharacter(std::string_view reference, std::size_t offset) {
  if (reference.starts_with('#')) {
    const bool hex = reference.starts_with("#x");
    const std::string_view digits = reference.substr(hex ? 2 : 1);
    std::uint32_t c = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), c, hex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size() || !isXmlChar(c)) {
      throw InputError(offset, "\"&" + std::string(reference) + ";\" refers to no character that XML allows");
    }
    return c;
  }
  struct Entity {
    std::string_view name;
    char32_t character;
  };
  static constexpr Entity kEntities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  for (const Entity& entity : kEntities) {
    if (entity.name == reference) return entity.character;
  }
  throw InputError(offset, "undefined entity \"&" + std::string(reference) +
                               ";\"; there are lt, gt, amp, quot, apos and character references such as &#160;");
}

class XmlReader {
 public:
  explicit XmlReader(const SourceText& source) : source_(source), buffer_(source.text()) {}

  Tree run() {
    scanMarkup(buffer_);
    parse();
    readDocument();
    if (builder_.empty()) throw InputError(buffer_.size(), "there is no root element");
    return builder_.take();
  }

 private:
  std::size_t offsetOf(const char* at) const { return static_cast<std::size_t>(at - buffer_.data()); }

  void parse() {
    constexpr int kFlags = rapidxml::parse_full | rapidxml::parse_non_destructive | rapidxml::parse_no_element_values;
    try {
      document_->parse<kFlags>(buffer_.data());
    } catch (const rapidxml::parse_error& error) {
      throw InputError(offsetOf(error.where<char>()), explained(error.what()));
    }
  }

  void readDocument() {
    for (const XmlNode* node = document_->first_node(); node != nullptr;) {
      enter(*node);
      if (node->type() == rapidxml::node_element && node->first_node() != nullptr) {
        node = node->first_node();
        continue;
      }
      if (node->type() == rapidxml::node_element) builder_.closeElement();
      while (node != document_.get() && node->next_sibling() == nullptr) {
        node = node->parent();
        flushText();
        if (node != document_.get()) builder_.closeElement();
      }
      node = node == document_.get() ? nullptr : node->next_sibling();
    }
  }

  void enter(const XmlNode& node) {
    const bool outside = node.parent() == document_.get();
    switch (node.type()) {
      case rapidxml::node_element:
        flushText();
        if (outside && !builder_.empty()) {
          throw InputError(offsetOf(node.name()) - 1,
                           "a second root element, " + quoted(nameOf(node)) + "; a document has one");
        }
        readElement(node);
        break;
      case rapidxml::node_data:
        addText(offsetOf(node.value()) + valueOf(node).find_first_not_of(" \t\n"), expand(valueOf(node), false));
        break;
      case rapidxml::node_cdata:
        if (outside) throw InputError(offsetOf(node.value()), "text outside of the root element");
        addText(offsetOf(node.value()), std::string(valueOf(node)));
        break;
      case rapidxml::node_comment:
        flushText();
        readComment(node, outside);
        break;
      case rapidxml::node_declaration:
        checkDeclaration(node);
        break;
      default:
        break;
    }
  }

  void readElement(const XmlNode& element) {
    builder_.openElement(builder_.addString(toUtf16(nameOf(element))), offsetOf(element.name()) - 1);
    std::unordered_set<std::string_view> names;
    for (const auto* attribute = element.first_attribute(); attribute != nullptr;
         attribute = attribute->next_attribute()) {
      const std::size_t offset = offsetOf(attribute->name());
      const std::string_view name = nameOf(*attribute);
      if (!isXmlSpace(buffer_[offset - 1])) throw InputError(offset, "white space is missing before " + quoted(name));
      if (!isXmlName(name)) throw InputError(offset, quoted(name) + " is not a name");
      if (!names.insert(name).second) throw InputError(offset, "the attribute " + quoted(name) + " is given twice");
      const StringId nameId = builder_.addString(toUtf16(name));
      const StringId valueId = builder_.addString(toUtf16(expand(valueOf(*attribute), true)));
      builder_.addLeaf(NodeType::Attribute, nameId, valueId, offset);
    }
  }

  void readComment(const XmlNode& comment, bool outside) {
    const std::string_view text = valueOf(comment);
    const std::size_t dashes = text.find("--");
    if (dashes != text.npos) throw InputError(offsetOf(text.data()) + dashes, "\"--\" inside of a comment");
    if (text.ends_with('-')) throw InputError(offsetOf(text.data()) + text.size() - 1, "a comment ending in \"-\"");
    if (outside) return;
    builder_.addLeaf(NodeType::Comment, builder_.addString(toUtf16(text)), 0, offsetOf(text.data()) - 4);
  }

  void checkDeclaration(const XmlNode& declaration) const {
    const auto* attribute = declaration.first_attribute();
    if (attribute == nullptr || nameOf(*attribute) != "version") {
      throw InputError(0, "the XML declaration does not begin with a version");
    }
    for (; attribute != nullptr; attribute = attribute->next_attribute()) {
      const std::string_view name = nameOf(*attribute);
      const std::string_view value = valueOf(*attribute);
      if (name == "version" && value != "1.0") {
        throw InputError(offsetOf(value.data()), "XML version " + quoted(value) + "; only 1.0 is supported");
      }
      if (name == "encoding") checkEncoding(value);
      if (name != "version" && name != "encoding" && name != "standalone") {
        throw InputError(offsetOf(name.data()), quoted(name) + " does not belong in an XML declaration");
      }
    }
  }

  void checkEncoding(std::string_view declared) const {
    struct Names {
      Encoding encoding;
      std::string_view shown;
      std::string_view other;
    };
    static constexpr Names kNames[] = {{Encoding::Utf8, "UTF-8", "utf-8"},
                                       {Encoding::Utf16Le, "UTF-16", "utf-16le"},
                                       {Encoding::Utf16Be, "UTF-16", "utf-16be"}};
    for (const Names& names : kNames) {
      if (names.encoding != source_.encoding()) continue;
      if (lowered(declared) == lowered(names.shown) || lowered(declared) == names.other) return;
      throw InputError(offsetOf(declared.data()), "the file is " + std::string(names.shown) +
                                                      " but declares the encoding " + quoted(declared) +
                                                      "; UTF-8, and UTF-16 with a byte order mark, are supported");
    }
  }

  /// Replaces references; in attributes, white space by blanks.
  std::string expand(std::string_view raw, bool attribute) const {
    const std::size_t start = offsetOf(raw.data());
    std::string text;
    for (std::size_t i = 0; i < raw.size(); ++i) {
      if (raw[i] == '&') {
        const std::size_t end = raw.find_first_of("; \t\n&", i + 1);
        if (end == raw.npos || raw[end] != ';') throw InputError(start + i, "\"&\" alone; write &amp;");
        appendUtf8(referencedCharacter(raw.substr(i + 1, end - i - 1), start + i), text);
        i = end;
      } else if (attribute && isXmlSpace(raw[i])) {
        text += ' ';
      } else if (!attribute && raw.substr(i).starts_with("]]>")) {
        throw InputError(start + i, "\"]]>\" in a text; write ]]&gt;");
      } else {
        text += raw[i];
      }
    }
    return text;
  }

  void addText(std::size_t offset, const std::string& text) {
    if (!textRun_) textRun_ = TextRun{offset, {}};
    textRun_->text += text;
  }

  void flushText() {
    if (!textRun_) return;
    builder_.addLeaf(NodeType::Text, builder_.addString(toUtf16(textRun_->text)), 0, textRun_->offset);
    textRun_.reset();
  }

  struct TextRun {
    std::size_t offset;
    std::string text;
  };

  const SourceText& source_;
  std::string buffer_;
  std::unique_ptr<rapidxml::xml_document<char>> document_ = std::make_unique<rapidxml::xml_document<char>>();
  TreeBuilder builder_;
  std::optional<TextRun> textRun_;
};

}  // namespace

Tree readXml(const SourceText& source) { return XmlReader(source).run(); }

}  // namespace corvix::xmlbinc
