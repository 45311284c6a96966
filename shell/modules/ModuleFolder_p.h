// The module files of a folder, as its directory has them: none of them is opened.
#pragma once

#include "core/baselib/Api.h"

#include <string>
#include <string_view>
#include <vector>

namespace corvix {

// What a directory says of a file. As long as it says the same, the file holds the same.
struct DirectoryStamp {
  u64 sizeBytes;
  u64 written;   // in units of 100 ns, as the system counts
  u64 changed;   // its content or anything else about it
  u64 identity;  // on its volume; 0 when the file system has none
  friend bool operator==(const DirectoryStamp&, const DirectoryStamp&) = default;
};

struct FolderFile {
  std::wstring name;
  DirectoryStamp stamp{};  // of identity 0 when it is not known, or not the file's own but that of a link
};

// All "*.dll", in the order in which a user would list them, whatever the file system's order is.
std::vector<FolderFile> modulesOf(const std::wstring& folder);

// Whether a stands before b in that order.
bool standsBefore(std::wstring_view a, std::wstring_view b) noexcept;

}  // namespace corvix
