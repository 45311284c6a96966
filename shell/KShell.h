#pragma once

#include "core/baselib/memory/MemoryShell.h"
#include "core/suppliers/InternetStream.h"
#include "shell/KPluginManager.h"
#include "shell/Shell.h"
#include "shell/ShellThread_p.h"

namespace corvix {

class KShell final : public IShell, public IUserAlert, public IMemoryShell, public IInternetAgent {
  CORVIX_IDENTITY(KShell, 0x4690C2EB, 0x4F1BD573, 0x9A28E7F0, 0x6EC3518D, IShell)

 public:
  // `module` is the library's own handle.
  explicit KShell(void* module);
  ~KShell() override;

  IPluginManager* pluginManager() const noexcept override { return pluginManager_.get(); }
  bool isUnattended() const noexcept override { return isUnattended_; }
  void setUnattended(bool unattended) noexcept override { isUnattended_ = unattended; }
  bool askToRetry(u32 kind) override;
  bool runOnShellThread(void (*function)(void* argument), void* argument) override {
    return thread_.run(function, argument);
  }

 private:
  const wchar_t* internetAgent() const noexcept override { return L"Corvix/1.00"; }
  void show(const std::wstring& text, const wchar_t* caption) override;

  ShellThread thread_;
  bool isUnattended_ = false;
  Ref<KPluginManager> pluginManager_;
};

}  // namespace corvix
