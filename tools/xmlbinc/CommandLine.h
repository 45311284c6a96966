// The program without its process: arguments and streams in, exit code out.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace corvix::xmlbinc {

enum ExitCode : int {
  kDone = 0,
  kBadInput = 1,  ///< or warnings that are to count as errors, or a file that cannot be read or written
  kBadUsage = 2,
};

struct Streams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
};

/// `arguments` in UTF-8, without the program's name. Throws nothing.
int run(std::vector<std::string> arguments, const Streams& streams);

}  // namespace corvix::xmlbinc
