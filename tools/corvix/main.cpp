#include "tools/corvix/Check.h"
#include "tools/corvix/Info.h"
#include "tools/corvix/Text.h"
#include "tools/corvix/Trial.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include <windows.h>

using namespace corvix::tool;

int main(int argc, char** argv) {
  SetConsoleOutputCP(CP_UTF8);
  CLI::App app{"Looks at Corvix plug-ins: what they say of themselves, and whether they are good ones.", "corvix"};
  app.set_version_flag("--version",
                       std::string("corvix ") + CORVIX_VERSION + (sizeof(void*) == 8 ? ", 64-bit" : ", 32-bit"));
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path may begin with a slash
  int exitCode = 0;

  CheckOptions options;
  bool rules = false;
  CLI::App& checking =
      *app.add_subcommand("check", "Find what is wrong with plug-ins; each is tried in a process of its own");
  checking.add_option("MODULE", options.modules, "The plug-ins' DLLs; together they must have different identifiers")
      ->type_name("FILE");
  checking.add_option("--timeout", options.timeoutSeconds, "How long a module may take before it counts as hanging")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  checking.add_flag("--json", options.json, "Print the findings as JSON");
  checking.add_flag("--rules", rules, "List the rules, and check nothing");
  checking.footer(
      "Exit codes: 0 every module was really tried and all held, 1 there are faults, 2 a module could not be tried.");
  checking.callback([&] {
    if (!rules && options.modules.empty()) throw CLI::RequiredError("MODULE");
    exitCode = rules ? listRules(options.json) : check(options);
  });

  std::string module;
  bool json = false, xml = false;
  CLI::App& showing = *app.add_subcommand("info", "Show what a plug-in's descriptor says; none of its code runs");
  showing.add_option("MODULE", module, "The plug-in's DLL")->required()->type_name("FILE");
  CLI::Option& asJson = *showing.add_flag("--json", json, "As JSON");
  showing.add_flag("--xml", xml, "As the XML that it was compiled from")->excludes(&asJson);
  showing.callback([&] { exitCode = info(module, xml ? InfoForm::Xml : json ? InfoForm::Json : InfoForm::Table); });

  std::string record;
  std::size_t first = 0;
  CLI::App& trying = *app.add_subcommand("try-module", "")->group("");  // what `check` starts
  trying.add_option("MODULE", module)->required();
  trying.add_option("RECORD", record)->required();
  trying.add_option("FIRST", first)->required();
  trying.callback([&] { exitCode = runTrial(wide(module), wide(record), first); });

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kNotTried;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvix: %s\n", error.what());
    return kNotTried;
  }
  return exitCode;
}
