// The binary block: magic, version, then one node with all that is in it. Integers are 32-bit, least byte first.
//
//   node    type, name [, count, children: elements] [, value: attributes]
//   string  n > 0: n UTF-16 units follow; 0: empty; n < 0: the same as the -n-th string of the block that was
//   written out
//           in full, counted from 1, empty ones included
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace corvix::xmlbinc {

inline constexpr std::string_view kBlockMagic = "xmlbin";
inline constexpr std::uint32_t kBlockVersion = 0x100;

/// A type and an empty string.
inline constexpr std::size_t kSmallestNodeBytes = 8;

}  // namespace corvix::xmlbinc
