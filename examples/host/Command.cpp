#include "examples/host/Command.h"

#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "shell/ObjectWatch.h"

#include <algorithm>
#include <stdexcept>

#include <windows.h>

namespace host {

namespace {

std::vector<const Command*>& registered() {
  static std::vector<const Command*> commands;
  return commands;
}

}  // namespace

corvix::IShell& Host::shell() {
  if (started_) return *started_;
  if (isUnattended) corvix::IShell::startUnattended();
  if (watchesObjects) corvix::IShell::watchObjects();
  started_ = corvix::IShell::getInstance();
  addPluginFolders();
  return *started_;
}

corvix::IPluginManager& Host::describedOnly() {
  corvix::IShell::startDescribing();
  return manager();
}

void Host::addPluginFolders() {
  for (const std::string& folder : pluginFolders) {
    const DWORD attributes = GetFileAttributesW(wide(folder).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
      throw std::runtime_error("--plugins " + folder + ": there is no such folder.");
    if (started_->pluginManager()->scanFolder(wide(folder).c_str()) == 0)
      std::fprintf(stderr, "corvix-host: --plugins %s: no module (*.dll) in it that was not known already.\n",
                   folder.c_str());
  }
}

void Host::shutDown() {
  if (started_) started_->shutDown();
  if (started_ && watchesObjects) showObjectsLeft();
}

void Host::showObjectsLeft() {
  corvix::IObjectWatch& watch = *corvix::query<corvix::IObjectWatch>(started_->pluginManager());
  Table table({"Never released", "Class", "Interface", "Module"});
  corvix::ObjectsLeft row;
  watch.takeStock();
  for (int i = 0; watch.rowAt(i, row); ++i)
    table.add({std::to_string(row.count), shown(row.className), shown(row.interfaceName), fileName(row.modulePath)});
  if (watch.rowAt(0, row)) {
    table.print();
  } else {
    std::printf("Every object that was made by name was released.\n");
  }
}

Command::Command(const char* itsName, const char* itsHelp, std::vector<Argument> itsArguments, Run itsRun)
    : name(itsName), help(itsHelp), arguments(std::move(itsArguments)), run(itsRun) {
  registered().push_back(this);
}

std::vector<const Command*> Command::all() {
  std::vector<const Command*> commands = registered();
  std::sort(commands.begin(), commands.end(), [](const Command* a, const Command* b) { return a->name < b->name; });
  return commands;
}

}  // namespace host
