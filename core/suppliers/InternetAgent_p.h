// IInternetAgent: who the program is, in the requests that internet streams send, and who is told when one waits for
// its server. The shell tells and is told.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

class IInternetAgent {
 public:
  virtual const wchar_t* internetAgent() const noexcept = 0;

  // A thread has waited for a server for half a second. Returns what tells this wait apart from others. [any thread]
  virtual i32 startWait() { return 0; }

  // About twenty times a second from then on; false ends the wait.
  virtual bool goOnWaiting(i32) { return true; }

  virtual void endWait(i32) {}

 protected:
  ~IInternetAgent() = default;
};

// Must outlive every stream; null for nobody.
void setInternetAgent(IInternetAgent* agent) noexcept;

// Null when nobody tells.
const wchar_t* internetAgentName() noexcept;

}  // namespace corvix
