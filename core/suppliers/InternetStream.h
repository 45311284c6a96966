// What an internet stream can do besides reading: query<IInternetStream>(stream).
//
// About the session. All internet streams of a process share one session of the system and one count. The
// count grows when a stream has to create the session, not when a stream finds one; every stream that goes
// lowers it, and the session ends when it comes from 1 to 0. So, of two streams that live at the same time, the
// first to go ends the session for both, and the second takes the count below 0, where no later stream creates
// a session any more: they are all closed, until the program ends. Programs rely on the session ending with
// the stream that made it; the count is kept like that on purpose. Have one internet stream at a time, and
// release it before the next is opened.
//
// About waiting. A call of a stream waits for its server for half a minute at most, or as long as was set; it returns
// what has come by then. When nothing has, the stream is closed, also while it is opened: a server that stalls,
// trickles its head or sends its callers in a circle holds nobody. The shell's listeners are told of a wait of more
// than half a second as of any progress, if it is on the shell's thread, and may end it with notify::kStop.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

constexpr u32 kInternetTimeoutMs = 30'000;  // unless another one is set
constexpr u32 kInternetForever = 0xFFFFFFFF;

// How long every call waits from now on, also one that waits already. [any thread]
CORVIX_API void setInternetTimeout(u32 milliseconds) noexcept;
CORVIX_API u32 internetTimeout() noexcept;

// Ends every wait that goes on now, as if its time were over: also that of opening. [any thread]
CORVIX_API void cancelInternetWaits() noexcept;

// Ending one stream's waits: query<IInternetCancel>(stream).
class IInternetCancel : public IBTransportable {
  CORVIX_IDENTITY(IInternetCancel, 0x9B47C1E5, 0x4F2306D8, 0xA16E58B3, 0x0D97F42C, IBTransportable)

 public:
  // The call that waits returns with what it has, and the stream is closed from then on. The caller holds a reference
  // meanwhile. [any thread]
  virtual void cancel() noexcept = 0;
};

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

}  // namespace corvix
