// The catalogue of a plug-in folder: what its module files declared when they were last read, kept in one file of the
// user's local data so that a later start need not open each of them. A module's entry counts as long as the folder
// says of its file what it said then: size, both times and identity; docs/plugins.md says the rest. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

// Where the catalogue stands; the plug-in manager answers to it.
class IModuleCatalogue : public IBTransportable {
  CORVIX_IDENTITY(IModuleCatalogue, 0x9C41E7B2, 0x4E0D53AF, 0xB87126D9, 0x36FA08C5, IBTransportable)

 public:
  // The file of the folder that was scanned last; empty when none is kept. Valid until the next scan.
  virtual const wchar_t* path() const noexcept = 0;

  // How many modules were taken from catalogues so far, and how many files had to be read.
  virtual i32 takenCount() const noexcept = 0;
  virtual i32 readCount() const noexcept = 0;
};

// The switch of the running executable, from its next start on: whether it keeps catalogues. It does unless it is told
// not to.
CORVIX_API bool isCatalogueSwitchedOn();
CORVIX_API bool switchCatalogue(bool on);  // false if the registry does not let us

}  // namespace corvix
