#include "tools/xmlbinc/XmlWriter.h"

#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/Limits.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <unordered_set>
#include <utf8cpp/utf8.h>

namespace corvix::xmlbinc {

namespace {

constexpr std::size_t kLineWidth = 120;

/// Appends with what must not stand literally replaced; `wanted` names these characters.
void appendEscaped(std::string_view text, std::string_view wanted, std::string& out) {
  for (const char c : text) {
    if (wanted.find(c) == wanted.npos) {
      out += c;
      continue;
    }
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += "&#" + std::to_string(static_cast<int>(c)) + ";";
    }
  }
}

class XmlWriter {
 public:
  explicit XmlWriter(const Tree& tree) : tree_(tree) {}

  std::string run() {
    if (tree_.nodes[0].type != NodeType::Element) fail(tree_.nodes[0], "is the root, which in XML is an element");
    out_ = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    for (std::uint32_t i = 0; i < tree_.nodes.size(); ++i) {
      closeUntil(i);
      write(i);
      checkSize(tree_.nodes[i], 0);
    }
    closeUntil(static_cast<std::uint32_t>(tree_.nodes.size()));
    out_ += '\n';
    checkSize(tree_.nodes[0], 0);
    return std::move(out_);
  }

 private:
  struct OpenElement {
    std::uint32_t index;
    bool inLine;  ///< its content is written without layout, because a text is in it or around it
    bool empty;   ///< no content yet: its start tag is still to be ended
    bool afterText;
  };

  void write(std::uint32_t index) {
    const Node& node = tree_.nodes[index];
    switch (node.type) {
      case NodeType::Attribute:
        return checkAttribute(node);
      case NodeType::Element:
        return writeElement(index);
      case NodeType::Comment:
        return writeComment(node);
      case NodeType::Text:
        return writeText(node);
    }
  }

  void writeElement(std::uint32_t index) {
    const Node& element = tree_.nodes[index];
    if (open_.size() >= kMaxDepth) {
      fail(element, "is nested too deeply: XML can be compiled with up to " + std::to_string(kMaxDepth) +
                        " elements inside each other");
    }
    beginContent(false);
    out_ += '<' + xmlName(element);
    const bool inLine = !open_.empty() && open_.back().inLine;
    open_.push_back({index, inLine || hasText(index), true, false});
    writeAttributes(index, inLine);
  }

  /// On one line if they fit or must, else on one line each.
  void writeAttributes(std::uint32_t index, bool inLine) {
    const std::uint32_t end = tree_.nodes[index].end;
    std::vector<std::string> attributes;
    std::unordered_set<std::string> names;
    std::size_t width = 2 * open_.size() + 1 + tree_.name(tree_.nodes[index]).size();
    for (std::uint32_t i = index + 1; i < end && tree_.nodes[i].type == NodeType::Attribute; ++i) {
      const Node& attribute = tree_.nodes[i];
      std::string text = xmlName(attribute);
      if (!names.insert(text).second) fail(attribute, "is given twice");
      text += "=\"";
      appendEscaped(xmlText(attribute, attribute.value), "<&\"\t\n\r", text);
      text += '"';
      width += 1 + text.size();
      checkSize(attribute, width);
      attributes.push_back(std::move(text));
    }
    const bool onOneLine = inLine || width <= kLineWidth || attributes.size() < 2;
    for (const std::string& attribute : attributes) {
      if (onOneLine) {
        out_ += ' ';
      } else {
        newLine(1);
      }
      out_ += attribute;
    }
  }

  /// Attributes were written with their element.
  void checkAttribute(const Node& attribute) const {
    if (!open_.back().empty) fail(attribute, "comes after other content of its element, which XML cannot say");
  }

  void writeComment(const Node& comment) {
    const std::string text = xmlText(comment, comment.name);
    if (text.find("--") != text.npos || text.ends_with('-')) fail(comment, "holds \"--\" or ends in \"-\"");
    if (text.find('\r') != text.npos) fail(comment, "holds a carriage return");
    beginContent(false);
    out_ += "<!--" + text + "-->";
  }

  void writeText(const Node& node) {
    const std::string text = xmlText(node, node.name);
    if (open_.back().afterText) fail(node, "follows another text, which XML cannot say");
    beginContent(true);
    if (text.empty()) {
      out_ += "<![CDATA[]]>";
    } else if (isXmlSpace(text)) {
      // Literal white space alone would read as layout.
      appendEscaped(text.substr(0, 1), " \t\n\r", out_);
      appendEscaped(text.substr(1), "\r", out_);
    } else {
      appendEscaped(text, "<>&\r", out_);
    }
  }

  /// Ends the start tag of the element that the next piece goes into, and begins that piece's line.
  void beginContent(bool text) {
    if (open_.empty()) return;
    OpenElement& element = open_.back();
    if (element.empty) out_ += '>';
    element.empty = false;
    element.afterText = text;
    if (!element.inLine) newLine();
  }

  void closeUntil(std::uint32_t index) {
    while (!open_.empty() && tree_.nodes[open_.back().index].end <= index) {
      const OpenElement element = open_.back();
      open_.pop_back();
      if (element.empty) {
        out_ += "/>";
        continue;
      }
      if (!element.inLine) newLine();
      out_ += "</" + xmlName(tree_.nodes[element.index]) + '>';
    }
  }

  void newLine(std::size_t furtherIn = 0) {
    out_ += '\n';
    out_.append(2 * (open_.size() + furtherIn), ' ');
  }

  bool hasText(std::uint32_t element) const {
    const std::uint32_t end = tree_.nodes[element].end;
    for (std::uint32_t i = element + 1; i < end; i = tree_.nodes[i].end) {
      if (tree_.nodes[i].type == NodeType::Text) return true;
    }
    return false;
  }

  std::string xmlName(const Node& node) const {
    std::string name = xmlText(node, node.name);
    if (!isXmlName(name)) fail(node, "has a name that is none in XML");
    return name;
  }

  std::string xmlText(const Node& node, StringId id) const {
    // Checked before the conversion: a block may repeat a long string any number of times.
    checkSize(node, tree_.strings[id].size());
    auto text = toUtf8(tree_.strings[id]);
    if (!text) fail(node, "holds half a surrogate pair");
    for (auto at = text->cbegin(); at != text->cend();) {
      if (!isXmlChar(utf8::unchecked::next(at))) fail(node, "holds a character that XML does not allow");
    }
    return std::move(*text);
  }

  void checkSize(const Node& node, std::size_t coming) const {
    if (out_.size() + coming <= kMaxXmlBytes) return;
    throw InputError(node.offset,
                     "too large: written as XML, this has more than " + std::to_string(kMaxXmlBytes) + " bytes");
  }

  [[noreturn]] void fail(const Node& node, const std::string& problem) const {
    static constexpr const char* kTypes[] = {"text", "comment", "element", "attribute"};
    std::string message = std::string("the ") + kTypes[static_cast<int>(node.type)] + ' ' + quoted(tree_.name(node));
    if (!open_.empty()) message += " in " + quoted(tree_.name(tree_.nodes[open_.back().index]));
    throw InputError(node.offset, message + ' ' + problem);
  }

  const Tree& tree_;
  std::string out_;
  std::vector<OpenElement> open_;
};

}  // namespace

std::string writeXml(const Tree& tree) { return XmlWriter(tree).run(); }

}  // namespace corvix::xmlbinc
