#pragma once

#include "plugins/format-text/TextCoding_p.h"
#include "shell/documents/BDocument.h"
#include "shell/documents/TextSource.h"

namespace corvix {

// A piece of text with the ends of its lines.
struct TextPiece {
  TextUnits text;
  LineEnds ends;
};

class TextDocument : public BDocument, public ITextSource, public ITextEditor {
  CORVIX_IDENTITY(TextDocument, 0x64BAE1B6, 0xBF34F8C3, 0x94AEB953, 0x358FB962, BDocument, ITextSource, ITextEditor)

 public:
  static constexpr u32 kMostUnits = 64u << 20;

  TextDocument();
  TextDocument(TextPiece content, i32 encoding);

  u32 textLength() const noexcept override { return static_cast<u32>(text_.size()); }
  u32 copyText(u32 from, u32 count, wchar_t* to) const noexcept override;
  u32 lineCount() const noexcept override { return static_cast<u32>(starts_.size()); }
  u32 lineStart(u32 line) const noexcept override { return line < lineCount() ? starts_[line] : textLength(); }
  u32 lineOf(u32 position) const noexcept override;
  BNotifySender& textSender() noexcept override { return textSender_; }

  bool replaceText(u32 from, u32 count, const wchar_t* text, u32 length) override;
  i32 encoding() const noexcept override { return encoding_; }
  bool setEncoding(i32 encoding) override;
  i32 lineEnd() const noexcept override;
  bool setLineEnd(i32 lineEnd) override;

  std::wstring_view text() const noexcept { return text_; }
  const LineEnds& lineEnds() const noexcept { return ends_; }

  // Puts a piece in the place of `count` units, which `piece` holds then, and tells the listeners. Throws
  // std::bad_alloc; nothing has changed then.
  void exchange(u32 from, u32 count, TextPiece& piece);

 protected:
  // Before the listeners are told.
  virtual void onChanged() noexcept {}

 private:
  bool isInsideCharacter(u32 position) const noexcept;
  void countLines();

  TextUnits text_;
  LineEnds ends_;
  std::vector<u32, HeapAllocator<u32>> starts_;  // of lines
  i32 encoding_ = kUtf8;
  u8 usualEnd_ = kLf;  // of lines that are typed
  BNotifySender textSender_;
};

}  // namespace corvix
