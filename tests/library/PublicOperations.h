// The one list of what the library offers, each with everything that it makes, uses and gives back. Whoever adds an
// operation adds it here: what fails in it, in every place, is then tried by itself. check_operations.py says which are
// missing.
#pragma once

#include "core/baselib/objects/NotifySender.h"
#include "tests/support/HeapFaults.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cwchar>
#include <new>
#include <span>
#include <vector>

namespace corvix::testing_support {

struct PublicOperation {
  const char* name;
  // Leaves nothing behind, whatever fails on the way. What is kept by others (a store, a table) is looked at after a
  // failure: it is as before or complete. May throw std::bad_alloc.
  void (*call)();
  bool draws = false;  // makes objects of GDI
};

// All rows below.
std::vector<PublicOperation> publicOperations();

std::span<const PublicOperation> baseOperations();
std::span<const PublicOperation> streamOperations();
std::span<const PublicOperation> graphicsOperations();
std::span<const PublicOperation> shellOperations();

// The calls of the system that may fail, counted; one of them does.
struct SystemFaults {
  static inline std::atomic<int> made{0};
  static inline std::atomic<int> refused{INT_MAX};
  static bool isNext() { return ++made == refused; }
};

inline constexpr wchar_t kLongText[] = L"a text of more than a few letters, so that it has to be held somewhere else";

// What a test found wrong since this was made.
class Findings {
 public:
  bool none() const { return count() == before_; }

 private:
  static int count() {
    const auto& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
    return result.total_part_count();
  }
  const int before_ = count();
};

// In the folder of temporary files, removed at the end.
class OwnFile {
 public:
  explicit OwnFile(const wchar_t* name) {
    if (GetTempPathW(MAX_PATH, path_) == 0) path_[0] = 0;
    std::wcscat(path_, name);
  }
  ~OwnFile() { DeleteFileW(path_); }
  OwnFile(const OwnFile&) = delete;
  OwnFile& operator=(const OwnFile&) = delete;
  const wchar_t* path() const { return path_; }

 private:
  wchar_t path_[2 * MAX_PATH];
};

// A listener on a list for a block of code.
class Listens {
 public:
  Listens(BNotifySender& list, IBTransportable* listener) : list_(list), listener_(listener) {
    list_.addListener(listener_);
  }
  ~Listens() { list_.removeListener(listener_); }
  Listens(const Listens&) = delete;
  Listens& operator=(const Listens&) = delete;

 private:
  BNotifySender& list_;
  IBTransportable* const listener_;
};

// Runs `change`; when memory fails, `isWhole` looks at what is left, and the failure goes on.
template <class Change, class IsWhole>
void tryOrLook(Change change, IsWhole isWhole) {
  try {
    change();
  } catch (const std::bad_alloc&) {
    const HeapFaults::Pause pause;
    EXPECT_TRUE(isWhole());
    throw;
  }
}

}  // namespace corvix::testing_support
