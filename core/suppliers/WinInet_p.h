// The calls of WinINet that internet streams make, in a table that tests replace. The system's library is loaded
// with the first stream: most processes never need it.
#pragma once

#include "core/baselib/system/OwningHandle_p.h"

#include <windows.h>
#include <wininet.h>

namespace corvix {

struct WinInetCalls {
  decltype(&InternetOpenW) open = nullptr;
  decltype(&InternetOpenUrlW) openUrl = nullptr;
  decltype(&InternetReadFile) readFile = nullptr;
  decltype(&InternetSetFilePointer) setFilePointer = nullptr;
  decltype(&InternetCloseHandle) closeHandle = nullptr;
  decltype(&InternetCheckConnectionW) checkConnection = nullptr;
  decltype(&InternetGetLastResponseInfoW) getLastResponseInfo = nullptr;
  // Streams do without these two where they are null.
  decltype(&InternetQueryDataAvailable) queryDataAvailable = nullptr;
  decltype(&HttpQueryInfoW) queryInfo = nullptr;
};

// Null if the system has no WinINet. [any thread]
const WinInetCalls* winInet() noexcept;

// For tests; null brings the system's back. No stream may be alive.
void replaceWinInet(const WinInetCalls* calls) noexcept;

struct CloseInternet : NullIsNone<HINTERNET> {
  static void close(HINTERNET handle) noexcept { winInet()->closeHandle(handle); }
};
using InternetHandle = OwningHandle<CloseInternet>;

}  // namespace corvix
