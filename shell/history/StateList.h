// IStateList: the steps of one document, back and forth. What throws counts as what answers false. [shell thread]
#pragma once

#include "core/baselib/objects/NotifySender.h"

namespace corvix {

class IState;
class IStateList;

// Told after a list has changed.
class IStateListener : public IBTransportable {
  CORVIX_IDENTITY(IStateListener, 0x1914057B, 0xC178654B, 0x8D56EF16, 0x2BF7149B, IBTransportable)

 public:
  virtual int onStatesChanged(IStateList& list) = 0;  // one of notify::k...
};

class IStateList : public IBTransportable {
  CORVIX_IDENTITY(IStateList, 0x44FAC2E0, 0x11A845D2, 0xD1317962, 0x7F148AF6, IBTransportable)

 public:
  // A step that was just done; what could be done again is let go. Keeps a reference, unless the step before takes it
  // in: one that was added last, alone, and is not what was saved. False, and nothing kept, when the state is no
  // counted object, or while a step is gone to.
  virtual bool add(IState* state) = 0;

  // What is added between the two is one step, with this text; inside each other the outermost count. With nothing
  // added there is no step. Until the end there is no going back or forward.
  virtual void begin(const wchar_t* text) = 0;
  virtual void end() = 0;

  virtual bool canGoBack() const noexcept = 0;
  virtual bool canGoForward() const noexcept = 0;

  // False when there is no such step, or it cannot be done; everything is as before then. A group of which a part can
  // neither be done nor taken back ends in an empty list that is never at what was saved: nobody knows where it stands.
  virtual bool goBack() = 0;
  virtual bool goForward() = 0;

  // Of the step that is next, empty when there is none; good until the list changes.
  virtual const wchar_t* backText() const noexcept = 0;
  virtual const wchar_t* forwardText() const noexcept = 0;

  // What is now is what was saved; a new list is at it. A step that was saved and then let go is never reached again,
  // whatever is done instead.
  virtual void markSaved() = 0;
  virtual bool isAtSaved() const noexcept = 0;

  // Tells IStateListener.
  virtual BNotifySender& sender() noexcept = 0;
};

}  // namespace corvix
