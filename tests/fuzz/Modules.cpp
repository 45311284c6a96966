// Module files.
#include "shell/modules/PeImage_p.h"
#include "tests/fuzz/Fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

namespace corvix::fuzz {

namespace {

constexpr u32 kLargestResource = 4096;

void check(const std::vector<std::string>& imports) {
  require(imports.size() <= 1000, "a module has at most a thousand imports");
  for (const std::string& name : imports) require(name.size() <= 260, "names are short");
}

}  // namespace

void modules(Bytes bytes) {
  static const int file = memfd_create("module", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  require(ftruncate(file, 0) == 0 && pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
          "the file can be written");
  PeImage image(std::wstring(path.begin(), path.end()).c_str());
  require(image.kind() != PeImage::Kind::Unreadable, "every file can be looked at");
  check(image.imports());
  std::vector<unsigned char> resource;
  const auto state = image.readResource(L"PLUGININFO", L"PLUGININFO", kLargestResource, resource);
  require((state == PeImage::ResourceState::Found) == !resource.empty(), "a resource is there, or nothing is");
  require(resource.size() <= kLargestResource, "a resource is as large as it may be");
}

}  // namespace corvix::fuzz
