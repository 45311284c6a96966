// Two kinds of documents without any library: pages of lines ("*.pages": so many as the file has bytes), text in UTF-8
// without a history ("*.plain").
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "descriptor.h"
#include "graphics/IAGDC.h"
#include "shell/Plugin.h"
#include "shell/documents/BDocument.h"
#include "shell/documents/DocFormat.h"
#include "shell/documents/PagedDocument.h"
#include "shell/documents/TextSource.h"

#include <algorithm>
#include <string>

namespace corvix {

namespace {

class Pages final : public BDocument, public IPagedDocument {
  CORVIX_IDENTITY(Pages, 0x9688492C, 0x42B9E6E0, 0x06687B74, 0xAFD4576F, BDocument, IPagedDocument)

 public:
  explicit Pages(std::string bytes) : bytes_(std::move(bytes)) {}
  i32 pageCount() const noexcept override { return static_cast<i32>(bytes_.size()); }
  bool pageSize(i32 index, double* width, double* height) const noexcept override {
    if (index < 0 || index >= pageCount()) return false;
    *width = 300, *height = index % 2 ? 200 : 400;
    return true;
  }
  bool drawPage(i32 index, IAGDC& context, const Matrix& toDevice, IDrawWatch*) override {
    const Point from = toDevice.apply({20, 20}), to = toDevice.apply({280, index % 2 ? 180.0 : 380.0});
    context.setFillColor(rgb(200, static_cast<u32>(40 * index) & 255, 60));
    return context.fillRect(from.x, from.y, to.x - from.x, to.y - from.y);
  }

 private:
  std::string bytes_;
};

class Text final : public BDocument, public ITextSource, public ITextEditor {
  CORVIX_IDENTITY(Text, 0xCF383388, 0x976F4527, 0x5D51551C, 0x15FE90AB, BDocument, ITextSource, ITextEditor)

 public:
  explicit Text(const std::string& bytes) : text_(bytes.begin(), bytes.end()) { std::erase(text_, L'\r'); }
  u32 textLength() const noexcept override { return static_cast<u32>(text_.size()); }
  u32 copyText(u32 from, u32 count, wchar_t* to) const noexcept override {
    return from > text_.size() ? 0 : static_cast<u32>(text_.copy(to, count, from));
  }
  u32 lineCount() const noexcept override { return lineOf(textLength()) + 1; }
  u32 lineStart(u32 line) const noexcept override {
    std::size_t at = 0;
    for (; line && at < text_.size(); ++at) line -= text_[at] == L'\n';
    return static_cast<u32>(at);
  }
  u32 lineOf(u32 position) const noexcept override {
    const std::wstring before = text_.substr(0, position);
    return static_cast<u32>(std::count(before.begin(), before.end(), L'\n'));
  }
  BNotifySender& textSender() noexcept override { return sender_; }
  bool replaceText(u32 from, u32 count, const wchar_t* text, u32 length) override {
    if (text_.size() - count + length > 1000) return false;
    text_.replace(from, count, text, length);
    setModified();
    broadcastTo<ITextListener>(sender_,
                               [&](ITextListener& one) { return one.onTextChanged(*this, from, count, length); });
    return true;
  }
  i32 encoding() const noexcept override { return kUtf8; }
  bool setEncoding(i32) override { return false; }
  i32 lineEnd() const noexcept override { return kLf; }
  bool setLineEnd(i32) override { return false; }
  const std::wstring& text() const { return text_; }

 private:
  std::wstring text_;
  BNotifySender sender_;
};

template <class Document>
class Format final : public BSmartObject, public IDocFormat {
  CORVIX_IDENTITY(Format, 0x7D8E4ECB, 0x93153574, 0xBD863647, 0x5A95519A, BSmartObject, IDocFormat)

 public:
  const wchar_t* name() const noexcept override { return L"test"; }
  i32 probe(IBStream*) override { return 255; }
  IBSmartObject* readDocument(IBStream* stream, IBReport*) override {
    auto* const input = corvix::query<BRAInputStream>(stream);
    std::string bytes(input ? static_cast<std::size_t>(input->size()) : 0, '\0');
    if (input) bytes.resize(readFully(*input, reinterpret_cast<u8*>(bytes.data()), static_cast<u32>(bytes.size())));
    return new Document(std::move(bytes));
  }
  bool writeDocument(IDocument*, IBStream*, IBReport*) override { return false; }
  IBSmartObject* createDocument() override { return new Document(std::string()); }
};

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN({descriptor::DocFormat_TestPages::name, corvix::create<corvix::Format<corvix::Pages>>},
              {descriptor::DocFormat_TestText::name, corvix::create<corvix::Format<corvix::Text>>})
