#include "shell/modules/PeImage_p.h"

#include "core/baselib/system/KernelFile.h"

#include <algorithm>
#include <cstring>

#include <windows.h>

namespace corvix {

namespace {

constexpr u64 kLargestModule = 512u * 1024 * 1024;
constexpr std::size_t kMostImports = 1000;
constexpr std::size_t kLongestName = 260;

#if defined(_WIN64)
constexpr u16 kOurMachine = IMAGE_FILE_MACHINE_AMD64;
#else
constexpr u16 kOurMachine = IMAGE_FILE_MACHINE_I386;
#endif

}  // namespace

std::optional<PeImage> PeImage::open(const wchar_t* path) {
  std::optional<std::vector<unsigned char>> bytes = readWholeFile(path, kLargestModule);
  if (!bytes) return std::nullopt;
  PeImage image;
  image.bytes_ = std::move(*bytes);
  image.examine();
  return image;
}

template <class T>
bool PeImage::read(u64 offset, T& value) const noexcept {
  if (offset > bytes_.size() || bytes_.size() - offset < sizeof value) return false;
  std::memcpy(&value, bytes_.data() + offset, sizeof value);
  return true;
}

void PeImage::examine() {
  IMAGE_DOS_HEADER dos;
  if (!read(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return;
  DWORD signature = 0;
  const u64 header = static_cast<u32>(dos.e_lfanew);
  if (!read(header, signature)) {
    kind_ = Kind::Truncated;
    return;
  }
  if (signature != IMAGE_NT_SIGNATURE) return;

  IMAGE_FILE_HEADER file;
  kind_ = Kind::Truncated;
  if (!read(header + sizeof signature, file)) return;
  machine_ = file.Machine;
  if (machine_ != kOurMachine) {
    kind_ = Kind::OtherMachine;
    return;
  }
  IMAGE_OPTIONAL_HEADER optional;
  const u64 optionalAt = header + sizeof signature + sizeof file;
  if (!read(optionalAt, optional)) return;
  sectionTable_ = static_cast<u32>(optionalAt + file.SizeOfOptionalHeader);
  sectionCount_ = file.NumberOfSections;
  importTable_ = optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (u32 i = 0; i < sectionCount_; ++i) {
    IMAGE_SECTION_HEADER section;
    if (!read(u64{sectionTable_} + i * sizeof section, section)) return;
    if (u64{section.PointerToRawData} + section.SizeOfRawData > bytes_.size()) return;
  }
  kind_ = file.Characteristics & IMAGE_FILE_DLL ? Kind::Library : Kind::NotALibrary;
}

std::optional<u32> PeImage::fileOffset(u32 address) const noexcept {
  for (u32 i = 0; i < sectionCount_; ++i) {
    IMAGE_SECTION_HEADER section;
    if (!read(u64{sectionTable_} + i * sizeof section, section)) break;
    if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData) {
      return address - section.VirtualAddress + section.PointerToRawData;
    }
  }
  return std::nullopt;
}

std::vector<std::string> PeImage::imports() const {
  std::vector<std::string> names;
  const std::optional<u32> table = importTable_ ? fileOffset(importTable_) : std::nullopt;
  if (!table) return names;
  IMAGE_IMPORT_DESCRIPTOR descriptor;
  for (u64 at = *table; names.size() < kMostImports && read(at, descriptor) && descriptor.Name;
       at += sizeof descriptor) {
    const std::optional<u32> name = fileOffset(descriptor.Name);
    if (!name) break;
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(*name);
    const auto limit = first + static_cast<std::ptrdiff_t>(std::min<std::size_t>(kLongestName, bytes_.size() - *name));
    names.emplace_back(first, std::find(first, limit, 0));
  }
  return names;
}

}  // namespace corvix
