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
  setMemoryShell(this);
}

KShell::~KShell() { setMemoryShell(nullptr); }

void KShell::show(const std::wstring& text, const wchar_t* caption) {
  if (!isUnattended_) MessageBoxW(nullptr, text.c_str(), caption, MB_OK);
}

bool KShell::askToRetry(u32) {
  constexpr UINT kBox = MB_RETRYCANCEL | MB_ICONWARNING | MB_TASKMODAL;
  return !isUnattended_ && MessageBoxW(nullptr, L"Not enough memory", L"Corvix", kBox) == IDRETRY;
}

}  // namespace corvix
