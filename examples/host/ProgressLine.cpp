#include "examples/host/ProgressLine.h"

#include <algorithm>
#include <cstdio>

namespace host {

using corvix::u64;

namespace {

std::string inUnits(double bytes) {
  static constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB"};
  std::size_t unit = 0;
  for (; bytes >= 1024 && unit + 1 < std::size(kUnits); ++unit) bytes /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
  return text;
}

// The end of a location is what tells it from others.
std::string shortened(const std::string& text) {
  constexpr std::size_t kMost = 36;
  if (text.size() <= kMost) return text;
  std::size_t from = text.size() - kMost + 3;
  while (from < text.size() && (text[from] & 0xC0) == 0x80) ++from;
  return "..." + text.substr(from);
}

}  // namespace

ProgressLine::ProgressLine(std::string what, corvix::u32 total)
    : what_(shortened(what)), total_(total), start_(Clock::now()), shown_(start_) {}

void ProgressLine::update(u64 done) {
  const auto now = Clock::now();
  if (now - shown_ < std::chrono::milliseconds(100)) return;
  shown_ = now;
  show(done);
}

void ProgressLine::finish(u64 done) {
  show(done);
  std::fputc('\n', stderr);
}

void ProgressLine::show(u64 done) const {
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const std::string rate = seconds > 0.05 ? inUnits(static_cast<double>(done) / seconds) + "/s" : "";
  if (total_ == corvix::IBStream::kUnknownSize || total_ == 0) {
    std::fprintf(stderr, "\r  %s  %s  %-14s", what_.c_str(), inUnits(static_cast<double>(done)).c_str(), rate.c_str());
    return;
  }
  const double part = std::min(1.0, static_cast<double>(done) / total_);
  std::string bar(24, '.');
  std::fill_n(bar.begin(), static_cast<int>(part * 24), '#');
  std::fprintf(stderr, "\r  %s  [%s] %3d%%  %s of %s  %-14s", what_.c_str(), bar.c_str(), static_cast<int>(part * 100),
               inUnits(static_cast<double>(done)).c_str(), inUnits(total_).c_str(), rate.c_str());
  std::fflush(stderr);
}

}  // namespace host
