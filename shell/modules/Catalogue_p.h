// Catalogue: the descriptors of a folder's modules, from the one file that keeps them or from the modules themselves.
// What the file says is believed only of modules whose files have not changed since; a file that is damaged,
// foreign, of another version or not to be had costs time and nothing else.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "shell/modules/ModuleFile_p.h"
#include "shell/modules/ModuleFolder_p.h"

#include <forward_list>
#include <span>

namespace corvix {

class Catalogue {
 public:
  // The folder's files in their order, which outlive the catalogue. With an empty path none is read or kept.
  Catalogue(const std::wstring& folder, const std::vector<FolderFile>& files, std::wstring path)
      : folder_(folder), files_(files), path_(std::move(path)) {}

  // Of one of the files; each is asked for once at most, in their order. It stands as long as the catalogue.
  DescriptorView descriptorOf(const FolderFile& file);

  // Writes the catalogue anew if files were read that it did not know. At the end, once.
  void save(u64 time = systemTime()) noexcept;

  i32 takenCount() const noexcept { return takenCount_; }
  i32 readCount() const noexcept { return readCount_; }

 private:
  struct Entry {
    DirectoryStamp stamp;
    std::wstring_view name;
    std::span<const unsigned char> descriptor;  // empty: a library without one
  };

  void load();
  const Entry* known(const FolderFile& file) noexcept;
  void write(u64 time);
  static u64 systemTime() noexcept;

  const std::wstring& folder_;
  const std::vector<FolderFile>& files_;
  std::wstring path_;
  bool isLoaded_ = false;
  HeapBuffer<unsigned char> block_;  // what the file held; the entries point into it
  std::vector<Entry> entries_;       // those that count, in their order
  std::size_t next_ = 0;             // the first that has not been asked for
  std::forward_list<DescriptorBytes> read_;
  std::vector<Entry> fresh_;  // of those read, what is worth keeping
  i32 takenCount_ = 0;
  i32 readCount_ = 0;
};

// What stands in a catalogue's head of all that follows.
u64 catalogueCheck(const unsigned char* bytes, u64 size) noexcept;

// Where the catalogue of a folder is kept; empty when the user has no local data, or wants none.
std::wstring cataloguePathOf(const std::wstring& folder);

}  // namespace corvix
