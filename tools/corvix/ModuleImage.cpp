#include "tools/corvix/ModuleImage.h"

#include "shell/modules/Contract_p.h"
#include "tools/corvix/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <type_traits>

#include <windows.h>

namespace corvix::tool {

namespace {

constexpr std::uintmax_t kLargestModule = 512u << 20;
constexpr std::size_t kMostEntries = 100'000;
constexpr std::size_t kLongestName = 4096;  // of a C++ function
constexpr std::size_t kMostNameBytes = 32 << 20;
constexpr std::uint32_t kHighBit = 0x80000000;

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

const ModuleImage::Fault kNoModule{"not-a-module", "It does not begin as Windows modules do."};
const ModuleImage::Fault kCutShort{"not-a-module", "It is cut short: its headers point past its end."};
const ModuleImage::Fault kContradictory{"not-a-module", "It is damaged: its headers contradict themselves."};

}  // namespace

bool ModuleImage::open(const std::wstring& path) {
  std::error_code error;
  const std::filesystem::path place(path);
  const std::uintmax_t size = std::filesystem::file_size(place, error);
  if (error || size > kLargestModule) return false;
  std::ifstream file(place, std::ios::binary);
  bytes_.resize(static_cast<std::size_t>(size));
  if (!file.read(bytes_.data(), static_cast<std::streamsize>(size)) && size) return false;
  fault_ = examine();
  return true;
}

template <class T>
bool ModuleImage::readFile(std::uint64_t offset, T& value) const {
  if (offset > bytes_.size() || bytes_.size() - offset < sizeof value) return false;
  std::memcpy(&value, bytes_.data() + offset, sizeof value);
  return true;
}

std::string_view ModuleImage::imageAt(std::uint64_t address) const {
  for (const Section& section : sections_) {
    if (address < section.address || address - section.address >= section.size) continue;
    const auto inside = static_cast<std::uint32_t>(address - section.address);
    if (section.offset > bytes_.size() || bytes_.size() - section.offset < section.size) return {};
    return std::string_view(bytes_).substr(section.offset + inside, section.size - inside);
  }
  return {};
}

template <class T>
bool ModuleImage::readImage(std::uint64_t address, T& value) const {
  const std::string_view found = imageAt(address);
  if (found.size() < sizeof value) return false;
  std::memcpy(&value, found.data(), sizeof value);
  return true;
}

// Tables may lead to one text again and again: all names together have a bounded room.
bool ModuleImage::hasRoom() const noexcept { return nameBytes_ < kMostNameBytes; }

std::string ModuleImage::nameAt(std::uint32_t address) {
  const std::string_view found = imageAt(address).substr(0, kLongestName);
  const std::string_view name = found.substr(0, found.find('\0'));
  nameBytes_ += name.size() + sizeof(std::string);
  return std::string(hasRoom() ? name : std::string_view());
}

std::optional<ModuleImage::Fault> ModuleImage::examine() {
  IMAGE_DOS_HEADER dos;
  DWORD signature = 0;
  IMAGE_FILE_HEADER file;
  if (!readFile(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return kNoModule;
  const std::uint64_t header = static_cast<std::uint32_t>(dos.e_lfanew);
  if (!readFile(header, signature)) return kCutShort;
  if (signature != IMAGE_NT_SIGNATURE) return kNoModule;
  if (!readFile(header + sizeof signature, file)) return kCutShort;
  const std::uint64_t optionalAt = header + sizeof signature + sizeof file;
  std::optional<Fault> fault;
  if (file.Machine == kMachineX86) fault = readHeaders<IMAGE_OPTIONAL_HEADER32>(optionalAt, file);
  if (file.Machine == kMachineX64) fault = readHeaders<IMAGE_OPTIONAL_HEADER64>(optionalAt, file);
  isForX86_ = file.Machine == kMachineX86 || file.Machine == kMachineX64;
  return file.Machine == kOwnMachine ? fault : Fault{"other-machine", utf8(whyOtherMachine(file.Machine))};
}

template <class OptionalHeader>
std::optional<ModuleImage::Fault> ModuleImage::readHeaders(std::uint64_t optionalAt, const FileHeader& file) {
  constexpr bool kIs64 = std::is_same_v<OptionalHeader, IMAGE_OPTIONAL_HEADER64>;
  OptionalHeader optional;
  if (!readFile(optionalAt, optional)) return kCutShort;
  if (file.SizeOfOptionalHeader < offsetof(OptionalHeader, DataDirectory) ||
      optional.Magic != (kIs64 ? IMAGE_NT_OPTIONAL_HDR64_MAGIC : IMAGE_NT_OPTIONAL_HDR32_MAGIC))
    return kContradictory;
  hasSymbols_ = file.NumberOfSymbols != 0;
  for (unsigned i = 0; i < file.NumberOfSections; ++i) {
    IMAGE_SECTION_HEADER section;
    if (!readFile(optionalAt + file.SizeOfOptionalHeader + std::uint64_t{i} * sizeof section, section) ||
        std::uint64_t{section.PointerToRawData} + section.SizeOfRawData > bytes_.size())
      return kCutShort;
    const bool isResources = std::memcmp(section.Name, ".rsrc", 6) == 0;
    sections_.push_back({section.VirtualAddress, section.SizeOfRawData, section.PointerToRawData, isResources});
    // A long name stands elsewhere; only the symbols' sections and their link have one.
    hasSymbols_ = hasSymbols_ || section.Name[0] == '/';
  }
  if (!(file.Characteristics & IMAGE_FILE_DLL)) return Fault{"not-a-module", "It is a program, not a library."};
  const auto directory = [&](unsigned index) {
    return index < optional.NumberOfRvaAndSizes ? optional.DataDirectory[index] : IMAGE_DATA_DIRECTORY{};
  };
  readImports<std::conditional_t<kIs64, std::uint64_t, std::uint32_t>>(
      directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
  readExports(directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
  const IMAGE_DATA_DIRECTORY debug = directory(IMAGE_DIRECTORY_ENTRY_DEBUG);
  readDebug(debug.VirtualAddress, debug.Size);
  const std::uint32_t resources = directory(IMAGE_DIRECTORY_ENTRY_RESOURCE).VirtualAddress;
  descriptor_ = findResource(resources, u"PLUGININFO", 0, u"PLUGININFO");
  hasVersion_ = findResource(resources, u"", 16, u"").has_value();
  return std::nullopt;
}

template <class Word>
void ModuleImage::readImports(std::uint32_t table) {
  if (!table) return;
  constexpr Word kByNumber = Word{1} << (8 * sizeof(Word) - 1);
  IMAGE_IMPORT_DESCRIPTOR descriptor;
  for (std::uint64_t at = table; imports_.size() < 1000 && hasRoom() && readImage(at, descriptor) && descriptor.Name;
       at += sizeof descriptor) {
    Import import{nameAt(descriptor.Name), {}};
    std::uint64_t entry = descriptor.OriginalFirstThunk ? descriptor.OriginalFirstThunk : descriptor.FirstThunk;
    for (Word target = 0; hasRoom() && readImage(entry, target) && target; entry += sizeof target) {
      if (!(target & kByNumber)) import.functions.push_back(nameAt(static_cast<std::uint32_t>(target) + 2));
    }
    imports_.push_back(std::move(import));
  }
}

void ModuleImage::readExports(std::uint32_t table) {
  IMAGE_EXPORT_DIRECTORY directory;
  if (!table || !readImage(table, directory)) return;
  const std::size_t count = std::min<std::size_t>(directory.NumberOfNames, kMostEntries);
  for (std::size_t i = 0; i < count && hasRoom(); ++i) {
    std::uint32_t name = 0;
    if (!readImage(std::uint64_t{directory.AddressOfNames} + std::uint64_t{i} * sizeof name, name)) return;
    exports_.insert(nameAt(name));
  }
}

void ModuleImage::readDebug(std::uint32_t table, std::uint32_t size) {
  for (std::uint32_t at = 0; table && size - at >= sizeof(IMAGE_DEBUG_DIRECTORY) && at < size;
       at += sizeof(IMAGE_DEBUG_DIRECTORY)) {
    IMAGE_DEBUG_DIRECTORY entry;
    if (!readImage(std::uint64_t{table} + at, entry)) return;
    constexpr std::string_view kMark = "RSDS";
    const std::string_view record = imageAt(entry.AddressOfRawData).substr(0, kMark.size() + 16);
    if (record.starts_with(kMark) && record.size() == kMark.size() + 16)
      buildIdentifier_ = hexadecimal(record.substr(kMark.size()));
  }
}

// In one directory the entry of that name, or of that number when the name is empty; any when both are. The target as
// it stands there.
std::optional<std::uint32_t> ModuleImage::findEntry(std::uint32_t table, std::uint32_t directory,
                                                    std::u16string_view name, std::uint32_t number) const {
  IMAGE_RESOURCE_DIRECTORY header;
  const std::uint64_t at = std::uint64_t{table} + directory;
  if (!readImage(at, header)) return std::nullopt;
  const unsigned count = header.NumberOfNamedEntries + header.NumberOfIdEntries;
  for (unsigned i = 0; i < count; ++i) {
    struct {
      std::uint32_t name, target;
    } entry;
    if (!readImage(at + sizeof header + std::uint64_t{i} * sizeof entry, entry)) break;
    bool same = name.empty() && (!number || entry.name == number);
    std::uint16_t length = 0;
    const std::uint64_t text = std::uint64_t{table} + (entry.name & ~kHighBit);
    if (!name.empty() && entry.name & kHighBit && readImage(text, length) && length == name.size()) {
      const std::string_view units = imageAt(text + 2).substr(0, length * 2u);
      same = units == std::string_view(reinterpret_cast<const char*>(name.data()), name.size() * 2);
    }
    if (same) return entry.target;
  }
  return std::nullopt;
}

std::optional<std::string> ModuleImage::findResource(std::uint32_t table, std::u16string_view type,
                                                     std::uint32_t typeNumber, std::u16string_view name) const {
  if (!table) return std::nullopt;
  auto target = findEntry(table, 0, type, typeNumber);
  if (target && *target & kHighBit) target = findEntry(table, *target & ~kHighBit, name, 0);
  if (target && *target & kHighBit) target = findEntry(table, *target & ~kHighBit, {}, 0);
  IMAGE_RESOURCE_DATA_ENTRY data;
  if (!target || *target & kHighBit || !readImage(std::uint64_t{table} + *target, data)) return std::nullopt;
  const std::string_view found = imageAt(data.OffsetToData);
  if (found.size() < data.Size) return std::string();
  return std::string(found.substr(0, data.Size));
}

bool ModuleImage::contains(std::string_view wanted) const {
  return std::any_of(sections_.begin(), sections_.end(), [&](const Section& section) {
    return !section.isResources && imageAt(section.address).find(wanted) != std::string_view::npos;
  });
}

std::vector<std::u16string> ModuleImage::names() const {
  std::vector<std::u16string> found;
  for (const Section& section : sections_) {
    const std::string_view bytes = section.isResources ? std::string_view() : imageAt(section.address);
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      const char16_t unit =
          static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
      const bool fits = (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
                        unit == '.' || unit == '_';
      if (fits) {
        text += unit;
      } else {
        if (unit == 0 && text.size() > 2) found.push_back(text);
        text.clear();
      }
    }
  }
  return found;
}

}  // namespace corvix::tool
