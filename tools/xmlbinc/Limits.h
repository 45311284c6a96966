// What both directions agree on, so that whatever one accepts the other can give back.
#pragma once

#include <cstddef>

namespace corvix::xmlbinc {

/// Elements inside each other, the root included. The XML parser's call depth grows with them.
inline constexpr std::size_t kMaxDepth = 1000;

/// Size of a descriptor as XML, read or written.
inline constexpr std::size_t kMaxXmlBytes = std::size_t{8} << 20;

/// Size of a block. That of an XML text is at most about four times as long as the text.
inline constexpr std::size_t kMaxBlockBytes = 5 * kMaxXmlBytes;

}  // namespace corvix::xmlbinc
