// What is wrong with a module, seen from its file alone.
#pragma once

#include "tools/corvix/Descriptor.h"
#include "tools/corvix/ModuleImage.h"
#include "tools/corvix/Rules.h"

#include <optional>
#include <string>
#include <vector>

namespace corvix::tool {

struct FileReport {
  std::vector<Finding> findings;
  std::optional<Descriptor> descriptor;
  bool mayBeTried = false;  // nothing stands in the way of loading it
};

FileReport checkFile(const std::wstring& path, const ModuleImage& image);

}  // namespace corvix::tool
