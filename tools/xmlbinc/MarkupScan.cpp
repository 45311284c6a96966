#include "tools/xmlbinc/MarkupScan.h"

#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/Limits.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace corvix::xmlbinc {

namespace {

constexpr auto kNone = std::string_view::npos;

class MarkupScan {
 public:
  explicit MarkupScan(std::string_view text) : text_(text) {}

  void run() {
    for (std::size_t at = text_.find('<'); at != kNone; at = text_.find('<', at)) at = section(at);
    if (!open_.empty()) {
      throw InputError(open_.back().offset, "the element " + quoted(open_.back().name) + " is not closed");
    }
  }

 private:
  struct OpenElement {
    std::size_t offset;
    std::string_view name;
  };

  /// Returns the offset behind the section that begins at `at`.
  std::size_t section(std::size_t at) {
    const std::string_view rest = text_.substr(at);
    if (rest.starts_with("<!--")) return behind("-->", at, 4, "comment");
    if (rest.starts_with("<![CDATA[")) return behind("]]>", at, 9, "CDATA section");
    if (rest.starts_with("<!DOCTYPE")) throw InputError(at, "document type declarations are not supported");
    if (rest.starts_with("<!")) throw InputError(at, "\"<!\" begins neither a comment nor a CDATA section");
    if (rest.starts_with("<?")) return instruction(at);
    if (rest.starts_with("</")) return closingTag(at);
    return openingTag(at);
  }

  std::size_t behind(std::string_view terminator, std::size_t at, std::size_t skipped, const char* what) const {
    const std::size_t end = text_.find(terminator, at + skipped);
    if (end == kNone) {
      throw InputError(at, std::string("the ") + what + " is not ended by \"" + std::string(terminator) + "\"");
    }
    return end + terminator.size();
  }

  std::size_t instruction(std::size_t at) const {
    const std::string_view target = text_.substr(at + 2, text_.find_first_of(" \t\n?", at + 2) - (at + 2));
    const bool declaration = lowered(target) == "xml";
    if (declaration && (at != 0 || target != "xml")) {
      throw InputError(at, "an XML declaration, \"<?xml\", stands at the very start of a file or nowhere");
    }
    return behind("?>", at, 2, declaration ? "XML declaration" : "processing instruction");
  }

  std::size_t closingTag(std::size_t at) {
    const std::string_view name = nameAt(at + 2, at);
    if (open_.empty()) throw InputError(at, "nothing is open that " + quoted(name) + " could close");
    if (open_.back().name != name) {
      throw InputError(at, "closing tag of " + quoted(name) + ", but " + quoted(open_.back().name) +
                               ", opened in line " + lineOf(open_.back().offset) + ", is to be closed first");
    }
    open_.pop_back();
    return at + 2 + name.size();
  }

  std::size_t openingTag(std::size_t at) {
    const std::string_view name = nameAt(at + 1, at);
    if (open_.size() >= kMaxDepth) {
      throw InputError(at,
                       "nested too deeply: " + std::to_string(kMaxDepth) + " elements inside each other are the most");
    }
    std::size_t i = at + 1 + name.size();
    for (;;) {
      i = text_.find_first_of("\"'<>", i);
      if (i == kNone) notClosed(at);
      if (text_[i] == '<') throw InputError(i, "\"<\" inside of the tag of " + quoted(name) + "; is a \">\" missing?");
      if (text_[i] == '>') break;
      i = value(i);
    }
    if (text_[i - 1] != '/') open_.push_back({at, name});
    return i + 1;
  }

  /// A quote is only let begin a value: in a name the parser would take it for a letter.
  std::size_t value(std::size_t quote) const {
    const std::size_t before = text_.find_last_not_of(" \t\n", quote - 1);
    if (text_[before] != '=') {
      throw InputError(quote, "a quote that begins no value; values are written name=\"value\"");
    }
    const char stops[] = {text_[quote], '<', '\0'};
    const std::size_t end = text_.find_first_of(stops, quote + 1);
    if (end == kNone) throw InputError(quote, "the value is not ended by a quote");
    if (text_[end] == '<') {
      throw InputError(end, "\"<\" in the value that begins in line " + lineOf(quote) +
                                ": write &lt;, or is the closing quote missing?");
    }
    return end + 1;
  }

  /// The name ends where the parser sees its end.
  std::string_view nameAt(std::size_t start, std::size_t tag) const {
    const std::size_t end = text_.find_first_of(" \t\n/><", start);
    if (end == kNone) notClosed(tag);
    const std::string_view name = text_.substr(start, end - start);
    if (name.empty()) throw InputError(tag, "\"<\" without a name; write &lt; for the character");
    if (!isXmlName(name)) throw InputError(start, quoted(name) + " is not a name");
    return name;
  }

  std::string lineOf(std::size_t offset) const {
    return std::to_string(1 + std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
  }

  [[noreturn]] static void notClosed(std::size_t tag) { throw InputError(tag, "the tag is not ended by \">\""); }

  std::string_view text_;
  std::vector<OpenElement> open_;
};

}  // namespace

void scanMarkup(std::string_view text) { MarkupScan(text).run(); }

}  // namespace corvix::xmlbinc
