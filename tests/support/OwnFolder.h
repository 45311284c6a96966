// A folder of its own for a test, removed at the end with what is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <windows.h>

namespace corvix::testing_support {

class OwnFolder {
 public:
  OwnFolder() {
    static int count = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("corvix-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count));
    std::filesystem::remove_all(path_);  // a crashed one of the same number may have left it
    std::filesystem::create_directories(path_);
  }
  ~OwnFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  OwnFolder(const OwnFolder&) = delete;
  OwnFolder& operator=(const OwnFolder&) = delete;

  std::filesystem::path file(const std::wstring& name) const { return path_ / name; }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace corvix::testing_support
