// IState: one step that a user can take back and do again. Who changes a document derives a class of his own from
// BSmartObject and this, and gives it to the document's IStateList once the change is made. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBStream;

class IState : public IBTransportable {
  CORVIX_IDENTITY(IState, 0x811340B0, 0x5CE7D8AC, 0xCE82A4F3, 0x83AD77E7, IBTransportable)

 public:
  // For the user, behind "Undo": "typing". Good as long as the object, frozen or not.
  virtual const wchar_t* text() const noexcept = 0;

  // False when it cannot be done: nothing has changed then. The list of which it is part does not change meanwhile.
  virtual bool goBack() = 0;
  virtual bool goForward() = 0;

  // Takes in what `next` did, which was just done behind this one, so that both are one step: two letters that are
  // typed. True: `next` is let go. False: nothing has changed.
  virtual bool mergeWith(IState* next) = 0;

  // What it holds in memory, without what a frozen one keeps.
  virtual u32 sizeBytes() const noexcept = 0;

  // Memory is short: writes to the stream (a BOutputStream) what it needs to go on later, and lets its memory go. False
  // when it cannot, or not all of it could be written: nothing has changed then. Must not wait for another thread.
  virtual bool freeze(IBStream* to) = 0;

  // Before a frozen one is gone to: reads from the stream (a BInputStream) what it wrote there. False: it stays frozen.
  virtual bool thaw(IBStream* from) = 0;
};

}  // namespace corvix
