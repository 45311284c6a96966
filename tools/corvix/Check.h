// `corvix check`: whether modules are good plug-ins.
#pragma once

#include "tools/corvix/Rules.h"

#include <string>
#include <vector>

namespace corvix::tool {

enum CheckExit : int {
  kHolds = 0,  // something was really tried, and all held
  kFindings = 1,
  kNotTried = 2,
};

struct CheckOptions {
  std::vector<std::string> modules;
  unsigned timeoutSeconds = 10;
  bool json = false;
};

int check(const CheckOptions& options);

int listRules(bool json);

}  // namespace corvix::tool
