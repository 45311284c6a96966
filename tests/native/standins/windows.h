// What the portable sources and their tests name of the system, where there is none of it. Layouts are the system's.
#pragma once

#include <cstdint>
#include <cstdlib>

#include <sanitizer/allocator_interface.h>
#include <sys/mman.h>
#include <unistd.h>

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using HANDLE = void*;
using HMODULE = struct HINSTANCE__*;

inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

// Files to read, by plain paths; a handle is a descriptor. The calls are in Files.cpp.
constexpr DWORD GENERIC_READ = 0x80000000, GENERIC_WRITE = 0x40000000;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
constexpr DWORD FILE_SHARE_READ = 1, FILE_SHARE_WRITE = 2, FILE_SHARE_DELETE = 4;
constexpr DWORD CREATE_NEW = 1, CREATE_ALWAYS = 2, OPEN_EXISTING = 3, OPEN_ALWAYS = 4;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80, FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
constexpr DWORD FILE_BEGIN = 0, FILE_END = 2, FILE_TYPE_DISK = 1, MAX_PATH = 260;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2, ERROR_BAD_FILE_TYPE = 222;

union LARGE_INTEGER {
  LONGLONG QuadPart;
};
struct OVERLAPPED;

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE);
DWORD GetFileAttributesW(const wchar_t* path);
BOOL CloseHandle(HANDLE file);
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
DWORD GetFileType(HANDLE file);
BOOL ReadFile(HANDLE file, void* to, DWORD most, DWORD* got, OVERLAPPED*);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER to, LARGE_INTEGER*, DWORD from);
inline DWORD GetLastError() { return ERROR_FILE_NOT_FOUND; }

// Nobody has or asks for these here.
inline BOOL FindClose(HANDLE) { return 0; }
inline BOOL FreeLibrary(HMODULE) { return 0; }
inline DWORD GetModuleFileNameW(HMODULE, wchar_t*, DWORD) { return 0; }

// Text of bytes: UTF-8, strictly, and else Latin-1. TextBytes.cpp.
using UINT = unsigned;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 8, WC_ERR_INVALID_CHARS = 0x80, WC_NO_BEST_FIT_CHARS = 0x400;
constexpr BOOL FALSE = 0, TRUE = 1;
inline UINT GetACP() { return 28591; }
int MultiByteToWideChar(UINT page, DWORD flags, const char* bytes, int size, wchar_t* text, int most);
int WideCharToMultiByte(UINT page, DWORD flags, const wchar_t* text, int size, char* bytes, int most, const char*,
                        BOOL* isLossy);

// Locks, which are SCriticalSections: CriticalSection.cpp.
struct CRITICAL_SECTION;
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

inline void Sleep(DWORD milliseconds) { usleep(milliseconds * 1000); }

// Pages, for tests that read up to the edge of one.
constexpr DWORD MEM_COMMIT = 0x1000, MEM_RESERVE = 0x2000, MEM_RELEASE = 0x8000;
constexpr DWORD PAGE_NOACCESS = 0x01, PAGE_READWRITE = 0x04;

inline void* VirtualAlloc(void*, std::size_t size, DWORD, DWORD) {
  constexpr std::size_t kPage = 4096;
  // The page in front keeps the size, which `VirtualFree` is not told.
  void* const base = mmap(nullptr, size + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) return nullptr;
  *static_cast<std::size_t*>(base) = size + kPage;
  return static_cast<char*>(base) + kPage;
}
inline BOOL VirtualProtect(void* page, std::size_t size, DWORD protection, DWORD*) {
  return mprotect(page, size, protection == PAGE_NOACCESS ? PROT_NONE : PROT_READ | PROT_WRITE) == 0;
}
inline BOOL VirtualFree(void* pages, std::size_t, DWORD) {
  auto* const base = static_cast<char*>(pages) - 4096;
  return munmap(base, *reinterpret_cast<std::size_t*>(base)) == 0;
}

