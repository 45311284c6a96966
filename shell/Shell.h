// IShell: the one object through which a program and its plug-ins reach everything else.
#pragma once

#include "shell/PluginManager.h"

namespace corvix {

class CORVIX_API IShell : public BSmartObject {
  CORVIX_IDENTITY(IShell, 0x8E1A45D9, 0x4D26B7F3, 0x95C80E6B, 0x47F3A210, BSmartObject)

 public:
  // The shell of the process. The first call makes it, reads the library's own descriptor and those of the
  // folder "plugins" beside the executable; it must come from the main thread before any other uses the
  // shell. The shell goes when the process ends: it is not released.
  static IShell* getInstance();

  // Adds no reference.
  virtual IPluginManager* pluginManager() const noexcept = 0;

  // A program that runs without a user (a service, a build step, a test) says so before anything can go
  // wrong: what would be shown in a message box is then left to the log and to `IPluginModule::reason`.
  virtual bool isUnattended() const noexcept = 0;
  virtual void setUnattended(bool unattended) noexcept = 0;

  // Memory ran out: asks the user whether to try again, with Retry and Cancel. False without a user. `kind` is
  // 0. [any thread]
  virtual bool askToRetry(u32 kind) = 0;

  // Calls the function on the shell's thread: at once if that is this one, else from its message loop. False if
  // the system cannot take the message; the function is then not called. [any thread]
  virtual bool runOnShellThread(void (*function)(void* argument), void* argument) = 0;
};

}  // namespace corvix
