// IDocFormat: a kind of document that can be read and written, declared under a name of the family "DocFormat.". What
// the descriptor says of it is all that a list of formats, an open dialog or the choice of a reader needs; its code is
// loaded when it is asked to read, write or make one:
//
//   <Interface Name="DocFormat.Png" GUID="..." sHumanName="PNG image" Pattern="*.png" Magic="89504E470D0A1A0A"
//   Access="rw"/>
//
// Pattern: masks of file names with ";" between. Magic: how its files begin, in hexadecimal with ".." for any byte,
// several with ";" between. Access: "r", "w" or "rw"; without it "r". [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBReport;
class IBStream;
class IDocument;

// Where a stream comes from. What a document manager has formats read answers to it: a format that needs a key asks
// IBSecretary for that of this place.
class IStreamPlace : public IBTransportable {
  CORVIX_IDENTITY(IStreamPlace, 0x0EB3C3BC, 0xC6143F79, 0xEC996890, 0xBB84998D, IBTransportable)

 public:
  virtual const wchar_t* location() const noexcept = 0;  // as in IDocument::location; good as long as the call
};

class IDocFormat : public IBTransportable {
  CORVIX_IDENTITY(IDocFormat, 0x4393A783, 0x54DB94F6, 0x9EC656E2, 0xD4BC1D37, IBTransportable)

 public:
  virtual const wchar_t* name() const noexcept = 0;  // for the user: "PNG image"

  // How sure it is that the stream holds this format, after a look at its beginning: 0 not at all, 255 quite.
  virtual i32 probe(IBStream* stream) = 0;

  // A document with a reference for the caller; null when the stream, a BRAInputStream at its beginning, holds none of
  // this format. Why is a line of the report. The stream tells its IStreamPlace.
  virtual IBSmartObject* readDocument(IBStream* stream, IBReport* report) = 0;

  // Writes the document, which need not be of this format: what it offers counts. The stream is a BOutputStream that
  // begins empty. False, and why in the report, when this format cannot hold it or the stream does not take it all.
  virtual bool writeDocument(IDocument* document, IBStream* stream, IBReport* report) = 0;

  // A new one, empty, with a reference for the caller; null when there are no empty ones of this format.
  virtual IBSmartObject* createDocument() = 0;
};

}  // namespace corvix
