// Streams that the program gives a name, for whoever opens "istream:name". [shell thread]
#pragma once

#include "core/baselib/streams/Stream.h"

namespace corvix {

// Keeps a reference on the stream until the name is registered anew, with null for nothing. The name is what
// comes behind "istream:" in locations, unescaped; letter case matters. False if the name is empty or the stream
// is no input stream.
CORVIX_API bool registerStream(const wchar_t* name, IBStream* stream);

}  // namespace corvix
