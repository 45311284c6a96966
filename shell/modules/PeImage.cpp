#include "shell/modules/PeImage_p.h"

#include "shell/modules/Contract_p.h"

#include <algorithm>
#include <cstddef>

#include <windows.h>

namespace corvix {

namespace {

constexpr std::size_t kMostImports = 1000;
constexpr u32 kLongestName = 260;
constexpr u32 kHighBit = 0x80000000;  // of a resource entry: a text, or a directory

}  // namespace

PeImage::PeImage(const wchar_t* path) : error_(file_.open(path)) {
  if (!error_) kind_ = examine();
}

template <class T>
bool PeImage::readFile(u64 offset, T& value) noexcept {
  return file_.read(offset, &value, sizeof value);
}

PeImage::Kind PeImage::examine() {
  IMAGE_DOS_HEADER dos;
  if (!readFile(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return Kind::NotAModule;
  DWORD signature = 0;
  const u64 header = static_cast<u32>(dos.e_lfanew);
  if (!readFile(header, signature)) return Kind::Truncated;
  if (signature != IMAGE_NT_SIGNATURE) return Kind::NotAModule;

  IMAGE_FILE_HEADER file;
  if (!readFile(header + sizeof signature, file)) return Kind::Truncated;
  machine_ = file.Machine;
  if (machine_ != kOwnMachine) return Kind::OtherMachine;

  IMAGE_OPTIONAL_HEADER optional{};
  constexpr u32 kFixed = offsetof(IMAGE_OPTIONAL_HEADER, DataDirectory);
  const u64 optionalAt = header + sizeof signature + sizeof file;
  const u32 optionalSize = std::min<u32>(file.SizeOfOptionalHeader, sizeof optional);
  if (!file_.read(optionalAt, &optional, optionalSize)) return Kind::Truncated;
  if (optionalSize < kFixed || optional.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC) return Kind::Damaged;
  const u32 directories = std::min<u32>(optional.NumberOfRvaAndSizes, (optionalSize - kFixed) / 8);
  const auto directory = [&](u32 index) {
    return index < directories ? optional.DataDirectory[index].VirtualAddress : 0;
  };

  const u64 table = optionalAt + file.SizeOfOptionalHeader;
  for (u32 i = 0; i < file.NumberOfSections; ++i) {
    IMAGE_SECTION_HEADER section;
    if (!readFile(table + u64{i} * sizeof section, section)) return Kind::Truncated;
    if (!section.SizeOfRawData) continue;
    if (u64{section.PointerToRawData} + section.SizeOfRawData > file_.size()) return Kind::Truncated;
    sections_.push_back({section.VirtualAddress, section.PointerToRawData, section.SizeOfRawData});
  }
  importTable_ = directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
  resources_ = directory(IMAGE_DIRECTORY_ENTRY_RESOURCE);
  return file.Characteristics & IMAGE_FILE_DLL ? Kind::Library : Kind::NotALibrary;
}

const PeImage::Section* PeImage::sectionAt(u64 address) const noexcept {
  const auto found = std::find_if(sections_.begin(), sections_.end(), [address](const Section& section) {
    return address >= section.address && address - section.address < section.size;
  });
  return found == sections_.end() ? nullptr : &*found;
}

bool PeImage::readImage(u64 address, void* to, u32 sizeBytes) noexcept {
  const Section* const section = sectionAt(address);
  if (!section) return false;
  const u32 inside = static_cast<u32>(address - section->address);
  return section->size - inside >= sizeBytes && file_.read(u64{section->offset} + inside, to, sizeBytes);
}

// Texts are in order; what is not is not found, as with the system's own search.
PeImage::Entry PeImage::findNamed(u32 directory, std::wstring_view name, u32& target) {
  IMAGE_RESOURCE_DIRECTORY header;
  const u64 at = u64{resources_} + directory;
  if (!readImage(at, header)) return Entry::Outside;
  for (u32 low = 0, high = header.NumberOfNamedEntries; low < high;) {
    const u32 middle = (low + high) / 2;
    struct {
      u32 name;
      u32 target;
    } entry;
    int order = 0;
    if (!readImage(at + sizeof header + u64{middle} * sizeof entry, entry)) return Entry::Outside;
    if (compareName(entry.name & ~kHighBit, name, order) == Entry::Outside) return Entry::Outside;
    if (order == 0) {
      target = entry.target;
      return Entry::Found;
    }
    (order < 0 ? high : low) = order < 0 ? middle : middle + 1;
  }
  return Entry::Missing;
}

// `order` is below 0 when `name` comes before the text at the offset.
PeImage::Entry PeImage::compareName(u32 offset, std::wstring_view name, int& order) {
  u16 length = 0;
  wchar_t units[32];
  const u64 at = u64{resources_} + offset;
  if (name.size() > std::size(units) || !readImage(at, length)) return Entry::Outside;
  const u32 common = std::min<u32>(length, static_cast<u32>(name.size()));
  if (!readImage(at + sizeof length, units, common * static_cast<u32>(sizeof(wchar_t)))) return Entry::Outside;
  order = name.substr(0, common).compare({units, common});
  if (order == 0) order = static_cast<int>(name.size()) - length;
  return Entry::Found;
}

// Three directories deep: type, name, language.
PeImage::ResourceState PeImage::readResource(std::wstring_view type, std::wstring_view name, u32 mostBytes,
                                             std::vector<unsigned char>& bytes) {
  if (!resources_) return ResourceState::Missing;
  u32 target = kHighBit;
  for (const std::wstring_view wanted : {type, name}) {
    if (!(target & kHighBit)) return ResourceState::Outside;
    const Entry found = findNamed(target & ~kHighBit, wanted, target);
    if (found != Entry::Found) return found == Entry::Missing ? ResourceState::Missing : ResourceState::Outside;
  }
  struct {
    IMAGE_RESOURCE_DIRECTORY header;
    u32 language;
    u32 target;
  } languages;
  IMAGE_RESOURCE_DATA_ENTRY data;
  if (!(target & kHighBit) || !readImage(u64{resources_} + (target & ~kHighBit), languages) ||
      !(languages.header.NumberOfNamedEntries + languages.header.NumberOfIdEntries) || languages.target & kHighBit ||
      !readImage(u64{resources_} + languages.target, data))
    return ResourceState::Outside;
  if (!data.Size) return ResourceState::Empty;
  if (data.Size > mostBytes) return ResourceState::TooLarge;
  const Section* const section = sectionAt(data.OffsetToData);
  if (!section || section->size - (data.OffsetToData - section->address) < data.Size) return ResourceState::Outside;
  bytes.resize(data.Size);
  return readImage(data.OffsetToData, bytes.data(), data.Size) ? ResourceState::Found : ResourceState::Outside;
}

std::vector<std::string> PeImage::imports() {
  std::vector<std::string> names;
  if (!importTable_) return names;
  IMAGE_IMPORT_DESCRIPTOR descriptor;
  for (u64 at = importTable_; names.size() < kMostImports && readImage(at, descriptor) && descriptor.Name;
       at += sizeof descriptor) {
    std::optional<std::string> name = readName(descriptor.Name);
    if (!name) break;
    names.push_back(std::move(*name));
  }
  return names;
}

std::optional<std::string> PeImage::readName(u32 address) {
  const Section* const section = sectionAt(address);
  if (!section) return std::nullopt;
  char text[kLongestName];
  const u32 size = std::min(kLongestName, section->size - (address - section->address));
  if (!readImage(address, text, size)) return std::nullopt;
  return std::string(text, std::find(text, text + size, '\0'));
}

}  // namespace corvix
