// A program of its own in a folder with plug-ins of its own, which prints how long something took. What its shell keeps
// lies in the folder too, or goes with it.
#pragma once

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

namespace corvix::bench {

class ProbeFolder {
 public:
  struct Plugin {
    std::string name;  // of ours
    int count = 1;     // one file under so many names
  };

  ProbeFolder(std::string program, const std::vector<Plugin>& plugins)
      : program_(std::move(program)),
        path_(std::filesystem::temp_directory_path() /
              ("corvix-probe-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++made_))) {
    namespace fs = std::filesystem;
    wchar_t own[MAX_PATH];
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    const fs::path built = fs::path(own).parent_path();
    fs::create_directories(this->plugins());
    for (const auto& file : fs::directory_iterator(built)) {
      if (file.path().extension() == ".dll") fs::copy(file.path(), path_);
    }
    fs::copy(built / (program_ + ".exe"), path_);
    for (const Plugin& plugin : plugins) {
      const fs::path file = built / "plugins" / (plugin.name + ".dll"), original = path_ / (plugin.name + ".of.all");
      if (plugin.count == 1) {
        fs::copy(file, this->plugins());
        continue;
      }
      fs::copy(file, original);
      for (int i = 0; i < plugin.count; ++i) {
        const fs::path name = this->plugins() / ("plugin" + std::to_string(i) + ".dll");
        if (!CreateHardLinkW(name.c_str(), original.c_str(), nullptr)) fs::copy(original, name);
      }
    }
  }
  ~ProbeFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    std::wstring key = (path_ / (program_ + ".exe")).wstring();
    std::replace(key.begin(), key.end(), L'\\', L'/');
    RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\Marrowby\\Corvix\\" + key).c_str());
  }
  ProbeFolder(const ProbeFolder&) = delete;
  ProbeFolder& operator=(const ProbeFolder&) = delete;

  // What the program prints for the argument.
  double ns(const std::string& argument = {}) const {
    SetEnvironmentVariableW(L"LOCALAPPDATA", path_.c_str());
    const std::wstring command =
        L"\"" + (path_ / (program_ + ".exe")).wstring() + L"\" " + std::wstring(argument.begin(), argument.end());
    std::FILE* const said = _wpopen(command.c_str(), L"r");
    double ns = 0;
    const bool isRead = said && std::fscanf(said, "%lf", &ns) == 1;
    if (said) _pclose(said);
    if (!isRead) throw std::runtime_error(program_ + ".exe did not say how long it took");
    return ns;
  }

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path plugins() const { return path_ / "plugins"; }

 private:
  static inline int made_ = 0;
  std::string program_;
  std::filesystem::path path_;
};

}  // namespace corvix::bench
