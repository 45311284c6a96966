// What an internet stream can do besides reading: query<IInternetStream>(stream).
//
// About the session. All internet streams of a process share one session of the system and one count. The
// count grows when a stream has to create the session, not when a stream finds one; every stream that goes
// lowers it, and the session ends when it comes from 1 to 0. So, of two streams that live at the same time, the
// first to go ends the session for both, and the second takes the count below 0, where no later stream creates
// a session any more: they are all closed, until the program ends. Programs rely on the session ending with
// the stream that made it; the count is kept like that on purpose. Have one internet stream at a time, and
// release it before the next is opened.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IInternetStream : public IBTransportable {
  CORVIX_IDENTITY(IInternetStream, 0x2C94E7B0, 0x47A5D18F, 0xB80F63E2, 0x69D3A15C, IBTransportable)

 public:
  static constexpr u16 kNoCharacter = 0xFFFF;

  // The next byte, or kNoCharacter when nothing was read.
  virtual u16 readCharacter() = 0;

  // The next read begins with `byte`, whatever was there. Returns the position, which is one less. There is
  // room for one byte, and it stays when the position is set anew.
  virtual u32 pushBack(u8 byte) = 0;

  // Whether the system thinks that the location's server can be reached.
  virtual bool checkConnection() = 0;
};

// Who the program is, in the requests that it sends. The shell tells.
class IInternetAgent {
 public:
  virtual const wchar_t* internetAgent() const noexcept = 0;

 protected:
  ~IInternetAgent() = default;
};

// Must outlive every stream; null for nobody.
void setInternetAgent(const IInternetAgent* agent) noexcept;

}  // namespace corvix
