#include "examples/host/Commands.h"
#include "examples/host/Console.h"

#include <CLI/CLI.hpp>

int main() {
  host::prepareConsole();
  CLI::App app{
      "Corvix example host: loads the plug-ins of the folder \"plugins\" beside it. Without a command it lists them "
      "and tries them.",
      "corvix-host"};
  app.set_version_flag("--version", std::string("corvix-host ") + CORVIX_VERSION);
  app.require_subcommand(0, 1);
  app.allow_windows_style_options(false);  // a path may begin with a slash
  bool unattended = false;
  app.add_flag("--unattended", unattended, "Show no message boxes: nobody is there to answer them");
  bool withLog = false;
  app.add_flag("--show-log", withLog, "At the end, show what this run has logged");

  corvix::IShell* started = nullptr;
  const auto shell = [&]() -> corvix::IShell& {
    if (unattended) corvix::IShell::startUnattended();
    started = corvix::IShell::getInstance();
    return *started;
  };
  const auto manager = [&]() -> corvix::IPluginManager& { return *shell().pluginManager(); };
  int exitCode = 0;
  app.add_subcommand("list", "List modules, interfaces and settings")->callback([&] {
    exitCode = host::listModules(manager());
  });
  app.add_subcommand("demo", "Make objects by name, use them and release them")->callback([&] {
    exitCode = host::runDemo(manager());
  });
  std::string name, group, item, value;
  CLI::App& settings = *app.add_subcommand("settings", "The user's options, kept in the registry");
  settings.require_subcommand(1);
  settings.add_subcommand("list", "Every setting with its value, its default and its choices")->callback([&] {
    exitCode = host::listSettings(shell());
  });
  CLI::App& get = *settings.add_subcommand("get", "The value of one setting");
  get.add_option("group", group, "Its group")->required();
  get.add_option("item", item, "Its name in the group")->required();
  get.callback([&] { exitCode = host::getSetting(shell(), group, item); });
  CLI::App& set = *settings.add_subcommand("set", "Change one setting and save");
  set.add_option("group", group, "Its group")->required();
  set.add_option("item", item, "Its name in the group")->required();
  set.add_option("value", value, "true or false, a number, one of the choices, or a text; as the type has it")
      ->required();
  set.callback([&] { exitCode = host::setSetting(shell(), group, item, value); });
  settings.add_subcommand("save", "Write all settings")->callback([&] { exitCode = host::saveSettings(shell()); });
  CLI::App& event = *app.add_subcommand("event", "Raise a global event: \"event Morning\"");
  event.add_option("name", name, "The event's name, without \"GlobalEvent.\"")->required();
  event.callback([&] { exitCode = host::raiseEvent(shell(), name); });
  CLI::App& action = *app.add_subcommand("action", "Process an action: \"action Example.Work\"");
  action.add_option("name", name, "The action's name, with or without \"Actions.\"")->required();
  action.callback([&] { exitCode = host::processAction(shell(), name); });
  app.add_subcommand("memory", "Show the memory pools and hibernatables before and after they give memory back")
      ->callback([&] {
        manager();  // makes the shell, which is asked when memory runs out
        exitCode = host::showMemory();
      });
  std::string state;
  CLI::App* const log = app.add_subcommand("log", "Switch the log of this program on or off, or tell where it is");
  log->add_option("state", state, "on or off, from the next start")->check(CLI::IsMember({"on", "off"}));
  log->callback([&] { exitCode = state.empty() ? host::tellLog() : host::switchLog(state == "on"); });

  std::string file;
  CLI::App& draw = *app.add_subcommand("draw", "Draw a test page through GDI and GDI+ into a PNG file");
  draw.add_option("FILE.png", file, "The file to write")->required();
  draw.callback([&] { exitCode = host::drawToFile(manager(), file); });
  double seconds = 0;
  CLI::App& window = *app.add_subcommand("window", "Show the test page in a window; drag for a rubber band");
  window.add_option("--close-after", seconds, "Close it by itself after that many seconds");
  window.callback([&] { exitCode = host::showWindow(manager(), seconds); });
  std::string location;
  CLI::App* const fetchCommand = app.add_subcommand("fetch", "Copy what a location names, whatever its scheme");
  fetchCommand->add_option("LOCATION", location, "file:, http: or any scheme that a plug-in adds; or a path")
      ->required();
  fetchCommand->add_option("FILE", file, "Where to; the standard output if there is none");
  fetchCommand->callback([&] { exitCode = host::fetch(shell(), location, file); });

  std::vector<std::string> arguments = host::arguments();
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(std::move(arguments));
    if (app.get_subcommands().empty()) {
      host::listModules(manager());
      exitCode = host::runDemo(manager());
    }
    if (withLog) host::showLog();
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "corvix-host: %s\n", exception.what());
    exitCode = 1;
  }
  if (started) started->shutDown();
  return exitCode;
}
