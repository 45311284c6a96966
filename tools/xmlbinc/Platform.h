// What a process gets and gives in a way of its own on every system.
#pragma once

#include <string>
#include <vector>

namespace corvix::xmlbinc {

/// In UTF-8, without the program's name.
std::vector<std::string> commandLineArguments(int argc, char** argv);

/// Standard input and output pass every byte as it is.
void makeStandardStreamsBinary();

}  // namespace corvix::xmlbinc
