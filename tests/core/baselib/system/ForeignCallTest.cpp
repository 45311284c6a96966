#include "core/baselib/system/ForeignCall_p.h"

#include <gtest/gtest.h>

#include "core/baselib/objects/GlobalData.h"

#include <windows.h>

namespace corvix {
namespace {

int destroyed = 0;

// The place of a function whose module has been unloaded: pages without access, then none at all.
TEST(ForeignCall, CodeThatIsGoneIsNotCalled) {
  void* const page = VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS);
  const auto gone = reinterpret_cast<BGlobalData::Destructor>(page);
  for (const bool isFreed : {false, true}) {
    if (isFreed) VirtualFree(page, 0, MEM_RELEASE);
    EXPECT_FALSE(isCode(page));
    for (int time = 0; time < 2; ++time) BGlobalData::setItem(IBTransportable::classInfo(), "gone", &destroyed, gone);
    BGlobalData::setItem(IBTransportable::classInfo(), "there", &destroyed, [](void*) { ++destroyed; });
    BGlobalData::destroyAll();
  }
  EXPECT_EQ(destroyed, 2);
  EXPECT_TRUE(isCode(reinterpret_cast<const void*>(&isCode)));
}

TEST(ForeignCall, WhatIsThrownCountsAsNothing) {
  EXPECT_EQ(callForeign(nullptr, L"", [] { return 5; }), 5);
  EXPECT_EQ(callForeign(nullptr, L"", []() -> int { throw 7; }), 0);
  EXPECT_EQ(callForeign(nullptr, L"", []() -> int* { throw 7; }), nullptr);
  callForeign(nullptr, L"", [] { throw 7; });
}

}  // namespace
}  // namespace corvix
