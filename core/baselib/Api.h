// What every public header needs first: the export mark and the fixed-width integer names.
#pragma once

#include <cstddef>
#include <cstdint>

// The library's own sources are compiled with CORVIX_BUILDING; everybody else imports.
#if !defined(_WIN32)
#define CORVIX_API
#define CORVIX_EXPORT
#else
#define CORVIX_EXPORT __declspec(dllexport)
#if defined(CORVIX_BUILDING)
#define CORVIX_API __declspec(dllexport)
#else
#define CORVIX_API __declspec(dllimport)
#endif
#endif

namespace corvix {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

}  // namespace corvix
