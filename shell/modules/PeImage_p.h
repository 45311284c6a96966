// PeImage: what a module file says of itself, read as bytes. Trusts nothing in the file.
#pragma once

#include "core/baselib/Api.h"

#include <optional>
#include <string>
#include <vector>

namespace corvix {

class PeImage {
 public:
  enum class Kind {
    NotAModule,    // no PE file at all
    Truncated,     // its headers point past its end
    OtherMachine,  // a PE file for another processor
    NotALibrary,   // a program
    Library,
  };

  // Nothing when the file cannot be read.
  static std::optional<PeImage> open(const wchar_t* path);

  Kind kind() const noexcept { return kind_; }
  u16 machine() const noexcept { return machine_; }

  // The names of the modules that it imports from, as they stand; at most a thousand.
  std::vector<std::string> imports() const;

 private:
  PeImage() = default;
  void examine();
  template <class T>
  bool read(u64 offset, T& value) const noexcept;
  std::optional<u32> fileOffset(u32 address) const noexcept;

  std::vector<unsigned char> bytes_;
  Kind kind_ = Kind::NotAModule;
  u16 machine_ = 0;
  u32 importTable_ = 0;  // address inside the image
  u32 sectionTable_ = 0;
  u16 sectionCount_ = 0;
};

}  // namespace corvix
