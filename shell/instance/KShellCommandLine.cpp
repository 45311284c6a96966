#include "shell/CommandLine.h"

#include "shell/DeclaredObjects_p.h"
#include "shell/instance/KShell_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr wchar_t kProcessors[] = L"CommandLine.Processors";
constexpr std::wstring_view kManufacturer = L"Teldane";

struct Processor {
  Ref<ICommandLine> object;
  bool isManufacturers;
};

std::vector<Processor> collectProcessors(IPluginManager& manager) {
  std::vector<Processor> processors;
  forEachDeclared<ICommandLine>(manager, kProcessors, [&](ICommandLine& object, IPluginInterface& entry) {
    const wchar_t* const manufacturer = entry.module()->attribute(L"manufacturer");
    processors.push_back({Ref<ICommandLine>::share(&object), manufacturer && manufacturer == kManufacturer});
    return true;
  });
  std::stable_partition(processors.begin(), processors.end(), [](const Processor& one) { return one.isManufacturers; });
  return processors;
}

// How many arguments the first processor that takes any has taken.
i32 offer(const std::vector<Processor>& processors, const wchar_t* const* arguments, i32 count) {
  for (const Processor& processor : processors) {
    ICommandLine* const asked = processor.object.get();
    const i32 taken = callForeign(codeOf(asked), kProcessors, [&] { return asked->takeArguments(arguments, count); });
    if (taken > 0) return std::min(taken, count);
  }
  return 0;
}

}  // namespace

i32 KShell::processCommandLine(const wchar_t* const* arguments, i32 count) {
  const std::vector<Processor> processors = collectProcessors(*pluginManager_);
  i32 left = 0;
  for (i32 at = 0; arguments && at < count;) {
    const i32 taken = offer(processors, arguments + at, count - at);
    left += taken == 0;
    at += std::max(taken, 1);
  }
  return left;
}

}  // namespace corvix
