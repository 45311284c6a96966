#include "tools/xmlbinc/HeaderWriter.h"

#include "tools/xmlbinc/NumberText.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <vector>

namespace corvix::xmlbinc {

namespace {

using Words = std::array<std::uint32_t, 4>;

struct Declared {
  std::u16string name;
  Words words;
  std::size_t line;
  std::string identifier;  // of C++
};

std::optional<Words> parseWords(std::string_view text) {
  Words words{};
  for (std::size_t i = 0; i < words.size(); ++i) {
    const auto number = parseNumber(text);
    if (!number) return std::nullopt;
    words[i] = static_cast<std::uint32_t>(number->value);
    text.remove_prefix(number->length);
    if (i + 1 == words.size()) break;
    if (!text.starts_with(',')) return std::nullopt;
    text.remove_prefix(1);
  }
  return words;
}

/// Words of C++, and what every type of the header has inside; sorted.
constexpr std::string_view kReserved[] = {"alignas",   "alignof",       "and",          "and_eq",   "asm",
                                          "auto",      "bitand",        "bitor",        "bool",     "break",
                                          "case",      "catch",         "char",         "char16_t", "char32_t",
                                          "char8_t",   "check",         "class",        "co_await", "co_return",
                                          "co_yield",  "compl",         "concept",      "const",    "const_cast",
                                          "consteval", "constexpr",     "constinit",    "continue", "decltype",
                                          "default",   "delete",        "do",           "double",   "dynamic_cast",
                                          "else",      "enum",          "explicit",     "export",   "extern",
                                          "false",     "float",         "for",          "friend",   "goto",
                                          "if",        "inline",        "int",          "long",     "mutable",
                                          "name",      "namespace",     "new",          "noexcept", "not",
                                          "not_eq",    "nullptr",       "operator",     "or",       "or_eq",
                                          "private",   "protected",     "public",       "register", "reinterpret_cast",
                                          "requires",  "return",        "short",        "signed",   "sizeof",
                                          "static",    "static_assert", "static_cast",  "struct",   "switch",
                                          "template",  "this",          "thread_local", "throw",    "true",
                                          "try",       "typedef",       "typeid",       "typename", "union",
                                          "unsigned",  "using",         "virtual",      "void",     "volatile",
                                          "wchar_t",   "while",         "words",        "xor",      "xor_eq"};
static_assert(std::is_sorted(std::begin(kReserved), std::end(kReserved)));

/// "GlobalEvent.Morning" is GlobalEvent_Morning and "class" is class_; what is there already gets a number.
std::string identifierFor(std::u16string_view name, std::set<std::string>& taken) {
  std::string identifier;
  for (const char16_t unit : name) {
    const bool fits = (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9');
    identifier += fits ? static_cast<char>(unit) : '_';
  }
  if (identifier.empty() || (identifier[0] >= '0' && identifier[0] <= '9')) identifier.insert(0, 1, 'I');
  if (std::binary_search(std::begin(kReserved), std::end(kReserved), identifier)) identifier += '_';
  const std::string plain = identifier;
  for (int number = 2; !taken.insert(identifier).second; ++number) identifier = plain + '_' + std::to_string(number);
  return identifier;
}

std::string format(const char* pattern, std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, pattern, static_cast<unsigned>(value));
  return text;
}

std::string literal(std::u16string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t point = text[i];
    if (point >= 0xD800 && point < 0xDC00 && i + 1 < text.size())
      point = 0x10000 + ((point - 0xD800) << 10) + (text[++i] - 0xDC00U);
    if (point == '"' || point == '\\' || point == '?') result += '\\';
    if (point >= 0x20 && point < 0x7F) {
      result += static_cast<char>(point);
    } else {
      result += point < 0xA0      ? format("\\%03o", point)
                : point < 0x10000 ? format("\\u%04X", point)
                                  : format("\\U%08X", point);
    }
  }
  return '"' + result + '"';
}

class HeaderWriter {
 public:
  HeaderWriter(const Tree& tree, const SourceText& source, std::string_view path)
      : tree_(tree), source_(source), path_(path) {
    collect();
  }

