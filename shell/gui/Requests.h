// What the dialogs of the program are about, the `argument` of a CustomDialogRequest. Who shows the dialog asks for its
// interface and tells it what the user chose; who asks keeps it. [shell thread]
//
//   "Dialog.OpenSave"  IFileRequest; answers IDOK or IDCANCEL
//   "Dialog.Password"  IPasswordRequest; likewise
//   "Dialog.Options"   none
//   "Dialog.About"     none
#pragma once

#include "core/baselib/objects/Collection.h"

namespace corvix {

class IFileRequest : public IBTransportable {
  CORVIX_IDENTITY(IFileRequest, 0xA5B31190, 0x70100533, 0x4F8B1F3E, 0xCB874759, IBTransportable)

 public:
  virtual bool isSaving() const noexcept = 0;              // else opening, of several at once
  virtual const wchar_t* fileName() const noexcept = 0;    // proposed: a path, a name, empty
  virtual IBCollection* filters() const noexcept = 0;      // IFileFilter objects; null: any file
  virtual const wchar_t* formatName() const noexcept = 0;  // of the filter that is chosen at first; empty: the first
  virtual void choose(const wchar_t* path, const wchar_t* formatName) = 0;  // for each file; empty: by the path
};

class IPasswordRequest : public IBTransportable {
  CORVIX_IDENTITY(IPasswordRequest, 0xD0CD102E, 0x9F43C5B8, 0x7567D949, 0x76F0C114, IBTransportable)

 public:
  virtual const wchar_t* title() const noexcept = 0;  // of what it opens, for the user
  virtual i32 attempt() const noexcept = 0;           // from 1; later ones tell that the last one was wrong

  // Good for the call only: what showed it is wiped after it.
  virtual void takePassword(const wchar_t* password) = 0;
};

}  // namespace corvix
