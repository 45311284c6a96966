// Files, searches and modules of the kernel, owned.
#pragma once

#include "core/baselib/Api.h"
#include "core/baselib/system/OwningHandle_p.h"

#include <string>

#include <windows.h>

namespace corvix {

struct InvalidIsNone {
  using Handle = HANDLE;
  static Handle none() noexcept { return INVALID_HANDLE_VALUE; }
};

struct CloseFile : InvalidIsNone {
  static void close(Handle handle) noexcept { CloseHandle(handle); }
};
using FileHandle = OwningHandle<CloseFile>;

struct CloseSearch : InvalidIsNone {
  static void close(Handle handle) noexcept { FindClose(handle); }
};
using SearchHandle = OwningHandle<CloseSearch>;

struct CloseModule : NullIsNone<HMODULE> {
  static void close(HMODULE handle) noexcept { FreeLibrary(handle); }
};
using ModuleHandle = OwningHandle<CloseModule>;

// Whatever else the kernel gives: processes, mappings, threads.
struct CloseKernelObject : NullIsNone<HANDLE> {
  static void close(HANDLE handle) noexcept { CloseHandle(handle); }
};
using KernelHandle = OwningHandle<CloseKernelObject>;

// How the library opens its own files: words are combined of these.
namespace file_mode {
constexpr u32 kRead = 0x01;
constexpr u32 kWrite = 0x02;
constexpr u32 kCreate = 0x04;  // replaces a file that exists; without it the file must exist
constexpr u32 kAppend = 0x08;  // starts at the end; with kCreate a file that exists is kept
constexpr u32 kShareRead = 0x10;
constexpr u32 kShareWrite = 0x20;
constexpr u32 kShareDelete = 0x40;
constexpr u32 kNew = 0x80;  // creates; a file that exists is a failure
}  // namespace file_mode

// None when the file cannot be opened that way.
FileHandle openFile(const wchar_t* path, u32 mode) noexcept;

// An empty file beside another one's place, "NAME.part", or with a number where somebody has that, to be written and
// then to take that place in one step: whatever happens before, that stays as it is. Removed if it has not.
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

// The path of a module's file, of any length; empty if the system does not tell.
std::wstring modulePath(HMODULE module);

// The folder of a path, without the last separator.
std::wstring folderOf(const std::wstring& path);

}  // namespace corvix
