#include "examples/host/Commands.h"
#include "examples/host/Console.h"
#include "examples/plugins/greeter/IGreeter.h"
#include "examples/plugins/textstats/ITextStats.h"
#include "examples/plugins/witness/IWitness.h"

namespace host {

using namespace corvix;

namespace {

// Why an object could not be had, for the user.
int failed(IPluginManager& manager, const wchar_t* interfaceName) {
  std::fprintf(stderr, "corvix-host: no usable object \"%s\".\n", utf8(interfaceName).c_str());
  if (const auto entries = Ref<IBCollection>::adopt(manager.findByName(interfaceName))) {
    for (i32 i = 0; i < entries->count(); ++i) {
      const IPluginModule& module = *query<IPluginInterface>(entries->item(i))->module();
      std::fprintf(stderr, "  %s: %s\n", utf8(module.path()).c_str(), utf8(module.reason()).c_str());
    }
  } else {
    std::fprintf(stderr,
                 "  No module declares it. Is the example plug-in in the folder \"plugins\" beside the program?\n");
  }
  return 1;
}

}  // namespace

int runDemo(IPluginManager& manager) {
  std::printf("\nObjects\n");
  auto witness = createObject<example::IWitness>(manager, L"Example.Witness");
  if (!witness) return failed(manager, L"Example.Witness");

  auto greeter = createObject<example::IGreeter>(manager, L"Example.Greeter");
  if (!greeter) return failed(manager, L"Example.Greeter");
  witness->watch(query<IBSmartObject>(greeter.get()));
  const WideString greeting = greeter->greeting(L"plug-in author");
  std::printf("  Example.Greeter says: %s\n", utf8(greeting).c_str());

  auto sink = createObject<example::ITextSink>(manager, L"Example.TextStats");
  if (!sink) return failed(manager, L"Example.TextStats");
  witness->watch(query<IBSmartObject>(sink.get()));
  sink->write(greeting.c_str());
  const auto stats = sink.as<example::ITextStats>();
  if (!stats) return failed(manager, L"Example.TextStats");
  std::printf("  Example.TextStats counts in it: %u words, %u letters\n", stats->words(), stats->letters());

  greeter.reset();
  std::printf("  Example.Witness saw %u object go, a %s\n", witness->count(), utf8(witness->lastSeen()).c_str());
  return 0;
}

}  // namespace host
