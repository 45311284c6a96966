// The main of every test program. Wine kills a process that ends while one of its threads is just starting (see
// docs/wine.md), and others start threads that nobody waits for: Google Test one, WinINet one when it keeps a
// connection. So the end is put off until all have started.
#include <windows.h>
#include <atomic>
#include <gtest/gtest.h>

#include <tlhelp32.h>

namespace {

std::atomic<int> running{1};

void NTAPI count(void*, DWORD reason, void*) {
  if (reason == DLL_THREAD_ATTACH) ++running;
  if (reason == DLL_THREAD_DETACH) --running;
}

[[gnu::section(".CRT$XLD"), gnu::used]] const PIMAGE_TLS_CALLBACK onThread = count;

int threadsOfThisProcess() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread{};
  thread.dwSize = sizeof thread;
  int found = 0;
  for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread))
    found += thread.th32OwnerProcessID == GetCurrentProcessId();
  CloseHandle(snapshot);
  return found;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  constexpr int kMostTries = 500;  // should the system count some that we never see
  for (int i = 0; i < kMostTries && threadsOfThisProcess() > running; ++i) Sleep(2);
  return result;
}
