// What the user's settings of the group "Quality" make of drawing: process-wide values, read at every use. [any thread]
#pragma once

#include "core/baselib/Api.h"

#include <atomic>

namespace corvix {

// The numbers are those of the settings: places in their lists of values, from 1.
enum class RotationMode : i32 { DoNotShow = 1, DoNotRotate, QuarterTurns, Normal, Best };
enum class StretchMode : i32 { Fast = 1, Normal, Best };
enum class CmykMode : i32 { Fast = 1, Normal, Best, Alternate, ByTable };

struct Quality {
  std::atomic<bool> softwareClipping{true};
  std::atomic<bool> smartLines{false};
  std::atomic<i32> imageRotation{static_cast<i32>(RotationMode::Best)};
  std::atomic<i32> imageStretch{static_cast<i32>(StretchMode::Normal)};
  std::atomic<i32> cmykConversion{static_cast<i32>(CmykMode::ByTable)};
  std::atomic<i32> imageSizeLimit{1};  // in units of 16 megapixels; none when not above 0

  // A number that stands for no value counts as the default.
  RotationMode rotationMode() const noexcept {
    const i32 mode = imageRotation.load(std::memory_order_relaxed);
    return mode >= 1 && mode <= 5 ? static_cast<RotationMode>(mode) : RotationMode::Best;
  }
  StretchMode stretchMode() const noexcept {
    const i32 mode = imageStretch.load(std::memory_order_relaxed);
    return mode >= 1 && mode <= 3 ? static_cast<StretchMode>(mode) : StretchMode::Normal;
  }
  CmykMode cmykMode() const noexcept {
    const i32 mode = cmykConversion.load(std::memory_order_relaxed);
    return mode >= 1 && mode <= 5 ? static_cast<CmykMode>(mode) : CmykMode::ByTable;
  }
  i64 largestImage() const noexcept {  // pixels
    const i64 limit = imageSizeLimit.load(std::memory_order_relaxed);
    return limit > 0 ? limit << 24 : INT64_MAX;
  }
};

Quality& quality() noexcept;

}  // namespace corvix
