// Where documents are kept.
#pragma once

#include "core/baselib/Api.h"

#include <string>
#include <string_view>

namespace corvix {

struct DocumentPlace {
  std::wstring location;  // the full path of a file, without the mark of long ones, else a location
  std::wstring title;     // the last name in it
  std::wstring path;      // as the system takes it; empty for what is no file
};

// False when the text names nothing that a document can be kept in.
bool resolvePlace(const wchar_t* location, DocumentPlace& place);

// A file, and what it holds as far as the system can tell without reading it.
struct FileState {
  u32 volume = 0;
  u64 index = 0;  // on the volume; 0: there is no such file, or the file system numbers none
  u64 sizeBytes = 0;
  u64 written = 0;
  friend bool operator==(const FileState&, const FileState&) = default;

  bool isSameFile(const FileState& other) const noexcept {
    return index && index == other.index && volume == other.volume;
  }
};

// 0, or the system's error, or kIsFolder.
constexpr u32 kIsFolder = 0x20000001;  // no number of the system's own
u32 stateOf(const std::wstring& path, FileState& state) noexcept;

// Letter case does not matter to the system.
bool isSamePath(const std::wstring& a, const std::wstring& b) noexcept;

// Whether the system would have the file written; nothing is.
bool isWritable(const std::wstring& path) noexcept;

// What the system says to an error: a sentence.
std::wstring systemText(u32 error);

// As names stand in sentences.
inline std::wstring quoted(std::wstring_view text) { return L'"' + std::wstring(text) + L'"'; }

}  // namespace corvix
