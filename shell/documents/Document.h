// IDocument: an open document. What else it offers (pages, text, an outline) is had by asking for the interface of that
// with `query`. Texts are good until it changes. Formats derive theirs from BDocument. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IStateList;

class IDocument : public IBTransportable {
  CORVIX_IDENTITY(IDocument, 0xD1FFB145, 0x94E27ADA, 0xBEB824DF, 0x9E215492, IBTransportable)

 public:
  // The full path of a file of the system, else a location; empty for one that was never saved.
  virtual const wchar_t* location() const noexcept = 0;
  virtual const wchar_t* title() const noexcept = 0;  // for the user, without marks: "notes.txt"
  virtual bool isModified() const noexcept = 0;

  // The name under which its format is declared: "DocFormat.Png".
  virtual const wchar_t* formatName() const noexcept = 0;

  // Cannot be saved where it came from: the file or its supplier does not allow it, or the format is only read.
  virtual bool isReadOnly() const noexcept = 0;

  // Its steps to undo and redo; null when it keeps none.
  virtual IStateList* history() = 0;
};

// The side of a document that its manager calls. One without it stays where its format left it.
class IDocumentPlace : public IBTransportable {
  CORVIX_IDENTITY(IDocumentPlace, 0xDCE72AB0, 0x2F2CFB1E, 0x2649B451, 0xEFBDF42A, IBTransportable)

 public:
  // What the document holds is what is kept there: it was just read or written, or made new, with an empty location.
  // From now on it is unmodified, and tells these texts; they are copied.
  virtual void setPlace(const wchar_t* location, const wchar_t* title, const wchar_t* formatName, bool isReadOnly) = 0;
};

}  // namespace corvix
