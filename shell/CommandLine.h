// ICommandLine: takes arguments of the program's command line. A plug-in declares one under the name
// "CommandLine.Processors"; see IShell::processCommandLine.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class ICommandLine : public IBTransportable {
  CORVIX_IDENTITY(ICommandLine, 0xDD8A24B0, 0x36AD392C, 0x5DD87C1A, 0x8B548139, IBTransportable)

 public:
  // How many arguments it takes from the first on: 0 when that one is not its own, 2 for an option and its
  // value. `count` is at least 1.
  virtual i32 takeArguments(const wchar_t* const* arguments, i32 count) = 0;
};

}  // namespace corvix
