#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "examples/host/ShellDisplay.h"
#include "shell/GlobalEvent.h"

namespace host {

using namespace corvix;

namespace {

class NamedEvent final : public IGlobalEvent {
  CORVIX_IDENTITY(NamedEvent, 0xA94818D5, 0xAF11C3CE, 0xA0DFE92D, 0xD0328CDF, IGlobalEvent)

 public:
  explicit NamedEvent(std::wstring name) : name_(std::move(name)) {}
  const wchar_t* name() const noexcept override { return name_.c_str(); }

 private:
  std::wstring name_;
};

class CommandSender final : public IActionSender {
  CORVIX_IDENTITY(CommandSender, 0xD714EE8E, 0x042E7C21, 0x1F2AC884, 0x22AE0242, IActionSender)

 public:
  const wchar_t* senderName() const noexcept override { return L"command line"; }
};

int raiseEvent(IShell& shell, const std::string& name) {
  const ShellDisplay display(shell);
  NamedEvent event(wide(name));
  IPluginManager& manager = *shell.pluginManager();
  std::printf("Event %s\n", name.c_str());
  manager.raiseEvent(event);
  const auto targets = Ref<IBCollection>::adopt(manager.findByName((L"GlobalEvent." + wide(name)).c_str()));
  const i32 count = targets ? targets->count() : 0;
  i32 told = 0;
  for (i32 i = 0; i < count; ++i) {
    IPluginInterface& entry = *query<IPluginInterface>(targets->item(i));
    const std::string why = whyNot(entry);
    told += why.empty();
    if (!why.empty())
      std::fprintf(stderr, "corvix-host: the target of %s was not told: %s\n",
                   shown(entry.module()->path(), kSentence).c_str(), why.c_str());
  }
  std::printf("%d declared target%s told\n", told, told == 1 ? "" : "s");
  return told == count ? 0 : 1;
}

// What the user hears of an action that nobody has.
int noAction(IPluginManager& manager, const std::string& name) {
  const std::string full = name.starts_with("Actions.") ? name : "Actions." + name;
  explainNoObject(manager, wide(full).c_str());
  return 1;
}

int processAction(IShell& shell, const std::string& name) {
  const ShellDisplay display(shell);
  IActionManager* const actions = shell.actionManager();
  const std::wstring wideName = wide(name);
  if (!actions || !actions->findAction(wideName.c_str())) return noAction(*shell.pluginManager(), name);
  CommandSender sender;
  if (actions->validateAction(wideName.c_str(), &sender) == notify::kStop) {
    std::fprintf(stderr, "corvix-host: \"%s\" cannot be done now.\n", name.c_str());
    return 1;
  }
  std::printf("Action %s\n", name.c_str());
  if (actions->processAction(wideName.c_str(), &sender) != notify::kTaken) {
    std::fprintf(stderr, "corvix-host: \"%s\" was not done to its end.\n", name.c_str());
    return 1;
  }
  std::printf("done\n");
  return 0;
}

}  // namespace

const Command eventCommand("event", "Raise a global event: \"event Morning\"",
                           {{"name", "The event's name, without \"GlobalEvent.\""}},
                           [](Host& host, const Texts& given) { return raiseEvent(host.shell(), given[0]); });
const Command actionCommand("action", "Process an action: \"action Example.Work\"",
                            {{"name", "The action's name, with or without \"Actions.\""}},
                            [](Host& host, const Texts& given) { return processAction(host.shell(), given[0]); });

}  // namespace host
