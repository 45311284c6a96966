// The main of every test program. Google Test starts a thread of its own when a thread first uses one of its
// thread-locals, and never waits for it. Wine kills a process that ends while one of its threads is just starting (see
// docs/wine.md), so this one is started here and has started before the first test.
#include <windows.h>
#include <atomic>
#include <gtest/gtest.h>

namespace {

std::atomic<int> threadsStarted{0};

void NTAPI countStarts(void*, DWORD reason, void*) { threadsStarted += reason == DLL_THREAD_ATTACH; }

[[gnu::section(".CRT$XLD"), gnu::used]] const PIMAGE_TLS_CALLBACK onThread = countStarts;

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  { const testing::ScopedTrace firstUse(__FILE__, __LINE__, ""); }
  while (threadsStarted == 0) Sleep(1);
  return RUN_ALL_TESTS();
}
