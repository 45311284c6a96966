#include "tools/xmlbinc/Files.h"

#include "tools/xmlbinc/BlockFormat.h"
#include "tools/xmlbinc/ResourceFile.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>

namespace corvix::xmlbinc {

namespace fs = std::filesystem;

namespace {

fs::path fromUtf8(const std::string& path) { return fs::path(std::u8string(path.begin(), path.end())); }

[[noreturn]] void fail(const std::string& path, const std::string& what, const std::error_code& code) {
  throw std::runtime_error(path + ": " + what + (code ? ": " + code.message() : ""));
}

std::error_code lastError() { return {errno, std::generic_category()}; }

void writeThrough(const fs::path& place, const std::string& shown, std::string_view bytes) {
  errno = 0;
  std::ofstream file(place, std::ios::binary | std::ios::trunc);
  if (!file) fail(shown, "cannot be written", lastError());
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) fail(shown, "cannot be written completely", lastError());
}

/// Gone at the end unless it was moved to its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(fs::path place) : place_(std::move(place)) {
    place_ += ".tmp" + std::to_string(std::random_device{}());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code ignored;
    fs::remove(place_, ignored);
  }

  const fs::path& place() const { return place_; }

 private:
  fs::path place_;
};

}  // namespace

std::string readFile(const std::string& path, std::size_t limit) {
  const fs::path place = fromUtf8(path);
  if (fs::is_directory(place)) fail(path, "is a directory", {});
  errno = 0;
  std::ifstream file(place, std::ios::binary);
  if (!file) fail(path, "cannot be opened", lastError());
  std::string bytes;
  char buffer[1 << 14];
  while (bytes.size() <= limit && (file.read(buffer, sizeof buffer) || file.gcount() > 0)) {
    bytes.append(buffer, static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) fail(path, "cannot be read", lastError());
  return bytes;
}

void writeFile(const std::string& path, std::string_view bytes) {
  fs::path place = fromUtf8(path);
  std::error_code code;
  const fs::file_status status = fs::status(place, code);
  if (fs::is_directory(status)) fail(path, "is a directory", {});
  // A device cannot be replaced by a file.
  if (fs::exists(status) && !fs::is_regular_file(status)) return writeThrough(place, path, bytes);
  if (fs::is_symlink(place, code)) place = fs::canonical(place);

  const TemporaryFile temporary(place);
  writeThrough(temporary.place(), path, bytes);
  fs::rename(temporary.place(), place, code);
  if (code) fail(path, "cannot be replaced", code);
}

void removeStaleBlock(const std::string& path) {
  const fs::path place = fromUtf8(path);
  std::error_code ignored;
  if (!fs::is_regular_file(place, ignored)) return;
  std::string start(kResourceFileStart.size(), '\0');
  std::ifstream(place, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
  if (start.starts_with(kBlockMagic) || start == kResourceFileStart) fs::remove(place, ignored);
}

bool sameFile(const std::string& a, const std::string& b) {
  std::error_code none;
  return fs::equivalent(fromUtf8(a), fromUtf8(b), none);
}

}  // namespace corvix::xmlbinc
