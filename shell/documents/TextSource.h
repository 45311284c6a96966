// The sides of a document that holds text: reading it, changing it, its headings. Text is UTF-16, positions and counts
// are in its units from 0; every line but the last ends with "\n" alone, whatever stands in the file. [shell thread]
#pragma once

#include "core/baselib/objects/NotifySender.h"

namespace corvix {

class ITextSource;

// Told after a text has changed, by whomever: an edit, a step back.
class ITextListener : public IBTransportable {
  CORVIX_IDENTITY(ITextListener, 0xFF97F35B, 0x8A62FCF6, 0x9B50188C, 0x5AEE75D1, IBTransportable)

 public:
  // In the place of `removed` units at `from` there are `inserted` others. Returns one of notify::k... .
  virtual int onTextChanged(ITextSource& text, u32 from, u32 removed, u32 inserted) = 0;
};

class ITextSource : public IBTransportable {
  CORVIX_IDENTITY(ITextSource, 0x1BF77C21, 0xCC6A593F, 0xB95917EE, 0xE2F7D545, IBTransportable)

 public:
  virtual u32 textLength() const noexcept = 0;

  // Copies up to `count` units from there on, without a zero behind them; returns how many.
  virtual u32 copyText(u32 from, u32 count, wchar_t* to) const noexcept = 0;

  // At least 1. The start of a line behind the last is the text's length; a position behind the end is in the last
  // line.
  virtual u32 lineCount() const noexcept = 0;
  virtual u32 lineStart(u32 line) const noexcept = 0;
  virtual u32 lineOf(u32 position) const noexcept = 0;

  // Tells ITextListener.
  virtual BNotifySender& textSender() noexcept = 0;
};

// Changing a text. Every change is a step of the document's history; letters that are typed or rubbed out one after the
// other become one.
class ITextEditor : public IBTransportable {
  CORVIX_IDENTITY(ITextEditor, 0x00F33860, 0x19E30744, 0xA1B2C877, 0xC452DAFC, IBTransportable)

 public:
  // Puts `length` units in the place of `count` at `from`; "\r\n" and "\r" become "\n". Ends behind the text, and in
  // the middle of a character of two units, are moved inwards. False when the text would grow too long; nothing has
  // changed.
  virtual bool replaceText(u32 from, u32 count, const wchar_t* text, u32 length) = 0;

  // How it is written to a file. Both count as a change without a step. Ansi is the system's code page, in which not
  // every text can be written.
  enum Encoding : i32 { kUtf8, kUtf8Marked, kUtf16Little, kUtf16LittleMarked, kUtf16Big, kUtf16BigMarked, kAnsi };
  enum LineEnd : i32 { kLf, kCrLf, kCr, kMixed };  // mixed: each line keeps its own
  virtual i32 encoding() const noexcept = 0;
  virtual bool setEncoding(i32 encoding) = 0;
  virtual i32 lineEnd() const noexcept = 0;
  virtual bool setLineEnd(i32 lineEnd) = 0;  // not to mixed
};

// The headings of a document, in their order.
class IOutline : public IBTransportable {
  CORVIX_IDENTITY(IOutline, 0xFFFE4DC6, 0xE884CDDF, 0x970EB006, 0x490EC774, IBTransportable)

 public:
  virtual i32 headingCount() = 0;
  virtual i32 headingLevel(i32 index) = 0;            // from 1; 0 outside the list
  virtual const wchar_t* headingText(i32 index) = 0;  // good until the document changes; null outside the list
  virtual u32 headingPlace(i32 index) = 0;            // a position in the text, or a page
};

}  // namespace corvix
