#include "examples/host/Command.h"
#include "examples/host/Console.h"

#include <CLI/CLI.hpp>

namespace host {

namespace {

// A command as the parser of command lines knows it, and what it was given.
class ParsedCommand {
 public:
  ParsedCommand(CLI::App& app, const Command& command, Host& host, int& exitCode)
      : command_(command), texts_(command.arguments.size()) {
    const std::size_t blank = command.name.find(' ');
    const bool isInner = blank != std::string::npos;
    CLI::App& outer = isInner ? *app.get_subcommand(command.name.substr(0, blank)) : app;
    CLI::App& own = *outer.add_subcommand(isInner ? command.name.substr(blank + 1) : command.name, command.help);
    for (std::size_t i = 0; i < texts_.size(); ++i) {
      const Argument& argument = command.arguments[i];
      CLI::Option& option = argument.need == Argument::Several
                                ? *own.add_option(argument.name, several_, argument.help)
                                : *own.add_option(argument.name, texts_[i], argument.help);
      option.required(argument.need != Argument::Optional && argument.name[0] != '-');
      if (!argument.choices.empty()) option.check(CLI::IsMember(argument.choices));
    }
    if (!command.run) own.require_subcommand(1);
    if (!command.run) return;
    own.callback([this, &host, &exitCode] {
      if (!several_.empty()) texts_.pop_back();
      texts_.insert(texts_.end(), several_.begin(), several_.end());
      exitCode = command_.run(host, texts_);
    });
  }

 private:
  const Command& command_;
  Texts texts_;
  Texts several_;
};

int runNamed(const char* name, Host& host) {
  for (const Command* command : Command::all()) {
    if (command->name == name) return command->run(host, Texts(command->arguments.size()));
  }
  return 1;
}

int runMain() {
  prepareConsole();
  CLI::App app{
      "Corvix example host: loads the plug-ins of the folder \"plugins\" beside it. Without a command it lists them "
      "and tries them.",
      "corvix-host"};
  app.set_version_flag("--version", std::string("corvix-host ") + CORVIX_VERSION);
  app.require_subcommand(0, 1);
  app.allow_windows_style_options(false);  // a path may begin with a slash
  Host host;
  app.add_flag("--unattended", host.isUnattended, "Show no message boxes: nobody is there to answer them");
  app.add_option("--plugins", host.pluginFolders,
                 "A further folder with plug-ins, read after the start; may be given again")
      ->type_name("FOLDER")
      ->allow_extra_args(false);
  app.add_flag("--watch-objects", host.watchesObjects, "At the end, show the objects that nobody released");
  bool withLog = false;
  app.add_flag("--show-log", withLog, "At the end, show what this run has logged");
  int exitCode = 0;
  std::vector<std::unique_ptr<ParsedCommand>> commands;
  for (const Command* command : Command::all())
    commands.push_back(std::make_unique<ParsedCommand>(app, *command, host, exitCode));

  std::vector<std::string> arguments = host::arguments();
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(std::move(arguments));
    if (app.get_subcommands().empty()) {
      host.shell();  // with its plug-ins: a list alone runs none of them
      runNamed("list", host);
      exitCode = runNamed("demo", host);
    }
    if (withLog) showLog();
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "corvix-host: %s\n", exception.what());
    exitCode = 1;
  }
  host.shutDown();
  return exitCode;
}

}  // namespace

}  // namespace host

int main() { return host::runMain(); }
