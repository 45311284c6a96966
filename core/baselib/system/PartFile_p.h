// PartFile: a file that takes another one's place in one step.
#pragma once

#include "core/baselib/Api.h"

#include <string>

namespace corvix {

// An empty file beside another one's place, "NAME.part", or with a number where somebody has that (of a long name only
// the beginning), to be written and then to take that place in one step: whatever happens before, that stays as it is.
// Removed if it has not.
class PartFile {
 public:
  // None, and the system's error in `error`, if it cannot be made.
  explicit PartFile(const wchar_t* place, u32* error = nullptr);
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  explicit operator bool() const noexcept { return !path_.empty(); }
  const wchar_t* path() const noexcept { return path_.c_str(); }

  // 0, or the system's error. What was written is on the disk when this returns, not only with the system.
  u32 flush() const noexcept;

  // With the attributes of the file that was there. 0, or the system's error: everything is as before then.
  u32 takePlace() noexcept;

 private:
  std::wstring place_;
  std::wstring path_;  // empty: none, or it has taken its place
};

}  // namespace corvix
