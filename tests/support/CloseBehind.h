// Reaching the handle of a stream, to make closing it fail.
#pragma once

#include "core/baselib/streams/TempStorage.h"

#include <cwchar>

#include <windows.h>

namespace corvix::testing_support {

// Its own `close` will find the handle gone.
inline void closeBehindItsBack(const corvix::BTempStorage& storage) {
  const wchar_t* const name = std::wcsrchr(storage.fileName().c_str(), L'\\');
  for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
    HANDLE const handle = reinterpret_cast<HANDLE>(value);
    wchar_t path[1024];
    if (GetFileType(handle) == FILE_TYPE_DISK && GetFinalPathNameByHandleW(handle, path, 1024, 0) &&
        std::wcsstr(path, name)) {
      CloseHandle(handle);
      return;
    }
  }
}

}  // namespace corvix::testing_support
