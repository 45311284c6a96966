// What both directions agree on, so that whatever one accepts the other can give back.
#pragma once

#include <cstddef>

namespace corvix::xmlbinc {

/// Elements inside each other, the root included. The XML parser's call depth grows with them.
inline constexpr std::size_t kMaxDepth = 1000;

/// Size of a descriptor as XML, read or written.
inline constexpr std::size_t kMaxXmlBytes = std::size_t{16} << 20;

/// Size of a block. The block of an XML text is at most about three times as long as the text.
inline constexpr std::size_t kMaxBlockBytes = std::size_t{64} << 20;

}  // namespace corvix::xmlbinc
