#include "shell/actions/KActionManager_p.h"

#include "shell/DeclaredObjects_p.h"

namespace corvix {

namespace {

constexpr std::wstring_view kPrefix = L"Actions.";

std::wstring fullName(const wchar_t* name) {
  std::wstring full(name ? name : L"");
  if (full.compare(0, kPrefix.size(), kPrefix) != 0) full.insert(0, kPrefix);
  return full;
}

}  // namespace

// The operations that one way through an action is made of.
struct KActionManager::Steps {
  int (IShell::*before)(IAction&, IActionSender*);
  int (IShell::*tell)(IAction&, IActionSender*);
  int (IAction::*act)(IActionSender*);
  int (IShell::*after)(IAction&, IActionSender*);
};

void KActionManager::addAction(IAction* action) {
  if (!corvix::query<IBSmartObject>(action)) return;  // nothing, or nothing that can be kept
  const std::wstring name = fullName(action->name());
  if (Ref<IAction>* const found = actions_.find(name)) {
    *found = Ref<IAction>::share(action);
  } else {
    actions_.add(name, Ref<IAction>::share(action));
  }
}

void KActionManager::removeAction(const wchar_t* name) {
  if (Ref<IAction>* const found = actions_.find(fullName(name))) found->reset();
}

IAction* KActionManager::findAction(const wchar_t* name) {
  const std::wstring full = fullName(name);
  Ref<IAction>* const found = actions_.find(full);
  if (found && *found) return found->get();
  Ref<IAction> declared;
  forEachDeclared<IAction>(*shell_.pluginManager(), full.c_str(), [&](IAction& answers, IPluginInterface&) {
    declared = Ref<IAction>::share(&answers);
    return false;
  });
  IAction* const action = declared.get();
  if (!action) return nullptr;
  // Making it may have added one of the same name.
  if (Ref<IAction>* const again = actions_.find(full)) {
    *again = std::move(declared);
  } else {
    actions_.add(full, std::move(declared));
  }
  return action;
}

int KActionManager::validateAction(const wchar_t* name, IActionSender* sender) {
  return run({&IShell::preValidateAction, &IShell::validateAction, &IAction::validate, &IShell::postValidateAction},
             name, sender);
}

int KActionManager::processAction(const wchar_t* name, IActionSender* sender) {
  return run({&IShell::preProcessAction, &IShell::processAction, &IAction::process, &IShell::postProcessAction}, name,
             sender);
}

// The action is held meanwhile: a handler may remove it.
int KActionManager::run(const Steps& steps, const wchar_t* name, IActionSender* sender) {
  const Ref<IAction> action = Ref<IAction>::share(findAction(name));
  if (!action) return notify::kGoOn;
  const std::wstring place = fullName(name);  // before anybody is told
  int result = (shell_.*steps.before)(*action, sender);
  if (result == notify::kStop) return result;
  if (result != notify::kTaken) result = (shell_.*steps.tell)(*action, sender);
  if (result == notify::kGoOn) {
    IAction& acting = *action;
    result = callForeign(codeOf(&acting), place.c_str(), [&] { return (acting.*steps.act)(sender); });
  }
  (shell_.*steps.after)(*action, sender);
  return result;
}

}  // namespace corvix
