// PeImage: what a module file says of itself, read by position. Trusts nothing in the file, runs none of it, and takes
// no more memory than what is asked for.
#pragma once

#include "core/baselib/system/FileWindow_p.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvix {

class PeImage {
 public:
  enum class Kind {
    Unreadable,    // `error` says why
    NotAModule,    // no PE file at all
    Truncated,     // its headers point past its end
    OtherMachine,  // a PE file for another processor
    Damaged,       // its headers contradict themselves
    NotALibrary,   // a program
    Library,
  };

  explicit PeImage(const wchar_t* path);
  PeImage(const PeImage&) = delete;
  PeImage& operator=(const PeImage&) = delete;

  Kind kind() const noexcept { return kind_; }
  u32 error() const noexcept { return error_; }
  u16 machine() const noexcept { return machine_; }

  enum class ResourceState { Found, Missing, Outside, Empty, TooLarge };

  // A resource in the first of its languages. Both names are in capitals.
  ResourceState readResource(std::wstring_view type, std::wstring_view name, u32 mostBytes,
                             std::vector<unsigned char>& bytes);

  // The names of the modules that it imports from, as they stand; at most a thousand.
  std::vector<std::string> imports();

 private:
  struct Section {
    u32 address;  // inside the image
    u32 offset;   // inside the file
    u32 size;
  };

  Kind examine();
  template <class T>
  bool readFile(u64 offset, T& value) noexcept;

  // By address inside the image: all of it, from one section, or false.
  bool readImage(u64 address, void* to, u32 sizeBytes) noexcept;
  template <class T>
  bool readImage(u64 address, T& value) noexcept {
    return readImage(address, &value, sizeof value);
  }
  const Section* sectionAt(u64 address) const noexcept;

  enum class Entry { Found, Missing, Outside };
  Entry findNamed(u32 directory, std::wstring_view name, u32& target);
  Entry compareName(u32 offset, std::wstring_view name, int& order);
  std::optional<std::string> readName(u32 address);

  FileWindow file_;
  Kind kind_ = Kind::Unreadable;
  u32 error_ = 0;
  u16 machine_ = 0;
  u32 importTable_ = 0;  // addresses; 0 when there is none
  u32 resources_ = 0;
  std::vector<Section> sections_;
};

}  // namespace corvix
