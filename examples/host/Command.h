// A command of the host registers itself: its source file ends with a static Command, and no other file knows of it.
//
//   const Command fetchCommand("fetch", "Copy what a location names",
//                              {{"LOCATION", "file:, http: or a path"}, {"FILE", "Where to", Argument::Optional}},
//                              [](Host& host, const Texts& given) { return fetch(host.shell(), given[0], given[1]); });
#pragma once

#include "shell/Shell.h"

#include <string>
#include <vector>

namespace host {

// The shell for the commands, started when the first of them asks.
class Host {
 public:
  bool isUnattended = false;
  bool watchesObjects = false;
  std::vector<std::string> pluginFolders;  // besides the folder "plugins"

  corvix::IShell& shell();
  corvix::IPluginManager& manager() { return *shell().pluginManager(); }

  // Likewise, but no code of a plug-in runs then.
  corvix::IPluginManager& describedOnly();

  // If it was started. Shows what was watched.
  void shutDown();

 private:
  void addPluginFolders();
  void showObjectsLeft();

  corvix::IShell* started_ = nullptr;
};

// A positional argument, or an option when the name begins with "--".
struct Argument {
  enum Need { Required, Optional, Several };  // several: the last of them, at least one

  const char* name;
  const char* help;
  Need need = Required;
  std::vector<std::string> choices = {};  // none: any text
};

// What was given, in the order of the arguments; empty for what was not. Of several the rest.
using Texts = std::vector<std::string>;

class Command {
 public:
  // Prints what it did and returns the program's exit code: 0, or 1 with a message.
  using Run = int (*)(Host& host, const Texts& given);

  // `name` may be two words: the second is then a command of the first, which has an entry of its own, without `run`.
  Command(const char* name, const char* help, std::vector<Argument> arguments = {}, Run run = nullptr);

  // All, in the order of their names.
  static std::vector<const Command*> all();

  const std::string name;
  const char* const help;
  const std::vector<Argument> arguments;
  const Run run;
};

// What this run has logged so far.
int showLog();

}  // namespace host
