// IDocManager: the open documents of a program. The library has one under the name "IDocManager.Instance"; a plug-in
// that declares the name takes its place. docs/documents.md shows formats and programs around it. Nothing here adds a
// reference unless it says so. [shell thread]
#pragma once

#include "core/baselib/objects/Collection.h"

namespace corvix {

class IBReport;
class IDocument;

enum class DocQuestion : i32 {
  // Yes: save and close, no: close without, cancel: leave it open. Who answers yes for a document that has no location
  // yet has given it one (saveDocumentAs).
  SaveBeforeClosing,
  OverwriteChanged,  // the file is not what was read or saved last. yes: overwrite it, anything else: leave it alone
};
enum class DocAnswer : i32 { Cancel, Yes, No };

// Who asks the user. `text` is a whole sentence for him.
class IDocQuestions : public IBTransportable {
  CORVIX_IDENTITY(IDocQuestions, 0xF63E10FC, 0x8B24E394, 0x51FD4278, 0x840152D0, IBTransportable)

 public:
  virtual DocAnswer ask(DocQuestion question, IDocument* document, const wchar_t* text) = 0;
};

class IDocManager : public IBTransportable {
  CORVIX_IDENTITY(IDocManager, 0x4F78DD0F, 0x3EE11323, 0x0B95C324, 0xDBC9C9C5, IBTransportable)

 public:
  // Opens a path or location; the document that is open already when two names are of one file. It becomes the active
  // one, "Document.Opened" and "OnOpenDocument" are told, of one that was open "Document.Activated" in any case. Null
  // when it cannot be opened, or the user stopped it: see `report`.
  virtual IDocument* openDocument(const wchar_t* location) = 0;

  // Asks what to do with changes first. A program without a user drops them: the file stays as it is, and the log says
  // so. False when the document stays open: the user cancelled, it could not be saved or is just being saved, or it is
  // none of these.
  virtual bool closeDocument(IDocument* document) = 0;
  virtual i32 documentCount() const noexcept = 0;
  virtual IDocument* documentAt(i32 index) const noexcept = 0;  // null outside the list

  // An empty one of the format declared under this name; it becomes the active one. Null when there is no such format,
  // or it has no empty documents.
  virtual IDocument* newDocument(const wchar_t* formatName) = 0;

  // Writes to a file beside the document's, which then takes its place in one step: whatever happens on the way, one
  // whole file remains, the old or the new. A file that was changed by somebody else since is asked about first; an
  // unattended program leaves it alone. False when it was not saved, as while it is being saved already; the document
  // is as modified as before then.
  virtual bool saveDocument(IDocument* document) = 0;

  // The same to another place, which is the document's from then on. With no format (null or empty) the one whose masks
  // fit, else the document's own. By a format that is only written ("w") a copy is made, and the document stays where
  // and what it is.
  virtual bool saveDocumentAs(IDocument* document, const wchar_t* location, const wchar_t* formatName) = 0;

  // The one that actions are about; null when none is open. Setting tells "Document.Activated"; false for one that is
  // not open. Null sets none.
  virtual IDocument* activeDocument() const noexcept = 0;
  virtual bool setActiveDocument(IDocument* document) = 0;

  // IFileFilter objects for a dialog, from what descriptors say. With a reference that the caller owns.
  virtual IBCollection* dialogFilters(bool forWriting) = 0;

  // What was opened or saved lately, the last one first, no more than setting Interface\RecentFileNo says: as in
  // IDocument::location. Good until the list changes; null outside it. It outlives the program.
  virtual i32 recentCount() = 0;
  virtual const wchar_t* recentAt(i32 index) = 0;
  virtual void forgetRecent(const wchar_t* location) = 0;  // null: all

  // What the operation that ended last had to say: empty when it went well and nothing was left out. Good until the
  // next one ends.
  virtual IBReport* report() noexcept = 0;

  // Who asks instead of message boxes, and in a program without a user, too; null: nobody. Stops before it goes.
  virtual void setQuestions(IDocQuestions* questions) noexcept = 0;
};

// What the events "Document.Opened", "Document.Closing", "Document.Closed", "Document.Saved" and "Document.Activated"
// of IDocManager tell: ask the IGlobalEvent for this. When "Closed" is told nothing but its texts is left of a
// document.
class IDocumentEvent : public IBTransportable {
  CORVIX_IDENTITY(IDocumentEvent, 0x2B5F64D6, 0x520F1468, 0x014F0E76, 0xC7E6EEAA, IBTransportable)

 public:
  virtual IDocument* document() const noexcept = 0;  // null once it is closed, and when none is active
  virtual const wchar_t* location() const noexcept = 0;
};

}  // namespace corvix
