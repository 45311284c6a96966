// Text, Markdown, and HTML pages made of either.
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/StreamCopy.h"
#include "descriptor.h"
#include "plugins/format-text/Markdown_p.h"
#include "shell/DeclaredRow.h"
#include "shell/Plugin.h"
#include "shell/documents/DocFormat.h"
#include "shell/services/Report.h"

#include <algorithm>
#include <array>

namespace corvix {

namespace {

constexpr u32 kMostBytes = TextDocument::kMostUnits;

// The text of any document, with its line ends when it is one of ours.
struct Source {
  explicit Source(IDocument* document) : own(query<TextDocument>(document)) {
    const ITextSource* const source = own ? nullptr : query<ITextSource>(document);
    if (source) {
      copied.resize(source->textLength());
      copied.resize(source->copyText(0, source->textLength(), copied.data()));
    }
    hasText = own || source;
  }
  std::wstring_view text() const noexcept { return own ? own->text() : std::wstring_view(copied); }

  TextDocument* own;
  TextUnits copied;
  bool hasText;
};

class TextFormat : public BSmartObject, public IDocFormat {
  CORVIX_DECLARED_IDENTITY(TextFormat, descriptor::DocFormat_Text, BSmartObject, IDocFormat)

 public:
  const wchar_t* name() const noexcept override { return L"Text"; }

  i32 probe(IBStream* stream) override { return look(stream) ? kSure : 0; }

  IBSmartObject* readDocument(IBStream* stream, IBReport* report) override {
    BInputStream* const from = query<BInputStream>(stream);
    const auto bytes = make<BMemoryOutputStream>(kMostBytes);
    const u32 size = stream->size();
    if (size <= kMostBytes && bytes->setSize(size)) bytes->seek(0);  // room for all of it at once
    const bool isRead = from && copy(*from, *bytes).end == CopyEnd::Done;
    if (!isRead || !bytes->setSize(bytes->getPosition())) {
      report->addLine((name() + std::wstring(L": it is too large")).c_str());
      return nullptr;
    }
    const std::string_view content(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    i32 encoding = encodingOf(content);
    TextPiece piece;
    const wchar_t* why = decodeText(content, encoding, piece.text, piece.ends);
    if (why && encoding == ITextEditor::kUtf8 && content.find('\0') == content.npos) {
      encoding = ITextEditor::kAnsi;
      why = decodeText(content, encoding, piece.text, piece.ends);
    }
    if (why) {
      report->addLine((name() + std::wstring(L": ") + why).c_str());
      return nullptr;
    }
    return create(std::move(piece), encoding);
  }

  bool writeDocument(IDocument* document, IBStream* stream, IBReport* report) override {
    const Source source(document);
    Bytes bytes;
    const wchar_t* const why = source.hasText ? encode(*document, source, bytes) : L"the document has no text";
    if (why) report->addLine((name() + std::wstring(L": ") + why).c_str());
    BOutputStream* const to = query<BOutputStream>(stream);
    return !why && to && (bytes.empty() || to->write(bytes.data(), static_cast<u32>(bytes.size())) == bytes.size());
  }

  IBSmartObject* createDocument() override { return create({}, ITextEditor::kUtf8); }

 protected:
  static constexpr i32 kSure = 100;

  virtual IBSmartObject* create(TextPiece piece, i32 encoding) { return new TextDocument(std::move(piece), encoding); }

  // Null, or why it cannot be written.
  virtual const wchar_t* encode(IDocument&, const Source& source, Bytes& bytes) {
    static const LineEnds kPlain;
    return encodeText(source.text(), source.own ? source.own->lineEnds() : kPlain,
                      source.own ? source.own->encoding() : i32{ITextEditor::kUtf8}, bytes);
  }

  // Whether it begins as a text: without what no text has for a control character.
  static bool look(IBStream* stream) {
    std::array<char, 4096> beginning;
    BInputStream* const from = query<BInputStream>(stream);
    const u32 size = from ? readFully(*from, beginning.data(), beginning.size()) : 0;
    const std::string_view bytes(beginning.data(), size);
    const i32 encoding = encodingOf(bytes);
    if (encoding == ITextEditor::kUtf16LittleMarked || encoding == ITextEditor::kUtf16BigMarked) return true;
    const bool isLittle = encoding == ITextEditor::kUtf16Little, isBig = encoding == ITextEditor::kUtf16Big;
    const std::size_t step = isLittle || isBig ? 2 : 1;
    for (std::size_t i = 0; i + step <= bytes.size(); i += step) {
      const unsigned first = static_cast<unsigned char>(bytes[i]);
      const unsigned last = static_cast<unsigned char>(bytes[i + step - 1]);
      const unsigned unit = isLittle ? first | last << 8 : isBig ? first << 8 | last : first;
      if (unit < 32 && (unit < '\b' || unit > '\r') && unit != 27) return false;
    }
    return true;
  }
};

// Less sure than plain text: any text is Markdown.
class MarkdownFormat final : public TextFormat {
  CORVIX_DECLARED_IDENTITY(MarkdownFormat, descriptor::DocFormat_Markdown, TextFormat)

 public:
  const wchar_t* name() const noexcept override { return L"Markdown"; }
  i32 probe(IBStream* stream) override { return look(stream) ? kSure - 1 : 0; }

 private:
  IBSmartObject* create(TextPiece piece, i32 encoding) override {
    return new MarkdownDocument(std::move(piece), encoding);
  }
};

class HtmlFormat final : public TextFormat {
  CORVIX_DECLARED_IDENTITY(HtmlFormat, descriptor::DocFormat_Html, TextFormat)

 public:
  const wchar_t* name() const noexcept override { return L"HTML page"; }
  i32 probe(IBStream*) override { return 0; }
  IBSmartObject* readDocument(IBStream*, IBReport*) override { return nullptr; }
  IBSmartObject* createDocument() override { return nullptr; }

 private:
  static bool appendEscaped(std::wstring_view text, Bytes& html) {
    Bytes plain;
    if (!toUtf8(text, plain)) return false;
    for (const char c : plain) {
      if (c == '<') {
        html += "&lt;";
      } else if (c == '&') {
        html += "&amp;";
      } else {
        html += c;
      }
    }
    return true;
  }

  const wchar_t* encode(IDocument& document, const Source& source, Bytes& html) override {
    IOutline* const outline = query<IOutline>(&document);
    const bool hasHeading = outline && outline->headingCount() > 0;
    html = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>";
    bool isWhole = appendEscaped(hasHeading ? outline->headingText(0) : document.title(), html);
    html += "</title>\n</head>\n<body>\n";
    if (query<MarkdownDocument>(source.own)) {
      isWhole = isWhole && htmlOfMarkdown(source.text(), html);
    } else {
      html += "<pre>\n";
      isWhole = isWhole && appendEscaped(source.text(), html);
      html += "</pre>\n";
    }
    html += "</body>\n</html>\n";
    return isWhole ? nullptr : L"there is half a character in it";
  }
};

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN(corvix::rowFor<descriptor::DocFormat_Text, corvix::TextFormat>(),
              corvix::rowFor<descriptor::DocFormat_Markdown, corvix::MarkdownFormat>(),
              corvix::rowFor<descriptor::DocFormat_Html, corvix::HtmlFormat>())
