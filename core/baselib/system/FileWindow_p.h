// FileWindow: reads a file by position. What was read last is kept: what lies close together costs one call of the
// system.
#pragma once

#include "core/baselib/system/KernelFile_p.h"

namespace corvix {

class FileWindow {
 public:
  // 0, or the system's error. What is no file on a disk is refused.
  u32 open(const wchar_t* path) noexcept;

  u64 size() const noexcept { return size_; }

  // All of it, or false.
  bool read(u64 offset, void* to, u32 sizeBytes) noexcept;

 private:
  u32 readFile(u64 offset, void* to, u32 mostBytes) noexcept;

  FileHandle file_;
  u64 size_ = 0;
  u64 heldAt_ = 0;
  u32 held_ = 0;
  unsigned char window_[4096];
};

}  // namespace corvix
