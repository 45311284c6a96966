// How long the process has been there, in nanoseconds.
#pragma once

#include <windows.h>

namespace corvix::bench {

inline double processNs() {
  FILETIME begun = {}, now = {}, ignored[3] = {};
  GetProcessTimes(GetCurrentProcess(), &begun, &ignored[0], &ignored[1], &ignored[2]);
  GetSystemTimeAsFileTime(&now);
  const auto ticks = [](const FILETIME& time) {
    return static_cast<double>(static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
  };
  return (ticks(now) - ticks(begun)) * 100;
}

}  // namespace corvix::bench
