// A message loop for tests.
#pragma once

#include <windows.h>

namespace corvix::testing_support {

// Until `isDone` or the time is over.
template <class Condition>
void runMessageLoop(unsigned long longestMs, Condition isDone) {
  const unsigned long start = GetTickCount();
  MSG message;
  while (!isDone() && GetTickCount() - start < longestMs) {
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    if (!isDone()) MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
  }
}

}  // namespace corvix::testing_support