  std::string run() {
    line("// Made by xmlbinc from " + path_.substr(path_.find_last_of("/\\") + 1) +
         ": what the module declares, and the check that CORVIX_PLUGIN has a row for each of it.");
    line("#pragma once\n\n#include \"shell/DeclaredRow.h\"\n\nnamespace descriptor {");
    for (const Declared& one : all_) addInterface(one);
    addCheck();
    line("}  // namespace descriptor\n\n#undef CORVIX_PLUGIN");
    line("#define CORVIX_PLUGIN(...) CORVIX_CHECKED_PLUGIN(__VA_ARGS__)");
    return std::move(text_);
  }

 private:
  void collect() {
    std::set<std::string> taken{"isComplete"};
    std::size_t i = 1;
    while (i < tree_.nodes.size() && !isElement(i, u"Plugin")) i = tree_.nodes[i].end;
    if (i >= tree_.nodes.size()) return;
    pluginLine_ = lineOf(tree_.nodes[i]);
    const std::size_t end = tree_.nodes[i].end;
    for (++i; i < end; i = tree_.nodes[i].end) {
      const auto words =
          isElement(i, u"Interface") ? parseWords(toUtf8(attribute(i, u"GUID")).value_or("")) : std::nullopt;
      const std::u16string name = words ? attribute(i, u"Name") : std::u16string();
      if (words) all_.push_back({name, *words, lineOf(tree_.nodes[i]), identifierFor(name, taken)});
    }
  }

  bool isElement(std::size_t i, std::u16string_view name) const {
    return tree_.nodes[i].type == NodeType::Element && tree_.name(tree_.nodes[i]) == name;
  }

  std::u16string attribute(std::size_t element, std::u16string_view name) const {
    for (std::size_t i = element + 1; i < tree_.nodes[element].end && tree_.nodes[i].type == NodeType::Attribute; ++i) {
      if (tree_.name(tree_.nodes[i]) == name) return tree_.value(tree_.nodes[i]);
    }
    return {};
  }

  std::size_t lineOf(const Node& node) const { return source_.locate(node.offset).line; }

  void addInterface(const Declared& one) {
    line("\nstruct " + one.identifier + " {");
    line("  static constexpr const wchar_t* name = L" + literal(one.name) + ";");
    std::string words;
    for (const std::uint32_t word : one.words) words += (words.empty() ? "" : ", ") + format("0x%08X", word);
    line("  static constexpr ::corvix::ClassWords words{" + words + "};\n");
    line("  template <class Class>\n  static constexpr void check() {");
    assertAt(one.line, "::corvix::answersTo<Class>(words)",
             "the object made for " + shown(one.name) + " does not answer to the identifier that is declared here");
    line("  }\n};");
  }

  void addCheck() {
    line("\ntemplate <class Rows>\nconstexpr bool isComplete() {");
    std::string names;
    for (const Declared& one : all_) {
      names += ", " + one.identifier + "::name";
      assertAt(one.line, "::corvix::hasRow<Rows>(" + one.identifier + "::name)",
               shown(one.name) + " is declared here and has no row in CORVIX_PLUGIN");
    }
    assertAt(pluginLine_, "::corvix::hasOnly<Rows>(nullptr" + names + ")",
             "a row of CORVIX_PLUGIN is not declared here");
    line("  return true;\n}\n");
  }

  /// An assertion that the compiler finds in the descriptor.
  void assertAt(std::size_t place, const std::string& condition, const std::string& sentence) {
    const std::u16string units = toUtf16(sentence);
    line("#line " + std::to_string(place) + ' ' + quotedPath(path_));
    line("    static_assert(" + condition + ", " + literal(units) + ");");
    line("#line " + std::to_string(lines_ + 2) + " \"descriptor.h\"");
  }

  static std::string shown(std::u16string_view name) { return toUtf8(name).value_or(""); }

  static std::string quotedPath(std::string_view path) {
    std::string result = "\"";
    for (const char c : path) {
      if (c == '"' || c == '\\') result += '\\';
      result += c;
    }
    return result + '"';
  }

  void line(const std::string& text) {
    text_ += text + '\n';
    lines_ += 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  const Tree& tree_;
  const SourceText& source_;
  const std::string path_;
  std::vector<Declared> all_;
  std::size_t pluginLine_ = 1;
  std::string text_;
  std::size_t lines_ = 0;
};

}  // namespace

std::string writeHeader(const Tree& tree, const SourceText& source, std::string_view path) {
  return HeaderWriter(tree, source, path).run();
}

}  // namespace corvix::xmlbinc
