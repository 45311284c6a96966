// The rules of `corvix check`, each with what is wrong and what to do. docs/check.md lists them.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvix::tool {

enum class Weight {
  Fault,
  Note,  // does not count
};

struct Rule {
  const char* id;
  Weight weight;
  const char* what;  // one sentence; a finding adds where and what exactly
  const char* todo;
};

std::span<const Rule> allRules();
const Rule& ruleOf(std::string_view id);

struct Finding {
  const Rule* rule;
  std::string detail;  // sentences
};

}  // namespace corvix::tool
