#include "IMyInterface.h"
#include "shell/PluginManager.h"
#include "shell/Shell.h"

#include <cstdio>

int main() {
  // Starts the shell, which reads the descriptor of every module in the folder "plugins".
  corvix::IPluginManager& manager = *corvix::IShell::getInstance()->pluginManager();
  for (corvix::i32 i = 0; i < manager.interfaceCount(); ++i) {
    const corvix::IPluginInterface& offered = *manager.interfaceAt(i);
    std::printf("%ls, from %ls\n", offered.name(), offered.module()->name());
  }

  // An object by name: its module is loaded now.
  const auto mine = corvix::createObject<IMyInterface>(manager, L"My.Interface");
  if (!mine) {
    std::printf("There is no My.Interface.\n");
    return 1;
  }
  std::printf("Twice 21 is %d.\n", mine->twice(21));
  return 0;
}
