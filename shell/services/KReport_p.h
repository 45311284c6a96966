#pragma once

#include "shell/services/Report.h"

#include <vector>

namespace corvix {

class KReport final : public BSmartObject, public IBReport {
  CORVIX_IDENTITY(KReport, 0x343646ED, 0xA46321BE, 0x7386A110, 0x3C61CD43, BSmartObject, IBReport)

 public:
  static constexpr std::size_t kMostLines = 4096;
  static constexpr std::size_t kMostUnits = 4096;  // of a line

  void addLine(const wchar_t* text) override;
  i32 lineCount() const noexcept override { return static_cast<i32>(lines_.size()); }
  const wchar_t* lineAt(i32 index) const noexcept override;
  void clear() noexcept override { lines_.clear(); }

  void addLines(const KReport& from, i32 first);
  void take(KReport& other) noexcept { lines_.swap(other.lines_); }

 private:
  std::vector<WideString, HeapAllocator<WideString>> lines_;
};

}  // namespace corvix
