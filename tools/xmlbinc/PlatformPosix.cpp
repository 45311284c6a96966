#include "tools/xmlbinc/Platform.h"

namespace corvix::xmlbinc {

std::vector<std::string> commandLineArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void makeStandardStreamsBinary() {}

}  // namespace corvix::xmlbinc
