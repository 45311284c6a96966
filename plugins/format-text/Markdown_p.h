// Markdown as cmark reads it.
#pragma once

#include "plugins/format-text/TextDocument_p.h"

namespace corvix {

class MarkdownDocument final : public TextDocument, public IOutline {
  CORVIX_IDENTITY(MarkdownDocument, 0x15B20FA2, 0xD10E69BF, 0x4AD97CBD, 0xFF49D1DD, TextDocument, IOutline)

 public:
  using TextDocument::TextDocument;

  i32 headingCount() override;
  i32 headingLevel(i32 index) override;
  const wchar_t* headingText(i32 index) override;
  u32 headingPlace(i32 index) override;

 private:
  struct Heading {
    i32 level;
    u32 line;
    TextUnits text;
  };
  void onChanged() noexcept override { isRead_ = false; }
  void read();
  const Heading* at(i32 index);

  bool isRead_ = false;
  std::vector<Heading> headings_;
};

// What stands between <body> and </body>. HTML inside the text is left out, and so are links that run code. False when
// the text holds half a character.
bool htmlOfMarkdown(std::wstring_view text, Bytes& html);

}  // namespace corvix
