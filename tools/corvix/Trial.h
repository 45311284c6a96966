// Trying a module in a process of its own. The child writes what it does, line by line, into a file; the parent ends it
// in time and tells from the lines and from how the child ended what is wrong.
#pragma once

#include "tools/corvix/Descriptor.h"
#include "tools/corvix/ModuleImage.h"
#include "tools/corvix/Rules.h"

#include <string>
#include <vector>

namespace corvix::tool {

struct Trial {
  std::vector<Finding> findings;
  std::size_t made = 0;  // interfaces of which an object was made
  bool loaded = false;
  std::string failure;  // why nothing could be tried; else empty
};

// In the parent. Returns when the child has ended, at the latest after the time and a little more.
Trial tryModule(const std::wstring& path, const ModuleImage& image, const Descriptor& descriptor,
                unsigned timeoutSeconds);

// In the child: what `corvix try-module` does, from the interface of that number on. The process's exit code.
int runTrial(const std::wstring& path, const std::wstring& recordPath, std::size_t first);

}  // namespace corvix::tool
