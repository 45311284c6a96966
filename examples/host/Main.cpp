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
  app.allow_windows_style_options(false);  // "/dir/name" is a path
  bool unattended = false;
  app.add_flag("--unattended", unattended, "Show no message boxes: nobody is there to answer them");
  bool withLog = false;
  app.add_flag("--show-log", withLog, "At the end, show what this run has logged");

  const auto manager = [&]() -> corvix::IPluginManager& {
    corvix::IShell& shell = *corvix::IShell::getInstance();
    shell.setUnattended(unattended);
    return *shell.pluginManager();
  };
  int exitCode = 0;
  app.add_subcommand("list", "List modules, interfaces and settings")->callback([&] {
    exitCode = host::listModules(manager());
  });
  app.add_subcommand("demo", "Make objects by name, use them and release them")->callback([&] {
    exitCode = host::runDemo(manager());
  });
  app.add_subcommand("memory", "Show the memory pools and hibernatables before and after they give memory back")
      ->callback([&] {
        manager();  // makes the shell, which is asked when memory runs out
        exitCode = host::showMemory();
      });
  std::string state;
  CLI::App* const log = app.add_subcommand("log", "Switch the log of this program on or off, or tell where it is");
  log->add_option("state", state, "on or off, from the next start")->check(CLI::IsMember({"on", "off"}));
  log->callback([&] { exitCode = state.empty() ? host::tellLog() : host::switchLog(state == "on"); });

  std::string location;
  std::string file;
  CLI::App* const fetchCommand = app.add_subcommand("fetch", "Copy what a location names, whatever its scheme");
  fetchCommand->add_option("LOCATION", location, "file:, http: or any scheme that a plug-in adds; or a path")
      ->required();
  fetchCommand->add_option("FILE", file, "Where to; the standard output if there is none");
  fetchCommand->callback([&] { exitCode = host::fetch(manager(), location, file); });

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
    return 1;
  }
  return exitCode;
}
