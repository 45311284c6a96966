// The fuzzer's entry: corvix-fuzz --target=NAME [libFuzzer's options and folders]
#include "tests/fuzz/Fuzz.h"

namespace {

using namespace corvix::fuzz;

struct Target {
  std::string_view name;
  void (*run)(Bytes);
};
constexpr Target kTargets[] = {
    {"descriptors", descriptors},
    {"xml", xmlText},
    {"modules", modules},
    {"locations", locations},
    {"decoders", decoders},
    {"settings", settingTexts},
    {"fonts", fonts},
    {"images", images},
    {"texts", texts},
};
void (*chosen)(Bytes) = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  constexpr std::string_view kOption = "--target=";
  for (int i = 1; i < *argc; ++i) {
    const std::string_view argument = (*argv)[i];
    if (!argument.starts_with(kOption)) continue;
    for (const Target& target : kTargets) {
      if (argument.substr(kOption.size()) == target.name) chosen = target.run;
    }
  }
  if (chosen) return 0;
  std::fputs("usage: corvix-fuzz --target=NAME [OPTIONS] [FOLDERS]; there are:", stderr);
  for (const Target& target : kTargets) std::fprintf(stderr, " %s", target.name.data());
  std::fputs("\n", stderr);
  std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  chosen({data, size});
  return 0;
}
