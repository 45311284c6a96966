// IActionState: the side of an action that is shown as more than its name. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IActionState : public IBTransportable {
  CORVIX_IDENTITY(IActionState, 0xA60CA204, 0x9100611C, 0x51083824, 0x0E1E3238, IBTransportable)

 public:
  virtual bool isChecked() const noexcept = 0;  // with a mark before it

  // Instead of that of the menu's template ("Undo typing"); empty: that one. Good until the next call.
  virtual const wchar_t* text() const noexcept = 0;
};

}  // namespace corvix
