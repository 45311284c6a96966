// The system's calls for reading files, over this one's.
#include <string>

#include <windows.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

int descriptor(HANDLE file) { return static_cast<int>(reinterpret_cast<std::intptr_t>(file)); }

std::string narrow(const wchar_t* path) {
  std::string text;
  while (*path) text += static_cast<char>(*path++);
  return text;
}

}  // namespace

HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) {
  return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(open(narrow(path).c_str(), O_RDONLY | O_CLOEXEC)));
}

DWORD GetFileAttributesW(const wchar_t* path) {
  return access(narrow(path).c_str(), F_OK) == 0 ? 0 : INVALID_FILE_ATTRIBUTES;
}

BOOL CloseHandle(HANDLE file) { return close(descriptor(file)) == 0; }

BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
  struct stat known {};
  if (fstat(descriptor(file), &known) != 0) return 0;
  size->QuadPart = known.st_size;
  return 1;
}

DWORD GetFileType(HANDLE file) {
  struct stat known {};
  return fstat(descriptor(file), &known) == 0 && S_ISREG(known.st_mode) ? FILE_TYPE_DISK : 0;
}

BOOL ReadFile(HANDLE file, void* to, DWORD most, DWORD* got, OVERLAPPED*) {
  const ssize_t done = read(descriptor(file), to, most);
  *got = done > 0 ? static_cast<DWORD>(done) : 0;
  return done >= 0;
}

BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER to, LARGE_INTEGER*, DWORD from) {
  return lseek(descriptor(file), to.QuadPart, from == FILE_END ? SEEK_END : SEEK_SET) >= 0;
}
