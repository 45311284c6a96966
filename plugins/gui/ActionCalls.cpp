#include "plugins/gui/ActionCalls.h"

#include "core/baselib/system/ForeignCall.h"
#include "plugins/windows/Translated.h"
#include "shell/gui/ActionState.h"

namespace corvix::gui {

namespace {

class Sender final : public IActionSender {
  CORVIX_IDENTITY(Sender, 0xEBDEFCF6, 0xC8DE828C, 0x6E24B838, 0x279D020A, IActionSender)

 public:
  explicit Sender(const wchar_t* name) noexcept : name_(name) {}
  const wchar_t* senderName() const noexcept override { return name_; }

 private:
  const wchar_t* name_;
};

Ref<IPluginInterface> declared(const wchar_t* actionName) {
  const auto found = Ref<IBCollection>::adopt(IShell::getInstance()->pluginManager()->findByName(actionName));
  return Ref<IPluginInterface>::share(found ? query<IPluginInterface>(found->item(0)) : nullptr);
}

}  // namespace

ActionLook lookOf(const wchar_t* actionName) {
  ActionLook look;
  const auto entry = declared(actionName);
  if (entry && entry->module()->state() == ModuleState::Described) return look;
  look.isEnabled = isPossible(actionName);
  IAction* const action = IShell::getInstance()->actionManager()->findAction(actionName);
  if (!action) return look;
  callForeign(codeOf(action), actionName, [&] {
    if (IActionState* const state = query<IActionState>(action)) {
      look.isChecked = state->isChecked();
      look.text = state->text();
    }
  });
  return look;
}

std::wstring describe(const wchar_t* actionName) {
  const auto entry = declared(actionName);
  const wchar_t* const text = entry ? entry->attribute(L"sHumanName") : nullptr;
  return text ? windows::translated(text) : L"";
}

bool isPossible(const wchar_t* actionName) {
  Sender sender(L"menu");
  return IShell::getInstance()->actionManager()->validateAction(actionName, &sender) == notify::kTaken;
}

void process(const wchar_t* actionName, const wchar_t* by) {
  Sender sender(by);
  IShell& shell = *IShell::getInstance();
  if (shell.actionManager()->processAction(actionName, &sender) == notify::kGoOn)
    shell.changeStatusText(0, windows::sentence(L"Nobody here can do %1.", {actionName}).c_str());
}

}  // namespace corvix::gui
