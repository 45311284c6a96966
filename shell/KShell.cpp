#include "shell/KShell.h"

#include "shell/LibraryModule_p.h"
#include "shell/modules/ModuleFile.h"

namespace corvix {

IShell* IShell::getInstance() {
  static KShell shell(libraryModule());
  return &shell;
}

KShell::KShell(void* module)
    : pluginManager_(make<KPluginManager>(static_cast<KClassFactoryLocal&>(*queryClassFactoryLocal()), *this)) {
  useSafeModuleSearch();
  setInternetAgent(this);
  pluginManager_->registerOwnDescriptor(module);
  pluginManager_->scanFolder((folderOf(modulePath(nullptr)) + L"\\plugins").c_str());
}

void KShell::show(const std::wstring& text, const wchar_t* caption) {
  if (!isUnattended_) MessageBoxW(nullptr, text.c_str(), caption, MB_OK);
}

}  // namespace corvix
