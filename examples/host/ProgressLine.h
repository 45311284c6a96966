// A line on the console that tells how far a transfer is; at most ten times a second, so that it costs nothing.
#pragma once

#include "core/baselib/streams/Stream.h"

#include <chrono>
#include <string>

namespace host {

class ProgressLine {
 public:
  // `total` in bytes, or IBStream::kUnknownSize.
  ProgressLine(std::string what, corvix::u32 total);

  void update(corvix::u64 done);

  // The last state stays on the console, on a line of its own.
  void finish(corvix::u64 done);

 private:
  using Clock = std::chrono::steady_clock;

  void show(corvix::u64 done) const;

  std::string what_;
  corvix::u32 total_;
  Clock::time_point start_;
  Clock::time_point shown_;
};

}  // namespace host
