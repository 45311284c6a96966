#include "shell/modules/LoadedImage_p.h"

#include "core/baselib/Api.h"

#include <cstring>

namespace corvix {

namespace {

class LoadedImage {
 public:
  explicit LoadedImage(HMODULE module) noexcept : base_(reinterpret_cast<const unsigned char*>(module)) {
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base_);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base_ + dos->e_lfanew);
    size_ = headers->OptionalHeader.SizeOfImage;
    if (headers->OptionalHeader.NumberOfRvaAndSizes > IMAGE_DIRECTORY_ENTRY_EXPORT)
      exports_ = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  }

  const IMAGE_DATA_DIRECTORY& exports() const noexcept { return exports_; }

  // `count` of them at an address inside the image, or null.
  template <class T>
  const T* at(u32 address, u32 count = 1) const noexcept {
    if (address > size_ || u64{count} * sizeof(T) > size_ - address) return nullptr;
    return reinterpret_cast<const T*>(base_ + address);
  }

  bool isName(u32 address, const char* name) const noexcept {
    const auto size = static_cast<u32>(std::strlen(name) + 1);
    const char* const text = at<char>(address, size);
    return text && std::memcmp(text, name, size) == 0;
  }

 private:
  const unsigned char* base_;
  u32 size_;
  IMAGE_DATA_DIRECTORY exports_{};
};

bool isCode(const void* address) noexcept {
  MEMORY_BASIC_INFORMATION page;
  constexpr DWORD kExecutable = PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  return VirtualQuery(address, &page, sizeof page) && page.State == MEM_COMMIT && page.Protect & kExecutable;
}

constexpr LoadedFunction kMissing{nullptr, false, L"It does not export queryClassFactoryLocal."};
constexpr LoadedFunction kOutside{nullptr, true, L"Its table of exports lies outside it; the file may be corrupt."};
constexpr LoadedFunction kData{nullptr, true,
                               L"Its queryClassFactoryLocal is data, not a function; the file may be corrupt."};

}  // namespace

LoadedFunction findExport(HMODULE module, const char* name) {
  const LoadedImage image(module);
  const u32 begin = image.exports().VirtualAddress;
  if (!begin) return kMissing;
  const auto* const table = image.at<IMAGE_EXPORT_DIRECTORY>(begin);
  if (!table) return kOutside;
  const auto* const functions = image.at<u32>(table->AddressOfFunctions, table->NumberOfFunctions);
  const auto* const names = image.at<u32>(table->AddressOfNames, table->NumberOfNames);
  const auto* const ordinals = image.at<u16>(table->AddressOfNameOrdinals, table->NumberOfNames);
  if (!functions || !names || !ordinals) return kOutside;
  for (u32 i = 0; i < table->NumberOfNames; ++i) {
    if (!image.isName(names[i], name)) continue;
    if (ordinals[i] >= table->NumberOfFunctions) return kOutside;
    const u32 address = functions[ordinals[i]];
    void* found = const_cast<unsigned char*>(image.at<unsigned char>(address));
    if (!found) return kOutside;
    // An address inside the table is a text: another module has the function.
    if (address - begin < image.exports().Size) found = reinterpret_cast<void*>(GetProcAddress(module, name));
    if (!found) return kMissing;
    return isCode(found) ? LoadedFunction{found} : kData;
  }
  return kMissing;
}

}  // namespace corvix
