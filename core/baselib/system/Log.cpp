#include "core/baselib/system/Log.h"

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/system/KernelFile_p.h"
#include "core/baselib/system/Log_p.h"
#include "core/baselib/system/RegistryKey_p.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <cwchar>

namespace corvix {

namespace {

constexpr wchar_t kSwitch[] = L"WriteLog";

HANDLE logFile = INVALID_HANDLE_VALUE;

int format(char* text, std::size_t size, const char* form, va_list arguments) {
  return _vsnprintf(text, size, form, arguments);
}
int format(wchar_t* text, std::size_t size, const wchar_t* form, va_list arguments) {
  return _vsnwprintf(text, size, form, arguments);
}
int measure(const char* form, va_list arguments) { return _vscprintf(form, arguments); }
int measure(const wchar_t* form, va_list arguments) { return _vscwprintf(form, arguments); }
std::size_t lengthOf(const char* text) { return std::strlen(text); }
std::size_t lengthOf(const wchar_t* text) { return std::wcslen(text); }

// Room for the usual entry on the stack, for any other on the heap.
template <class Char>
class Room {
 public:
  static constexpr std::size_t kUsual = 512;

  // Null when memory is short.
  Char* of(std::size_t size) noexcept {
    if (size <= kUsual) return usual_;
    return large_.tryAllocate(size) ? large_.get() : nullptr;
  }

 private:
  Char usual_[kUsual];
  HeapBuffer<Char> large_;
};

template <class Char>
struct Text {
  const Char* data;
  std::size_t length;
};

template <class Char>
Text<Char> formatted(Room<Char>& room, const Char* form, va_list arguments) {
  constexpr std::size_t kUsual = Room<Char>::kUsual;
  if (!form) return {nullptr, 0};
  va_list again;
  va_copy(again, arguments);
  Char* text = room.of(kUsual);
  int length = format(text, kUsual, form, arguments);
  if (length < 0 || static_cast<std::size_t>(length) >= kUsual) {
    va_list measured;
    va_copy(measured, again);
    length = measure(form, measured);
    va_end(measured);
    text = length < 0 ? nullptr : room.of(static_cast<std::size_t>(length) + 1);
    if (text) length = format(text, static_cast<std::size_t>(length) + 1, form, again);
  }
  va_end(again);
  if (!text || length < 0) return {form, lengthOf(form)};
  return {text, static_cast<std::size_t>(length)};
}

void append(Text<char> entry) {
  if (entry.length == 0) return;
  DWORD written = 0;
  WriteFile(logFile, entry.data, static_cast<DWORD>(entry.length), &written, nullptr);
  FlushFileBuffers(logFile);
}

void append(Text<wchar_t> entry) {
  if (entry.length == 0) return;
  const int units = static_cast<int>(entry.length);
  const int size = WideCharToMultiByte(CP_ACP, 0, entry.data, units, nullptr, 0, nullptr, nullptr);
  const std::size_t length = size > 0 ? static_cast<std::size_t>(size) : entry.length;
  Room<char> room;
  char* const bytes = room.of(length);
  if (!bytes) return;
  if (size <= 0 || WideCharToMultiByte(CP_ACP, 0, entry.data, units, bytes, size, nullptr, nullptr) != size) {
    std::fill_n(bytes, length, '?');
  }
  append(Text<char>{bytes, length});
}

template <class Char>
void appendFormatted(const Char* form, va_list arguments) {
  Room<Char> room;
  append(formatted(room, form, arguments));
}

// As asctime has it, which ends in a newline: the empty line that follows in the log is deliberate, readers of
// logs tell runs apart by it.
struct TimeText {
  char units[32] = "an unknown time\n";
};
TimeText localTime() noexcept {
  const __time64_t now = _time64(nullptr);
  std::tm local;
  TimeText text;
  if (_localtime64_s(&local, &now) != 0 || asctime_s(text.units, sizeof text.units, &local) != 0) return {};
  return text;
}

RegistryKey openKeyOf(const std::wstring& executable) {
  return RegistryKey::open(HKEY_CURRENT_USER, registryPathOf(executable), KEY_QUERY_VALUE);
}

bool isOn(const RegistryKey& key) { return key && key.number(kSwitch).value_or(0) != 0; }

// Constructed with the library's statics, destroyed at its unload.
struct LogLife {
  LogLife() { openLog(modulePath(nullptr)); }
  ~LogLife() { closeLog(); }
};
const LogLife logLife;

}  // namespace

void sWriteLog(const char* form, ...) {
  if (logFile == INVALID_HANDLE_VALUE) return;
  va_list arguments;
  va_start(arguments, form);
  appendFormatted(form, arguments);
  va_end(arguments);
}

void sWriteLog(const wchar_t* form, ...) {
  if (logFile == INVALID_HANDLE_VALUE) return;
  va_list arguments;
  va_start(arguments, form);
  appendFormatted(form, arguments);
  va_end(arguments);
}

std::wstring logPathOf(const std::wstring& executable) { return executable + L".log"; }

void openLog(const std::wstring& executable) {
  RegistryKey key = openKeyOf(executable);
  if (isOn(key)) {
    logFile = openFile(logPathOf(executable).c_str(),
                       file_mode::kWrite | file_mode::kCreate | file_mode::kAppend | file_mode::kShareRead)
                  .release();
  }
  // Deliberately not closed: the key is in use as long as the library is loaded.
  static_cast<void>(key.release());
  sWriteLog("Start %s at %s\n", GetCommandLineA(), localTime().units);
}

void closeLog() {
  sWriteLog("End %s at %s\n", GetCommandLineA(), localTime().units);
  if (logFile != INVALID_HANDLE_VALUE && GetFileType(logFile) == FILE_TYPE_DISK) CloseHandle(logFile);
  logFile = INVALID_HANDLE_VALUE;
}

bool isLogSwitchedOn() { return isOn(openKeyOf(modulePath(nullptr))); }

bool switchLog(bool on) {
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, registryPathOf(modulePath(nullptr)), KEY_SET_VALUE);
  return key && key.setNumber(kSwitch, on ? 1 : 0);
}

WideString logPath() { return logPathOf(modulePath(nullptr)); }

}  // namespace corvix
