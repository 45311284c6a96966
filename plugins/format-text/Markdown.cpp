#include "plugins/format-text/Markdown_p.h"

#include <cstdlib>
#include <memory>

#include <windows.h>
#include <cmark.h>

namespace corvix {

namespace {

struct FreeNode {
  void operator()(cmark_node* node) const noexcept { cmark_node_free(node); }
};
using Node = std::unique_ptr<cmark_node, FreeNode>;

Node parse(std::wstring_view text) {
  Bytes utf8;
  if (!toUtf8(text, utf8)) return nullptr;
  return Node(cmark_parse_document(utf8.data(), utf8.size(), CMARK_OPT_DEFAULT));
}

TextUnits wide(const char* utf8) {
  TextUnits text;
  const int units = MultiByteToWideChar(CP_UTF8, 0, utf8, -1, nullptr, 0);
  if (units <= 1) return text;
  text.resize(static_cast<std::size_t>(units));
  MultiByteToWideChar(CP_UTF8, 0, utf8, -1, text.data(), units);
  text.pop_back();  // the zero
  return text;
}

// What can be read of a heading, without its marks.
TextUnits plainText(cmark_node* heading) {
  TextUnits text;
  const std::unique_ptr<cmark_iter, decltype(&cmark_iter_free)> walk(cmark_iter_new(heading), cmark_iter_free);
  while (cmark_iter_next(walk.get()) != CMARK_EVENT_DONE) {
    cmark_node* const node = cmark_iter_get_node(walk.get());
    const cmark_node_type type = cmark_node_get_type(node);
    if (type == CMARK_NODE_TEXT || type == CMARK_NODE_CODE) text += wide(cmark_node_get_literal(node));
    if (type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK) text += L' ';
  }
  return text;
}

}  // namespace

void MarkdownDocument::read() {
  if (isRead_) return;
  std::vector<Heading> headings;
  const Node root = parse(text());
  for (cmark_node* node = root ? cmark_node_first_child(root.get()) : nullptr; node; node = cmark_node_next(node)) {
    if (cmark_node_get_type(node) != CMARK_NODE_HEADING) continue;
    const auto line = static_cast<u32>(std::max(cmark_node_get_start_line(node), 1)) - 1;
    headings.push_back({cmark_node_get_heading_level(node), line, plainText(node)});
  }
  headings_.swap(headings);
  isRead_ = true;
}

const MarkdownDocument::Heading* MarkdownDocument::at(i32 index) {
  return index >= 0 && index < headingCount() ? &headings_[static_cast<std::size_t>(index)] : nullptr;
}

i32 MarkdownDocument::headingCount() {
  read();
  return static_cast<i32>(headings_.size());
}

i32 MarkdownDocument::headingLevel(i32 index) {
  const Heading* const heading = at(index);
  return heading ? heading->level : 0;
}

const wchar_t* MarkdownDocument::headingText(i32 index) {
  const Heading* const heading = at(index);
  return heading ? heading->text.c_str() : nullptr;
}

u32 MarkdownDocument::headingPlace(i32 index) {
  const Heading* const heading = at(index);
  return heading ? lineStart(heading->line) : 0;
}

bool htmlOfMarkdown(std::wstring_view text, Bytes& html) {
  const Node root = parse(text);
  if (!root) return false;
  const std::unique_ptr<char, decltype(&std::free)> made(cmark_render_html(root.get(), CMARK_OPT_DEFAULT), std::free);
  if (made) html += made.get();
  return made != nullptr;
}

}  // namespace corvix
