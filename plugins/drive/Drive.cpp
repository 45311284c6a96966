// "--drive FILE": takes the steps of a file.
#include "descriptor.h"
#include "plugins/drive/Steps.h"
#include "shell/CommandLine.h"
#include "shell/Plugin.h"

#include <cstdio>
#include <cwchar>

namespace corvix::drive {

namespace {

class Drive final : public BSmartObject, public ICommandLine {
  CORVIX_DECLARED_IDENTITY(Drive, descriptor::CommandLine_Processors, BSmartObject, ICommandLine)

 public:
  i32 takeArguments(const wchar_t* const* arguments, i32 count) override {
    if (std::wcscmp(arguments[0], L"--drive") != 0 || count < 2) return 0;
    if (!Steps::begin(arguments[1])) {
      std::fwprintf(stderr, L"--drive %ls: the file cannot be read\n", arguments[1]);
      return 0;
    }
    return 2;
  }
};

}  // namespace

}  // namespace corvix::drive

CORVIX_PLUGIN(corvix::rowFor<descriptor::CommandLine_Processors, corvix::drive::Drive>())
