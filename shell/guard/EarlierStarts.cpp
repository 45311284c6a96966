#include "shell/guard/EarlierStarts_p.h"

#include "core/baselib/system/KernelFile_p.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <optional>

namespace corvix {

using namespace start_file;

namespace {

constexpr u32 kShareAll = file_mode::kShareRead | file_mode::kShareWrite | file_mode::kShareDelete;

// Another process may have got the number since.
bool isRunning(u32 process, u64 begun) noexcept {
  const KernelHandle running(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, process));
  if (!running) return GetLastError() == ERROR_ACCESS_DENIED;
  FILETIME from{}, unused;
  return WaitForSingleObject(running.get(), 0) == WAIT_TIMEOUT &&
         GetProcessTimes(running.get(), &from, &unused, &unused, &unused) &&
         (u64{from.dwHighDateTime} << 32 | from.dwLowDateTime) == begun;
}

struct FoundName {
  std::wstring path;
  FileStamp stamp;
};

std::optional<FoundName> nameAt(const std::string& bytes, std::size_t at) {
  Name name;
  if (at < sizeof(Head) || at > bytes.size() - sizeof name) return std::nullopt;
  std::memcpy(&name, bytes.data() + at, sizeof name);
  if (name.length > (bytes.size() - at - sizeof name) / sizeof(wchar_t)) return std::nullopt;
  FoundName found{std::wstring(name.length, 0), name.stamp};
  std::memcpy(found.path.data(), bytes.data() + at + sizeof name, name.length * sizeof(wchar_t));
  return found;
}

bool isSamePath(const std::wstring& a, const std::wstring& b) noexcept {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
         CSTR_EQUAL;
}

}  // namespace

void EarlierStarts::read() noexcept {
  try {
    const std::wstring program = modulePath(nullptr);
    const std::wstring where = folder() + L"\\";
    WIN32_FIND_DATAW found;
    const SearchHandle search(
        FindFirstFileExW((where + program.substr(program.find_last_of(L'\\') + 1) + L".*" + kSuffix).c_str(),
                         FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, 0));
    if (!search) return;
    do {
      readFile(where + found.cFileName, program);
    } while (FindNextFileW(search.get(), &found));
  } catch (const std::bad_alloc&) {  // those that are read count
  }
}

void EarlierStarts::readFile(const std::wstring& file, const std::wstring& program) {
  const FileHandle opened = openFile(file.c_str(), file_mode::kRead | kShareAll);
  std::string bytes(kSizeBytes, '\0');
  DWORD got = 0;
  if (!opened || !ReadFile(opened.get(), bytes.data(), kSizeBytes, &got, nullptr) || got != kSizeBytes) return;
  Head head;
  std::memcpy(&head, bytes.data(), sizeof head);
  const auto whose = nameAt(bytes, sizeof head);
  if (head.magic != kMagic || head.layout != kLayout || !whose || !isSamePath(whose->path, program)) return;
  if (isRunning(head.process, head.begun)) return;
  EndedStart ended{file, {}, static_cast<StartPhase>(head.busy >> kPhaseShift), head.begun, head.isTold != 0};
  const auto module = nameAt(bytes, head.busy & kNameMask);
  if (!module) {
    unknown_.push_back(std::move(ended));
  } else if (!(stampOf(module->path) == module->stamp)) {
    outdated_.push_back(file);
  } else {
    ended.module = module->path;
    named_.push_back(std::move(ended));
  }
}

const EndedStart* EarlierStarts::endedIn(const wchar_t* modulePath) const noexcept {
  for (const EndedStart& ended : named_) {
    if (isSamePath(ended.module, modulePath)) return &ended;
  }
  return nullptr;
}

void EarlierStarts::forgetUnknown() noexcept {
  for (const EndedStart& ended : unknown_) DeleteFileW(ended.file.c_str());
  for (const std::wstring& file : outdated_) DeleteFileW(file.c_str());
}

bool EarlierStarts::forget(const std::wstring& modulePath) noexcept {
  bool isForgotten = false;
  for (const EndedStart& ended : named_) {
    if (!isSamePath(ended.module, modulePath)) continue;
    if (!DeleteFileW(ended.file.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    isForgotten = true;
  }
  return isForgotten;
}

void EarlierStarts::setTold(const EndedStart& ended) noexcept {
  const FileHandle file = openFile(ended.file.c_str(), file_mode::kWrite | kShareAll);
  OVERLAPPED at{};
  at.Offset = offsetof(Head, isTold);
  constexpr u32 kTold = 1;
  DWORD written = 0;
  if (file) WriteFile(file.get(), &kTold, sizeof kTold, &written, &at);
}

std::wstring EarlierStarts::describe(const EndedStart& ended) {
  constexpr const wchar_t* kPhases[] = {L"", L" (while its code was loaded)", L" (while it was asked for its factory)",
                                        L" (while it made an object)", L" (while it was told of the start)"};
  const FILETIME begun{static_cast<DWORD>(ended.begun), static_cast<DWORD>(ended.begun >> 32)};
  FILETIME local{};
  SYSTEMTIME time{};
  FileTimeToLocalFileTime(&begun, &local);
  FileTimeToSystemTime(&local, &time);
  wchar_t text[64];
  wsprintfW(text, L"%04d-%02d-%02d %02d:%02d", time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute);
  const auto phase = static_cast<std::size_t>(ended.phase);
  return text + std::wstring(phase < std::size(kPhases) ? kPhases[phase] : L"");
}

}  // namespace corvix
