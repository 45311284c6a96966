#include "core/suppliers/WinInet_p.h"

namespace corvix {

namespace {

const WinInetCalls* replacement = nullptr;

struct SystemCalls {
  SystemCalls() noexcept : library(LoadLibraryExW(L"wininet.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {
    bind(calls.open, "InternetOpenW");
    bind(calls.openUrl, "InternetOpenUrlW");
    bind(calls.readFile, "InternetReadFile");
    bind(calls.setFilePointer, "InternetSetFilePointer");
    bind(calls.closeHandle, "InternetCloseHandle");
    bind(calls.checkConnection, "InternetCheckConnectionW");
    bind(calls.getLastResponseInfo, "InternetGetLastResponseInfoW");
    isComplete = !isMissing;
    bind(calls.queryDataAvailable, "InternetQueryDataAvailable");
    bind(calls.queryInfo, "HttpQueryInfoW");
  }

  template <class Call>
  void bind(Call& call, const char* name) noexcept {
    FARPROC const found = library ? GetProcAddress(library, name) : nullptr;
    call = reinterpret_cast<Call>(reinterpret_cast<void*>(found));
    isMissing = isMissing || !found;
  }

  HMODULE library;  // never freed: the process may be in one of its calls
  WinInetCalls calls;
  bool isMissing = false;
  bool isComplete = false;
};

}  // namespace

const WinInetCalls* winInet() noexcept {
  if (replacement) return replacement;
  static const SystemCalls system;
  return system.isComplete ? &system.calls : nullptr;
}

void replaceWinInet(const WinInetCalls* calls) noexcept { replacement = calls; }

}  // namespace corvix
