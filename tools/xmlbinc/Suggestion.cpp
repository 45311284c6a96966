#include "tools/xmlbinc/Suggestion.h"

#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace corvix::xmlbinc {

namespace {

/// The Levenshtein distance: letters to insert, delete or replace to get from one word to the other.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

/// "boolean" for "bool", or the other way round.
bool isLongerForm(std::string_view a, std::string_view b) {
  return std::min(a.size(), b.size()) >= 3 && (a.starts_with(b) || b.starts_with(a));
}

bool areSwapped(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin());
  if (a.end() - left < 2 || left[0] != right[1] || left[1] != right[0]) return false;
  return std::equal(left + 2, a.end(), right + 2);
}

}  // namespace

bool isMistyped(std::string_view word, std::span<const std::string_view> known) {
  const std::string small = lowered(word);
  return std::any_of(known.begin(), known.end(), [&](std::string_view candidate) {
    const std::string other = lowered(candidate);
    const std::size_t longer = std::max(small.size(), other.size()), shorter = std::min(small.size(), other.size());
    return word != candidate && longer - shorter <= 1 && (areSwapped(small, other) || distance(small, other) <= 1);
  });
}

std::string suggestion(std::string_view word, std::span<const std::string_view> known) {
  constexpr std::size_t kLongestWord = 100;
  if (word.size() > kLongestWord) return "";
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string_view candidate : known) {
    if (candidate.size() > kLongestWord) continue;
    const std::string a = lowered(word);
    const std::string b = lowered(candidate);
    const std::size_t found = isLongerForm(a, b) ? std::min<std::size_t>(distance(a, b), 1) : distance(a, b);
    if (found >= least) continue;
    least = found;
    nearest = candidate;
  }
  return nearest.empty() ? "" : "; did you mean \"" + std::string(nearest) + "\"?";
}

}  // namespace corvix::xmlbinc
