// Numbers and text as the binary forms have them: little-endian, UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace corvix::xmlbinc {

class ByteWriter {
 public:
  explicit ByteWriter(std::string_view start = {}) : bytes_(start) {}

  void u16(std::uint32_t value) {
    bytes_ += static_cast<char>(value & 0xFF);
    bytes_ += static_cast<char>(value >> 8 & 0xFF);
  }

  void u32(std::uint32_t value) {
    u16(value & 0xFFFF);
    u16(value >> 16);
  }

  void units(std::u16string_view text) {
    for (const char16_t unit : text) u16(unit);
  }

  void raw(std::string_view bytes) { bytes_ += bytes; }

  /// Zeros up to the next multiple of four bytes.
  void pad() { bytes_.resize((bytes_.size() + 3) / 4 * 4); }

  /// A 16-bit number that stands already.
  void patch16(std::size_t offset, std::size_t value) {
    bytes_[offset] = static_cast<char>(value & 0xFF);
    bytes_[offset + 1] = static_cast<char>(value >> 8 & 0xFF);
  }

  std::size_t size() const { return bytes_.size(); }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

}  // namespace corvix::xmlbinc
