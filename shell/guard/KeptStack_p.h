// keepStack: has the calling thread's stack keep enough room for what follows its overflow. In 64 bits the way to a
// handler and back takes several contexts of 1.2 KiB, and the two pages that the system keeps otherwise are too few:
// the process ends without a word. `corvix check` does it, too.
#pragma once

namespace corvix {

void keepStack() noexcept;  // once for each thread; the next time it does nothing

}  // namespace corvix