// Only how much room the heap takes of it: the tests look at the difference.
struct MEMORYSTATUSEX {
  DWORD dwLength;
  std::uint64_t ullAvailVirtual;
};
inline BOOL GlobalMemoryStatusEx(MEMORYSTATUSEX* status) {
  status->ullAvailVirtual = (std::uint64_t{1} << 40) - __sanitizer_get_current_allocated_bytes();
  return 1;
}

// Module files.
constexpr WORD IMAGE_DOS_SIGNATURE = 0x5A4D;
constexpr DWORD IMAGE_NT_SIGNATURE = 0x00004550;
constexpr WORD IMAGE_FILE_MACHINE_I386 = 0x014C, IMAGE_FILE_MACHINE_AMD64 = 0x8664, IMAGE_FILE_MACHINE_ARM64 = 0xAA64;
constexpr WORD IMAGE_FILE_DLL = 0x2000;
constexpr WORD IMAGE_NT_OPTIONAL_HDR_MAGIC = 0x010B;
constexpr int IMAGE_DIRECTORY_ENTRY_IMPORT = 1, IMAGE_DIRECTORY_ENTRY_RESOURCE = 2,
              IMAGE_NUMBEROF_DIRECTORY_ENTRIES = 16;

struct IMAGE_DOS_HEADER {
  WORD e_magic, unused[29];
  LONG e_lfanew;
};
struct IMAGE_FILE_HEADER {
  WORD Machine, NumberOfSections;
  DWORD TimeDateStamp, PointerToSymbolTable, NumberOfSymbols;
  WORD SizeOfOptionalHeader, Characteristics;
};
struct IMAGE_DATA_DIRECTORY {
  DWORD VirtualAddress, Size;
};
struct IMAGE_OPTIONAL_HEADER32 {
  WORD Magic;
  BYTE MajorLinkerVersion, MinorLinkerVersion;
  DWORD SizeOfCode, SizeOfInitializedData, SizeOfUninitializedData, AddressOfEntryPoint, BaseOfCode, BaseOfData,
      ImageBase, SectionAlignment, FileAlignment;
  WORD versions[6];
  DWORD Win32VersionValue, SizeOfImage, SizeOfHeaders, CheckSum;
  WORD Subsystem, DllCharacteristics;
  DWORD stackAndHeap[4], LoaderFlags, NumberOfRvaAndSizes;
  IMAGE_DATA_DIRECTORY DataDirectory[IMAGE_NUMBEROF_DIRECTORY_ENTRIES];
};
using IMAGE_OPTIONAL_HEADER = IMAGE_OPTIONAL_HEADER32;
struct IMAGE_SECTION_HEADER {
  BYTE Name[8];
  union {
    DWORD PhysicalAddress, VirtualSize;
  } Misc;
  DWORD VirtualAddress, SizeOfRawData, PointerToRawData, PointerToRelocations, PointerToLinenumbers;
  WORD NumberOfRelocations, NumberOfLinenumbers;
  DWORD Characteristics;
};
struct IMAGE_IMPORT_DESCRIPTOR {
  DWORD OriginalFirstThunk, TimeDateStamp, ForwarderChain, Name, FirstThunk;
};
struct IMAGE_RESOURCE_DIRECTORY {
  DWORD Characteristics, TimeDateStamp;
  WORD MajorVersion, MinorVersion, NumberOfNamedEntries, NumberOfIdEntries;
};
struct IMAGE_RESOURCE_DATA_ENTRY {
  DWORD OffsetToData, Size, CodePage, Reserved;
};
static_assert(sizeof(IMAGE_DOS_HEADER) == 64 && sizeof(IMAGE_FILE_HEADER) == 20 &&
              sizeof(IMAGE_OPTIONAL_HEADER32) == 224 && sizeof(IMAGE_SECTION_HEADER) == 40 &&
              sizeof(IMAGE_IMPORT_DESCRIPTOR) == 20);
