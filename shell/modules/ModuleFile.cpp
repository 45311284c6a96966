#include "shell/modules/ModuleFile_p.h"

#include "shell/guard/GuardedModule_p.h"
#include "shell/guard/StartSentinel_p.h"
#include "shell/modules/Contract_p.h"
#include "shell/modules/LoadedImage_p.h"
#include "shell/modules/PeImage_p.h"

#include <algorithm>
#include <cstring>
#include <cwctype>
#include <set>

namespace corvix {

namespace {

constexpr wchar_t kResourceName[] = L"PLUGININFO";
constexpr char kFactoryFunction[] = "queryClassFactoryLocal";
constexpr u32 kLargestDescriptor = 64 * 1024 * 1024;
constexpr std::size_t kMostModulesWalked = 500;

// What may stand in the name of a module, and nothing that leads elsewhere.
bool isFileName(const std::string& name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 127 || std::strchr("\\/:*?\"<>|", c);
  });
}

std::wstring widen(const std::string& text) {
  std::wstring wide(text.size(), 0);
  std::transform(text.begin(), text.end(), wide.begin(), [](char c) { return static_cast<unsigned char>(c); });
  return wide;
}

std::wstring fileNameOf(const std::wstring& path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::wstring systemMessage(DWORD error) {
  wchar_t* text = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring message(text ? text : L"", text ? length : 0);
  LocalFree(text);
  while (!message.empty() && std::iswspace(message.back())) message.pop_back();
  const std::wstring number = L"error " + std::to_wstring(error);
  return message.empty() ? number + L"." : number + L", " + message;
}

struct ErrorRow {
  DWORD error;
  const wchar_t* reason;
};

// What a row says of the error, or `otherwise` and the system's own message.
template <std::size_t count>
std::wstring reasonOf(DWORD error, const ErrorRow (&rows)[count], const wchar_t* otherwise) {
  for (const ErrorRow& row : rows) {
    if (row.error == error) return row.reason;
  }
  return otherwise + systemMessage(error);
}

constexpr ErrorRow kOpenErrors[] = {
    {ERROR_FILE_NOT_FOUND, L"There is no such file."},
    {ERROR_PATH_NOT_FOUND, L"There is no such folder."},
    {ERROR_ACCESS_DENIED, L"The file must not be read by this user, or it is a folder."},
    {ERROR_SHARING_VIOLATION, L"The file is used by another process."},
    {ERROR_LOCK_VIOLATION, L"The file is used by another process."},
    {ERROR_BAD_FILE_TYPE, L"It is a device, not a file."},
};

constexpr ErrorRow kLoadErrors[] = {
    {ERROR_PROC_NOT_FOUND, L"A function that it imports is missing from another module."},
    {ERROR_NOACCESS, L"It crashed while it was starting (an access violation, in its DllMain or before)."},
    {ERROR_STACK_OVERFLOW, L"It ran out of stack while it was starting."},
    {ERROR_DLL_INIT_FAILED, L"It refused to start (its DllMain returned FALSE)."},
    {ERROR_MR_MID_NOT_FOUND, L"It raised an exception of its own while it was starting."},
    {kThrownCode, L"It threw an exception while it was starting."},
    {ERROR_BAD_EXE_FORMAT, L"The system does not take the file for a module: its headers are damaged."},
    {ERROR_SHARING_VIOLATION, L"The file is used by another process."},
    {ERROR_NOT_ENOUGH_MEMORY, L"There is not enough memory to load it."},
};

// The system's loader catches a crash, too, and hands the code on where it has no error of its own for it.
constexpr DWORD kFirstCrash = 0x80000000;

// Why a file is no module for this program; empty if its headers say that it is one.
std::wstring whyNoModule(const PeImage& image) {
  switch (image.kind()) {
    case PeImage::Kind::Unreadable:
      return reasonOf(image.error(), kOpenErrors, L"The file cannot be read: ");
    case PeImage::Kind::NotAModule:
      return L"The file is not a Windows module.";
    case PeImage::Kind::Truncated:
      return L"The file is cut short: its headers point past its end.";
    case PeImage::Kind::OtherMachine:
      return whyOtherMachine(image.machine());
    case PeImage::Kind::Damaged:
      return L"The file is damaged: its headers contradict themselves.";
    case PeImage::Kind::NotALibrary:
      return L"The file is a program, not a library.";
    case PeImage::Kind::Library:
      break;
  }
  return {};
}

std::wstring whyNoModule(const std::wstring& path) { return whyNoModule(PeImage(path.c_str())); }

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
    PeImage image(current.c_str());
    for (const std::string& import : image.imports()) {
      if (!isFileName(import))
        return L"A module that " + fileNameOf(current) + L" needs has a name that no file can have.";
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

std::wstring whyNotLoaded(const std::wstring& path, DWORD error) {
  std::wstring reason;
  if (error == ERROR_MOD_NOT_FOUND || error == ERROR_BAD_EXE_FORMAT) reason = findMissingImport(path);
  if (error >= kFirstCrash) reason = L"It crashed while it was starting: " + faultText(error) + L'.';
  return reason.empty() ? reasonOf(error, kLoadErrors, L"The system cannot load it: ") : reason;
}

constexpr std::size_t kLongestResourceName = 32;

bool isResourceName(const std::wstring& name) {
  return !name.empty() && name.size() <= kLongestResourceName && std::all_of(name.begin(), name.end(), [](wchar_t c) {
    return (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'_';
  });
}

constexpr wchar_t kNoDescriptor[] = L"It has no descriptor (a resource PLUGININFO of type PLUGININFO).";
// What is wrong with a resource that is there.
const wchar_t* whyUnreadable(PeImage::ResourceState state) {
  switch (state) {
    case PeImage::ResourceState::Outside:
      return L" lies outside the file.";
    case PeImage::ResourceState::Empty:
      return L" is empty.";
    case PeImage::ResourceState::TooLarge:
      return L" is larger than 64 MiB.";
    case PeImage::ResourceState::Found:
    case PeImage::ResourceState::Missing:
      break;
  }
  return L"";
}

}  // namespace

DescriptorView noDescriptor() noexcept { return {{}, kNoDescriptor, true}; }

namespace {

// What came of reading a resource of type PLUGININFO; `what` begins the sentence about a bad one.
DescriptorBytes outcome(PeImage::ResourceState state, std::vector<unsigned char> bytes, const wchar_t* what) {
  if (state == PeImage::ResourceState::Found) return {std::move(bytes), {}, false};
  if (state == PeImage::ResourceState::Missing) return {{}, kNoDescriptor, true};
  return {{}, what + std::wstring(whyUnreadable(state)), false};
}

DescriptorBytes readLoaded(HMODULE module, const wchar_t* name, const wchar_t* what) {
  using State = PeImage::ResourceState;
  const unsigned char* data = nullptr;
  DWORD size = 0;
  // The resource tables are the module's word: where they point may not be there.
  const auto fault = guarded([&] {
    HRSRC__* const resource = FindResourceW(module, name, kResourceName);
    void* const loaded = resource ? LoadResource(module, resource) : nullptr;
    data = loaded ? static_cast<const unsigned char*>(LockResource(loaded)) : nullptr;
    size = data ? SizeofResource(module, resource) : 0;
  });
  if (fault) return outcome(State::Outside, {}, what);
  if (!size) return outcome(State::Missing, {}, what);
  if (size > kLargestDescriptor) return outcome(State::TooLarge, {}, what);
  std::vector<unsigned char> bytes(size);
  const bool isOutside = guarded([&] { std::copy_n(data, size, bytes.begin()); }).has_value();
  return outcome(isOutside ? State::Outside : State::Found, std::move(bytes), what);
}

DescriptorBytes readFile(const std::wstring& path, const std::wstring& name, const wchar_t* what) {
  PeImage image(path.c_str());
  std::wstring reason = whyNoModule(image);
  if (!reason.empty()) return {{}, std::move(reason), false};
  std::vector<unsigned char> bytes;
  const PeImage::ResourceState state = image.readResource(kResourceName, name, kLargestDescriptor, bytes);
  return outcome(state, std::move(bytes), what);
}

constexpr wchar_t kItsDescriptor[] = L"Its descriptor";

}  // namespace

DescriptorBytes readDescriptorResource(HMODULE module) { return readLoaded(module, kResourceName, kItsDescriptor); }

DescriptorBytes readDescriptorResource(const std::wstring& path) {
  return readFile(path, kResourceName, kItsDescriptor);
}

DescriptorBytes readTemplateResource(const std::wstring& path, HMODULE loaded, const std::wstring& name) {
  if (!isResourceName(name)) return {{}, {}, true};
  DescriptorBytes result = loaded ? readLoaded(loaded, name.c_str(), L"It") : readFile(path, name, L"It");
  if (result.isNoPlugin) result.reason.clear();
  return result;
}

namespace {

// Until it goes, the system opens no dialogs of its own for this thread: of a missing drive or a damaged file.
class NoSystemDialogs {
 public:
  NoSystemDialogs() noexcept {
    SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_);
  }
  NoSystemDialogs(const NoSystemDialogs&) = delete;
  NoSystemDialogs& operator=(const NoSystemDialogs&) = delete;
  ~NoSystemDialogs() { SetThreadErrorMode(before_, nullptr); }

 private:
  DWORD before_ = 0;
};

}  // namespace

LoadedFactory loadFactory(const std::wstring& path) {
  // The system loads a program too, and leaves its imports as they are.
  if (std::wstring reason = whyNoModule(path); !reason.empty()) return {nullptr, false, std::move(reason)};
  HMODULE module = nullptr;
  DWORD error = 0;
  const NoSystemDialogs quiet;
  const auto fault = guarded([&] {
    module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (!module) error = GetLastError();
  });
  if (error == ERROR_STACK_OVERFLOW) guardStackAgain();  // the system's loader has caught it and left it at that
  if (fault) return {nullptr, true, L"Loading it ended in " + faultText(*fault) + L"; the file may be corrupt."};
  StartMark::change(StartPhase::Factory);
  return module ? findFactory(module) : LoadedFactory{nullptr, false, whyNotLoaded(path, error)};
}

LoadedFactory findFactory(HMODULE module) {
  const wchar_t* reason = nullptr;
  BClassFactory* factory = nullptr;
  bool isCorrupt = false;
  const GuardedOutcome outcome = guardedFromAll([&] {
    const LoadedFunction found = findExport(module, kFactoryFunction);
    isCorrupt = found.isDamaged;
    reason = found.reason;
    if (!found.address) return;
    factory = reinterpret_cast<QueryClassFactory>(found.address)();
    if (!factory) {
      reason = L"Its queryClassFactoryLocal returned no class factory.";
    } else if (!query<BClassFactory>(factory)) {
      reason = L"Its queryClassFactoryLocal returned something else than a class factory.";
    }
  });
  if (outcome.fault)
    return {nullptr, true,
            L"Its queryClassFactoryLocal ended in " + faultText(*outcome.fault) + L"; the file may be corrupt."};
  if (outcome.thrown) return {nullptr, false, L"Its queryClassFactoryLocal threw: " + *outcome.thrown};
  if (reason) return {nullptr, isCorrupt, reason};
  return {factory, false, {}};
}

void useSafeModuleSearch() noexcept {
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  SetDllDirectoryW(L"");
}

}  // namespace corvix
