#pragma once

#include "core/suppliers/InternetStream.h"
#include "shell/KPluginManager.h"
#include "shell/Shell.h"

namespace corvix {

class KShell final : public IShell, public IUserAlert, public IInternetAgent {
  CORVIX_IDENTITY(KShell, 0x4690C2EB, 0x4F1BD573, 0x9A28E7F0, 0x6EC3518D, IShell)

 public:
  // `module` is the library's own handle.
  explicit KShell(void* module);

  IPluginManager* pluginManager() const noexcept override { return pluginManager_.get(); }
  bool isUnattended() const noexcept override { return isUnattended_; }
  void setUnattended(bool unattended) noexcept override { isUnattended_ = unattended; }

 private:
  const wchar_t* internetAgent() const noexcept override { return L"Corvix/1.00"; }
  void show(const std::wstring& text, const wchar_t* caption) override;

  bool isUnattended_ = false;
  Ref<KPluginManager> pluginManager_;
};

}  // namespace corvix
