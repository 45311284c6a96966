// IAGTiles: drawing by several threads at once; a side of contexts that draw in memory by themselves, found by
// query<IAGTiles>(context). The pixels are the same as by one thread. [the context's thread]
#pragma once

#include "graphics/IAGDC.h"

namespace corvix {

class IAGTiles : public IBTransportable {
  CORVIX_IDENTITY(IAGTiles, 0xD26B41F8, 0x4E07935C, 0xA85FC31E, 0x7194E0B3, IBTransportable)

 public:
  static constexpr i32 kMostTileThreads = 64;

  // From here on what is drawn is collected, as it looks by the state of that moment, and drawn later by up to
  // `threads` threads, the calling one among them, each some of the rows: at `endTiles`, at 1 to 8 MiB of it, and
  // before anything that asks for pixels or for the device (`getPixel`, `deviceContext`, `copyTo`, the begin and end of
  // a group, `detach`). For pixels that a caller reaches by itself through `bitmap`, call `endTiles` first. An
  // operation answers true when it was collected. False, and nothing changes, for fewer than 1 or more than 64 threads,
  // between `beginTiles` and `endTiles`, and when nothing is attached.
  virtual bool beginTiles(i32 threads) = 0;

  // Draws what is left, and from here on each operation draws at once again. What is collected is drawn all of it or
  // not at all: false when memory did not suffice for some of it since `beginTiles`, and when that was not called.
  virtual bool endTiles() = 0;
};

}  // namespace corvix
