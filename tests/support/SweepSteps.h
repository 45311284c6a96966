// What the sweeps of failures share: which step fails next, and what a failure may have left on the disk.
#pragma once

#include <cstdlib>
#include <string>

#include <windows.h>

#include "tests/support/OwnFolder.h"

namespace corvix::testing_support {

// The steps 1, 2, 3, ...: with CORVIX_SOAK=1 each of them, otherwise fewer and fewer of the later ones.
class SweepSteps {
 public:
  int at() const { return step_; }
  void next() {
    static const bool isSoak = [] {
      const char* const soak = std::getenv("CORVIX_SOAK");
      return soak && std::string(soak) == "1";
    }();
    step_ += isSoak ? 1 : 1 + step_ / kDense;
  }

 private:
  static constexpr int kDense = 100;
  int step_ = 1;
};

// The system's folder of temporary files is another one meanwhile: nobody else's files are in it.
class OwnTempFolder {
 public:
  OwnTempFolder() {
    former_[GetEnvironmentVariableW(L"TMP", former_, MAX_PATH)] = 0;
    SetEnvironmentVariableW(L"TMP", folder_.path().c_str());
  }
  ~OwnTempFolder() { SetEnvironmentVariableW(L"TMP", former_); }

  std::ptrdiff_t files() const {
    return std::distance(std::filesystem::directory_iterator(folder_.path()), std::filesystem::directory_iterator());
  }

 private:
  OwnFolder folder_;
  wchar_t former_[MAX_PATH];
};

}  // namespace corvix::testing_support
