// Prints what the start of the shell takes, in nanoseconds.
#include "shell/Shell.h"

#include <chrono>
#include <cstdio>

int main() {
  const auto start = std::chrono::steady_clock::now();
  corvix::IShell::startUnattended();
  corvix::IShell::getInstance();
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  std::printf("%.0f\n", elapsed.count());
}
