// Global events: named occurrences that reach everybody who cares, in modules that do not know each other. A
// plug-in takes part by declaring an interface named "GlobalEvent." and the event's name, whose objects offer
// IGlobalEventTarget; its attribute "Order" says when its turn is. Raised by IPluginManager::raiseEvent.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IGlobalEvent : public IBTransportable {
  CORVIX_IDENTITY(IGlobalEvent, 0xC94D958F, 0xCE19C65C, 0xAC822F16, 0x1AED0482, IBTransportable)

 public:
  // Without "GlobalEvent." before it. What else an event tells is had by asking it for other interfaces.
  virtual const wchar_t* name() const noexcept = 0;
};

// Receives events, as a declared target or as a listener of the lists that are told before and after the
// targets.
class IGlobalEventTarget : public IBTransportable {
  CORVIX_IDENTITY(IGlobalEventTarget, 0x8BA87CB5, 0x8E5C831B, 0x93EB78D3, 0xFEF5137B, IBTransportable)

 public:
  // A listener's answer is one of notify::k... and ends the delivery to its own list at most; a target's
  // answer is ignored.
  virtual int onGlobalEvent(IGlobalEvent& event) = 0;
};

// The process-wide lists of IGlobalEventTarget, told before and after the targets of every event. Kept in the
// global data under IPluginManager and "preGlobalEvent" or "postGlobalEvent".
CORVIX_API BNotifySender& preGlobalEvents();
CORVIX_API BNotifySender& postGlobalEvents();

}  // namespace corvix
