#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "examples/plugins/greeter/IGreeter.h"
#include "examples/plugins/textstats/ITextStats.h"
#include "examples/plugins/witness/IWitness.h"

namespace host {

using namespace corvix;

namespace {

int failed(IPluginManager& manager, const wchar_t* interfaceName) {
  explainNoObject(manager, interfaceName);
  return 1;
}

int runDemo(IPluginManager& manager) {
  std::printf("\nObjects\n");
  auto witness = createObject<example::IWitness>(manager, L"Example.Witness");
  if (!witness) return failed(manager, L"Example.Witness");

  auto greeter = createObject<example::IGreeter>(manager, L"Example.Greeter");
  if (!greeter) return failed(manager, L"Example.Greeter");
  witness->watch(query<IBSmartObject>(greeter.get()));
  const WideString greeting = greeter->greeting(L"plug-in author");
  std::printf("  Example.Greeter says: %s\n", shown(greeting, kSentence).c_str());

  auto sink = createObject<example::ITextSink>(manager, L"Example.TextStats");
  if (!sink) return failed(manager, L"Example.TextStats");
  witness->watch(query<IBSmartObject>(sink.get()));
  sink->write(greeting.c_str());
  const auto stats = sink.as<example::ITextStats>();
  if (!stats) return failed(manager, L"Example.TextStats");
  std::printf("  Example.TextStats counts in it: %u words, %u letters\n", stats->words(), stats->letters());

  greeter.reset();
  std::printf("  Example.Witness saw %u object go, a %s\n", witness->count(), shown(witness->lastSeen()).c_str());
  return 0;
}

}  // namespace

const Command demoCommand("demo", "Make objects by name, use them and release them", {},
                          [](Host& host, const Texts&) { return runDemo(host.manager()); });

}  // namespace host
