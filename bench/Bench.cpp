#include "bench/Bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace corvix::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kRoundNs = 8e6;  // a side's part of a round
constexpr std::size_t kFewestRounds = 7;
constexpr std::size_t kMostRounds = 31;
constexpr double kSteady = 0.04;  // half the ratios lie within this share of their median

double elapsedNs(const Work& work, std::uint64_t count) {
  const auto start = Clock::now();
  work(count);
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// How many operations fill a round; warms up on the way.
std::uint64_t countFor(const Work& work) {
  std::uint64_t count = 1;
  for (;;) {
    const double ns = elapsedNs(work, count);
    if (ns > kRoundNs / 4)
      return std::max<std::uint64_t>(1, static_cast<std::uint64_t>(static_cast<double>(count) * kRoundNs / ns));
    count *= ns < kRoundNs / 100 ? 10 : 2;
  }
}

double quantile(std::vector<double> values, double part) {
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

bool isSteady(const std::vector<double>& ratios) {
  return ratios.size() >= kFewestRounds &&
         quantile(ratios, 0.75) - quantile(ratios, 0.25) < kSteady * quantile(ratios, 0.5);
}

}  // namespace

const Area* Area::first = nullptr;

Area::Area(const char* areaName, void (*areaRun)(Report&)) : name(areaName), run(areaRun), next(first) { first = this; }

void Report::startArea(std::string area) {
  area_ = std::move(area);
  std::printf("\n%s\n  %-44s %-44s %12s %12s %8s %8s\n", area_.c_str(), "case", "peer", "ours ns", "peer ns", "ratio",
              "wanted");
}

void Report::compare(const std::string& name, const std::string& peer, double wanted, const Work& ours,
                     const Work& theirs) {
  const std::uint64_t ourCount = countFor(ours);
  const std::uint64_t peerCount = countFor(theirs);
  std::vector<double> oursNs, peerNs, ratios;
  while (ratios.size() < kMostRounds && !isSteady(ratios)) {
    oursNs.push_back(elapsedNs(ours, ourCount) / static_cast<double>(ourCount));
    peerNs.push_back(elapsedNs(theirs, peerCount) / static_cast<double>(peerCount));
    ratios.push_back(oursNs.back() / peerNs.back());
  }
  rows_.push_back({area_, name, peer, quantile(oursNs, 0.5), quantile(peerNs, 0.5), quantile(ratios, 0.5), wanted});
  print(rows_.back());
}

void Report::add(const std::string& name, const std::string& peer, double wanted, double ours, double theirs) {
  rows_.push_back({area_, name, peer, ours, theirs, ours / theirs, wanted});
  print(rows_.back());
}

void Report::print(const Row& row) const {
  char wanted[32] = "-";
  if (row.wanted > 0) std::snprintf(wanted, sizeof wanted, "%.2f", row.wanted);
  std::printf("  %-44s %-44s %12.1f %12.1f %8.3f %8s%s\n", row.name.c_str(), row.peer.c_str(), row.oursNs, row.peerNs,
              row.ratio, wanted, row.wanted > 0 && row.ratio > row.wanted ? "  missed" : "");
  std::fflush(stdout);
}

}  // namespace corvix::bench
