// IDialog: a dialog that a plug-in brings, declared under "Dialog." and its name ("Dialog.OpenSave"). A program asks
// for it with IShell::showCustomDialog, without knowing whose it is. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

struct CustomDialogRequest;

class IDialog : public IBTransportable {
  CORVIX_IDENTITY(IDialog, 0x7BD1E3C4, 0xF0A2925E, 0x4C6837B9, 0xD89E5A06, IBTransportable)

 public:
  // Shows it and returns when the user is done: notify::kTaken with `answer` filled in, notify::kStop when it cannot be
  // shown, notify::kGoOn to leave the request to the next object declared under the name.
  virtual int show(CustomDialogRequest& request) = 0;
};

}  // namespace corvix
