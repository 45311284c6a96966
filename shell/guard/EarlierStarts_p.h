// EarlierStarts: what starts of this program left that ended before their end, as their files say.
#pragma once

#include "shell/guard/StartFile_p.h"

#include <string>
#include <vector>

namespace corvix {

struct EndedStart {
  std::wstring file;
  std::wstring module;  // its path; empty when nobody was busy, so that nobody knows why it ended
  StartPhase phase = StartPhase::None;
  u64 begun = 0;
  bool isTold = false;
};

class EarlierStarts {
 public:
  // Of processes that are gone; what cannot be read counts as not there.
  void read() noexcept;

  // The start that ended in that module, if it is the same file still; else null.
  const EndedStart* endedIn(const wchar_t* modulePath) const noexcept;

  // Two in a row ended without a name: this one goes without plug-ins.
  bool isUnsafe() const noexcept { return unknown_.size() >= 2; }
  const std::vector<EndedStart>& unknown() const noexcept { return unknown_; }

  // A start has come to its end: those of an unknown origin do not count any more.
  void forgetUnknown() noexcept;

  // The module is as any other from the next start on. False when there is nothing, or it cannot be taken away.
  bool forget(const std::wstring& modulePath) noexcept;

  static void setTold(const EndedStart& ended) noexcept;

  // "2026-11-23 07:01 (while its code was loaded)"; in the user's time.
  static std::wstring describe(const EndedStart& ended);

 private:
  void readFile(const std::wstring& file, const std::wstring& program);

  std::vector<EndedStart> named_;
  std::vector<EndedStart> unknown_;
  std::vector<std::wstring> outdated_;
};

}  // namespace corvix
