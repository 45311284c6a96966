#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "shell/ModuleCatalogue.h"

namespace host {

using namespace corvix;

namespace {

std::string orDash(const wchar_t* text) { return text && *text ? shown(text) : "-"; }

const char* stateName(ModuleState state) {
  switch (state) {
    case ModuleState::Described:
      return "described";
    case ModuleState::Loaded:
      return "loaded";
    case ModuleState::Failed:
      return "FAILED";
    case ModuleState::NoPlugin:
      return "no plug-in";
  }
  return "";
}

void printModules(IPluginManager& manager) {
  Table table({"Module", "Name", "Version", "Manufacturer", "State", "Identifier"});
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    const IPluginModule& module = *manager.moduleAt(i);
    table.add({fileName(module.path()), orDash(module.name()), orDash(module.version()),
               orDash(module.attribute(L"Manufacturer")), stateName(module.state()),
               module.identifier() ? identifierText(*module.identifier()) : "-"});
  }
  std::printf("Modules\n");
  table.print();
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    const IPluginModule& module = *manager.moduleAt(i);
    if (*module.reason())
      std::printf("  %s: %s\n", fileName(module.path()).c_str(), shown(module.reason(), kSentence).c_str());
    if (query<IStartRecord>(&module)->isLeftOut())
      std::printf("  \"corvix-host retry %s\" tries it again.\n", fileName(module.path()).c_str());
  }
}

void printInterfaces(IPluginManager& manager) {
  Table table({"Interface", "Module", "Identifier", "Human name"});
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    const IPluginInterface& entry = *manager.interfaceAt(i);
    table.add({orDash(entry.name()), fileName(entry.module()->path()), identifierText(entry.identifier()),
               orDash(entry.attribute(L"sHumanName"))});
  }
  std::printf("\nInterfaces\n");
  table.print();
}

void printSettings(IPluginManager& manager) {
  Table table({"Setting", "Module", "Type", "Default", "Values"});
  for (i32 m = 0; m < manager.moduleCount(); ++m) {
    const IPluginModule& module = *manager.moduleAt(m);
    for (i32 i = 0; i < module.settingCount(); ++i) {
      const auto text = [&](const wchar_t* name) { return orDash(module.settingAttribute(i, name)); };
      table.add({text(L"Group") + "\\" + text(L"Item"), fileName(module.path()), text(L"Type"), text(L"Data"),
                 text(L"Values")});
    }
  }
  std::printf("\nSettings\n");
  table.print();
}

void printCatalogue(IPluginManager& manager) {
  const IModuleCatalogue& catalogue = *query<IModuleCatalogue>(&manager);
  if (*catalogue.path()) {
    std::printf("\n%d of these descriptors from the catalogue %s, %d from the files.\n", catalogue.takenCount(),
                shown(catalogue.path(), kSentence).c_str(), catalogue.readCount());
  } else {
    std::printf("\nAll of these descriptors from the files: %s.\n",
                isCatalogueSwitchedOn() ? "there is nowhere to keep a catalogue" : "the catalogue is switched off");
  }
}

int switchCatalogueTo(bool on) {
  if (!switchCatalogue(on)) {
    std::fprintf(stderr, "corvix-host: the registry does not let us switch the catalogue %s.\n", on ? "on" : "off");
    return 1;
  }
  std::printf("From its next start on, corvix-host %s.\n",
              on ? "keeps what its plug-ins declare in a catalogue" : "reads every plug-in's file at each start");
  return 0;
}

int tellCatalogue(IPluginManager& manager) {
  std::printf("The catalogue of corvix-host is %s.\n", isCatalogueSwitchedOn() ? "on" : "off");
  printCatalogue(manager);
  return 0;
}

int listModules(IPluginManager& manager) {
  printModules(manager);
  printCatalogue(manager);
  printInterfaces(manager);
  printSettings(manager);
  return 0;
}

}  // namespace

const Command listCommand("list", "List modules, interfaces and settings", {},
                          [](Host& host, const Texts&) { return listModules(host.describedOnly()); });

const Command catalogueCommand("catalogue", "Switch the catalogue of plug-ins on or off, or tell where it stands",
                               {{"state", "on or off, from the next start", Argument::Optional, {"on", "off"}}},
                               [](Host& host, const Texts& given) {
                                 return given[0].empty() ? tellCatalogue(host.describedOnly())
                                                         : switchCatalogueTo(given[0] == "on");
                               });

}  // namespace host
