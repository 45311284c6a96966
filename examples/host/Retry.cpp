#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"

namespace host {

using namespace corvix;

namespace {

// Nothing in `name`: every module that is left out.
int retry(IPluginManager& manager, const std::string& name) {
  int leftOut = 0, wrong = 0;
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    IPluginModule& module = *manager.moduleAt(i);
    const std::string file = fileName(module.path());
    if (!name.empty() && name != file && wide(name) != module.name()) continue;
    IStartRecord& record = *query<IStartRecord>(&module);
    if (!record.isLeftOut()) continue;
    ++leftOut;
    if (record.tryAgain()) {
      std::printf("%s is tried again at the next start.\n", file.c_str());
    } else {
      ++wrong;
      std::fprintf(stderr, "corvix-host: the file that its reason names cannot be deleted: %s\n",
                   shown(module.reason(), kSentence).c_str());
    }
  }
  if (leftOut) return wrong ? 1 : 0;
  if (name.empty()) {
    std::printf("No plug-in is left out.\n");
    return 0;
  }
  std::fprintf(stderr, "corvix-host: no plug-in of that name is left out: \"%s\"\n", name.c_str());
  return 1;
}

}  // namespace

const Command retryCommand("retry", "Try plug-ins again in which an earlier start ended, from the next start on",
                           {{"module", "Its file (greeter.dll) or its name; none: all of them", Argument::Optional}},
                           [](Host& host, const Texts& given) { return retry(host.describedOnly(), given[0]); });

}  // namespace host
