#include "shell/modules/ModuleFile.h"

#include "shell/modules/GuardedCall_p.h"
#include "shell/modules/PeImage_p.h"

#include <algorithm>
#include <cwctype>
#include <set>

namespace corvix {

namespace {

constexpr wchar_t kResourceName[] = L"PLUGININFO";
constexpr DWORD kLargestDescriptor = 64 * 1024 * 1024;
constexpr std::size_t kMostModulesWalked = 500;

std::wstring widen(const std::string& text) { return {text.begin(), text.end()}; }

std::wstring fileNameOf(const std::wstring& path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::wstring hexadecimal(u32 value) {
  wchar_t text[16];
  wsprintfW(text, L"0x%08X", value);
  return text;
}

std::wstring machineName(u16 machine) {
  switch (machine) {
    case IMAGE_FILE_MACHINE_I386:
      return L"32-bit x86";
    case IMAGE_FILE_MACHINE_AMD64:
      return L"64-bit x86";
    case IMAGE_FILE_MACHINE_ARM64:
      return L"64-bit ARM";
    default:
      return L"machine " + hexadecimal(machine);
  }
}

// Why a file is no module for this program; empty if its headers say that it is one.
std::wstring whyNoModule(const std::wstring& path) {
  const std::optional<PeImage> image = PeImage::open(path.c_str());
  if (!image) return L"The file cannot be read.";
  switch (image->kind()) {
    case PeImage::Kind::NotAModule:
      return L"The file is not a Windows module.";
    case PeImage::Kind::Truncated:
      return L"The file is cut short: its headers point past its end.";
    case PeImage::Kind::OtherMachine:
      return L"The module is made for " + machineName(image->machine()) + L", this program runs modules for " +
             machineName(sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_I386 : IMAGE_FILE_MACHINE_AMD64) + L".";
    case PeImage::Kind::NotALibrary:
      return L"The file is a program, not a library.";
    case PeImage::Kind::Library:
      break;
  }
  return {};
}

bool exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::wstring lowered(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
  return text;
}

// Walks the import tables from a module on, through the modules that lie beside it or beside the program:
// the system never says which import it missed. Empty when all are there.
std::wstring findMissingImport(const std::wstring& path) {
  std::set<std::wstring> seen;
  std::vector<std::wstring> toWalk{path};
  const std::wstring folders[] = {folderOf(path), folderOf(modulePath(nullptr))};
  while (!toWalk.empty() && seen.size() < kMostModulesWalked) {
    const std::wstring current = toWalk.back();
    toWalk.pop_back();
    const std::optional<PeImage> image = PeImage::open(current.c_str());
    if (!image) continue;
    for (const std::string& import : image->imports()) {
      const std::wstring name = widen(import);
      if (!seen.insert(lowered(name)).second || GetModuleHandleW(name.c_str())) continue;
      const auto beside = std::find_if(std::begin(folders), std::end(folders),
                                       [&](const std::wstring& folder) { return exists(folder + L"\\" + name); });
      if (beside != std::end(folders)) {
        const std::wstring found = *beside + L"\\" + name;
        if (const std::wstring fault = whyNoModule(found); !fault.empty())
          return found + L", which " + fileNameOf(current) + L" needs, cannot be used: " + fault;
        toWalk.push_back(found);
      } else if (!ModuleHandle(
                     LoadLibraryExW(name.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_SEARCH_SYSTEM32))) {
        return name + L", which " + fileNameOf(current) +
               L" needs, was not found beside it, beside the program or in the system.";
      }
    }
  }
  return {};
}

std::wstring systemMessage(DWORD error) {
  wchar_t* text = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring message(text ? text : L"", text ? length : 0);
  LocalFree(text);
  while (!message.empty() && std::iswspace(message.back())) message.pop_back();
  return message;
}

struct ErrorRow {
  DWORD error;
  const wchar_t* reason;
};
constexpr ErrorRow kLoadErrors[] = {
    {ERROR_PROC_NOT_FOUND, L"A function that it imports is missing from another module."},
    {ERROR_NOACCESS, L"It crashed while it was starting (an access violation in its DllMain)."},
    {ERROR_STACK_OVERFLOW, L"It ran out of stack while it was starting."},
    {ERROR_DLL_INIT_FAILED, L"It refused to start (its DllMain returned FALSE)."},
};

std::wstring whyNotLoaded(const std::wstring& path, DWORD error) {
  for (const ErrorRow& row : kLoadErrors) {
    if (row.error == error) return row.reason;
  }
  std::wstring reason = error == ERROR_MOD_NOT_FOUND ? findMissingImport(path) : whyNoModule(path);
  if (reason.empty())
    reason = L"The system cannot load it: error " + std::to_wstring(error) + L", " + systemMessage(error);
  return reason;
}

struct Resource {
  const void* data = nullptr;
  DWORD size = 0;
  std::wstring reason;
};

}  // namespace

DescriptorBytes readDescriptorResource(HMODULE module) {
  DescriptorBytes result;
  const wchar_t* reason = L"";
  // The resource tables are the file's word: where they point may not be there.
  const u32 fault = guarded([&] {
    HRSRC__* const resource = FindResourceW(module, kResourceName, kResourceName);
    void* const loaded = resource ? LoadResource(module, resource) : nullptr;
    const void* const data = loaded ? LockResource(loaded) : nullptr;
    const DWORD size = data ? SizeofResource(module, resource) : 0;
    if (!resource) {
      reason = L"It has no descriptor (a resource PLUGININFO of type PLUGININFO).";
    } else if (!data || !size || size > kLargestDescriptor) {
      reason = L"Its descriptor is empty or cannot be read.";
    } else {
      result.bytes.resize(size);
      std::copy_n(static_cast<const unsigned char*>(data), size, result.bytes.begin());
    }
  });
  if (fault) {
    result.bytes.clear();
    reason = L"Its descriptor lies outside the file.";
  }
  result.reason = reason;
  return result;
}

DescriptorBytes readDescriptorResource(const std::wstring& path) {
  HMODULE module = nullptr;
  const u32 fault = guarded([&] {
    module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
  });
  const ModuleHandle owner(module);
  if (!owner || fault) {
    std::wstring reason = whyNoModule(path);
    if (reason.empty())
      reason = fault ? L"The file is damaged." : L"The system cannot open it: " + systemMessage(GetLastError());
    return {{}, reason};
  }
  DescriptorBytes result = readDescriptorResource(owner.get());
  if (result.bytes.empty()) {
    if (const std::wstring reason = whyNoModule(path); !reason.empty()) result.reason = reason;
  }
  return result;
}

LoadedModule loadModuleCode(const std::wstring& path) {
  LoadedModule result;
  DWORD error = 0;
  const u32 fault = guarded([&] {
    result.module =
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (!result.module) error = GetLastError();
  });
  if (fault) {
    result = {nullptr, true, L"Loading it raised exception " + hexadecimal(fault) + L"; the file may be corrupt."};
  } else if (!result.module) {
    result.reason = whyNotLoaded(path, error);
  }
  return result;
}

void useSafeModuleSearch() noexcept {
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  SetDllDirectoryW(L"");
}

}  // namespace corvix
