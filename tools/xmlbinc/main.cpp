#include "tools/xmlbinc/CommandLine.h"
#include "tools/xmlbinc/Platform.h"

#include <iostream>

int main(int argc, char** argv) {
  using namespace corvix::xmlbinc;
  makeStandardStreamsBinary();
  return run(commandLineArguments(argc, argv), {std::cin, std::cout, std::cerr});
}
