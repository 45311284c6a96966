#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/NameTable_p.h"
#include "shell/Shell.h"

#include <string>

namespace corvix {

class KActionManager final : public IActionManager {
  CORVIX_IDENTITY(KActionManager, 0x75D8A575, 0x0448DAEE, 0xF9C219D6, 0x3410FB25, IActionManager)

 public:
  // The shell outlives the manager. Throws std::bad_alloc.
  explicit KActionManager(IShell& shell) : shell_(shell) {}

  void addAction(IAction* action) override;
  void removeAction(const wchar_t* name) override;
  IAction* findAction(const wchar_t* name) override;
  int validateAction(const wchar_t* name, IActionSender* sender) override;
  int processAction(const wchar_t* name, IActionSender* sender) override;

  // At the shell's end.
  void forgetActions() noexcept { actions_.clear(); }

 private:
  struct Steps;
  int run(const Steps& steps, const wchar_t* name, IActionSender* sender);

  IShell& shell_;
  text::NameTable<wchar_t, Ref<IAction>> actions_;  // one that was removed is null
};

}  // namespace corvix
