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

// The path of a module's file, of any length; empty if the system does not tell.
std::wstring modulePath(HMODULE module);

// The folder of a path, without the last separator.
std::wstring folderOf(const std::wstring& path);

}  // namespace corvix
