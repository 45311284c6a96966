#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"

#include <algorithm>

#include <windows.h>

namespace host {

using namespace corvix;

namespace {

// By its file's name or path, or its own name, in any letter case.
bool isMeant(const IPluginModule& module, std::wstring name) {
  std::replace(name.begin(), name.end(), L'/', L'\\');
  const std::wstring_view path = module.path();
  const std::wstring_view file = path.substr(path.find_last_of(L'\\') + 1);
  const std::wstring_view stem = file.substr(0, file.find_last_of(L'.'));
  const auto same = [&](std::wstring_view one) {
    return CompareStringOrdinal(one.data(), static_cast<int>(one.size()), name.data(), static_cast<int>(name.size()),
                                TRUE) == CSTR_EQUAL;
  };
  return same(path) || same(file) || same(stem) || same(module.name()) ||
         (name.find(L'\\') != std::wstring::npos && path.size() > name.size() &&
          path[path.size() - name.size() - 1] == L'\\' && same(path.substr(path.size() - name.size())));
}

// Nothing in `name`: every module that is left out.
int retry(IPluginManager& manager, const std::string& name) {
  int leftOut = 0, wrong = 0;
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    IPluginModule& module = *manager.moduleAt(i);
    const std::string file = fileName(module.path());
    if (!name.empty() && !isMeant(module, wide(name))) continue;
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
