#include "bench/Bench.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace corvix::bench {

namespace {

using Clock = std::chrono::steady_clock;

// Rounds are shorter than the turns that the system gives to other programs: most are then not disturbed, and the
// median is one of those.
constexpr double kRoundNs = 1e6;  // a side's part of a round
constexpr std::size_t kFewestRounds = 15;
constexpr std::size_t kMostRounds = 301;
constexpr double kMostNs = 2e9;   // of a row
constexpr double kSteady = 0.06;  // the median's spread is less than this share of it

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
    count *= ns < kRoundNs / 50 ? 10 : 2;
  }
}

double quantile(std::vector<double> values, double part) {
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

// Where the median would lie, in 19 of 20 runs like this one.
struct Spread {
  double low;
  double high;
};
Spread spreadOf(const std::vector<double>& ratios) {
  const double half = 0.98 / std::sqrt(static_cast<double>(ratios.size()));
  return {quantile(ratios, std::max(0.0, 0.5 - half)), quantile(ratios, std::min(1.0, 0.5 + half))};
}

bool isSteady(const std::vector<double>& ratios) {
  const Spread spread = spreadOf(ratios);
  return ratios.size() >= kFewestRounds && spread.high - spread.low < kSteady * quantile(ratios, 0.5);
}

bool isFigure(double value) { return std::isfinite(value) && value > 0; }

void print(const Row& row) {
  char wanted[16] = "-";
  if (row.wanted > 0) std::snprintf(wanted, sizeof wanted, "%.2f", row.wanted);
  char spread[32] = "counted";
  if (row.low < row.high) std::snprintf(spread, sizeof spread, "%.3f-%.3f", row.low, row.high);
  std::printf("  %-46s %-44s %12.1f %12.1f %-5s %8.3f %15s %7s%s%s\n", row.name.c_str(), row.peer.c_str(), row.ours,
              row.theirs, row.unit.c_str(), row.ratio, spread, wanted, row.isSteady ? "" : "  not steady",
              row.isFaulty()                             ? "  NO FIGURE"
              : row.isMissed()                           ? "  missed"
              : row.wanted > 0 && row.ratio > row.wanted ? "  within the spread"
                                                         : "");
  std::fflush(stdout);
}

}  // namespace

const Area* Area::first = nullptr;

Area::Area(const char* areaName, void (*areaRun)(Report&)) : name(areaName), run(areaRun), next(first) { first = this; }

bool Row::isFaulty() const noexcept { return !isFigure(ours) || !isFigure(theirs) || !isFigure(ratio); }

void Report::startArea(std::string area) {
  area_ = std::move(area);
  std::printf("\n%s\n  %-46s %-44s %12s %12s %-5s %8s %15s %7s\n", area_.c_str(), "case", "peer", "ours", "peer's", "",
              "ratio", "spread", "wanted");
}

void Report::compare(const std::string& name, const std::string& peer, double wanted, const Work& ours,
                     const Work& theirs, double ourSize, double peerSize) {
  const std::uint64_t ourCount = countFor(ours);
  const std::uint64_t peerCount = countFor(theirs);
  std::vector<double> oursNs, peerNs, ratios;
  double spentNs = 0;
  while (ratios.size() < kFewestRounds || (ratios.size() < kMostRounds && spentNs < kMostNs && !isSteady(ratios))) {
    oursNs.push_back(elapsedNs(ours, ourCount) / static_cast<double>(ourCount) / ourSize);
    peerNs.push_back(elapsedNs(theirs, peerCount) / static_cast<double>(peerCount) / peerSize);
    ratios.push_back(oursNs.back() / peerNs.back());
    spentNs += oursNs.back() * ourSize * static_cast<double>(ourCount) +
               peerNs.back() * peerSize * static_cast<double>(peerCount);
  }
  add(name, peer, wanted, oursNs, peerNs);
}

void Report::add(const std::string& name, const std::string& peer, double wanted, double ours, double theirs,
                 const std::string& unit) {
  const double ratio = ours / theirs;
  keepRow({area_, name, peer, ours, theirs, ratio, ratio, ratio, wanted, true, unit});
}

void Report::add(const std::string& name, const std::string& peer, double wanted, const std::vector<double>& ours,
                 const std::vector<double>& theirs) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / theirs[i]);
  const Spread spread = spreadOf(ratios);
  keepRow({area_, name, peer, quantile(ours, 0.5), quantile(theirs, 0.5), quantile(ratios, 0.5), spread.low,
           spread.high, wanted, isSteady(ratios)});
}

void Report::keepRow(Row row) {
  print(row);
  rows_.push_back(std::move(row));
}

}  // namespace corvix::bench
