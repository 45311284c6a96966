// The harness: two ways of doing the same work, taken in turns until the ratio between them is steady.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvix::bench {

struct Row {
  std::string area;
  std::string name;
  std::string peer;
  double ours = 0;    // a single operation, median of the rounds
  double theirs = 0;  // likewise
  double ratio = 0;   // ours / peer, median over the rounds
  double low = 0;     // 19 of 20 runs like this one would have their median between this
  double high = 0;    // and this
  double wanted = 0;  // at most; 0 when the row is only told
  bool isSteady = true;
  std::string unit = "ns";

  // A figure that cannot be: what was to be measured was not.
  bool isFaulty() const noexcept;
  // Above what is wanted, and not only by what the rounds differ.
  bool isMissed() const noexcept { return wanted > 0 && low > wanted; }
};

// Does `count` operations.
using Work = std::function<void(std::uint64_t count)>;

class Report {
 public:
  // Measures and prints a row. `wanted` is the ratio aimed at. With `ourSize` and `peerSize` an operation does that
  // many things, and the figures are those of one thing.
  void compare(const std::string& name, const std::string& peer, double wanted, const Work& ours, const Work& theirs,
               double ourSize = 1, double peerSize = 1);

  // A row whose figures were counted.
  void add(const std::string& name, const std::string& peer, double wanted, double ours, double theirs,
           const std::string& unit = "ns");

  // A row of rounds that were measured by other means, ours and theirs in turns.
  void add(const std::string& name, const std::string& peer, double wanted, const std::vector<double>& ours,
           const std::vector<double>& theirs);

  void startArea(std::string area);
  const std::vector<Row>& rows() const noexcept { return rows_; }

 private:
  void keepRow(Row row);

  std::string area_;
  std::vector<Row> rows_;
};

// An area of rows, run in the order of the names: `const Area area{"query", measureQuery};` at file level.
struct Area {
  Area(const char* areaName, void (*areaRun)(Report&));
  const char* name;
  void (*run)(Report&);
  const Area* next;
  static const Area* first;
};

// Keeps the compiler from knowing, or from leaving out, what a value is.
template <class T>
inline void keep(T& value) {
#if defined(_MSC_VER)
  static volatile const void* sink;
  sink = &value;
#else
  asm volatile("" : "+m"(value) : : "memory");
#endif
}

}  // namespace corvix::bench
