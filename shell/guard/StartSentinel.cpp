#include "shell/guard/StartSentinel_p.h"

#include "core/baselib/system/UserData_p.h"

#include <cstring>
#include <new>

namespace corvix {

using namespace start_file;

namespace {

u64 beginOfProcess() noexcept {
  FILETIME begun{}, unused;
  GetProcessTimes(GetCurrentProcess(), &begun, &unused, &unused, &unused);
  return u64{begun.dwHighDateTime} << 32 | begun.dwLowDateTime;
}

}  // namespace

StartSentinel::StartSentinel() noexcept { startUnderWay = this; }

StartSentinel::~StartSentinel() {
  startUnderWay = nullptr;
  forget();
}

void StartSentinel::endInOrder() noexcept {
  StartSentinel* const ended = startUnderWay;
  if (ended && ended->head_ && !ended->head_->busy && GetCurrentThreadId() == ended->thread_) ended->forget();
}

void StartSentinel::forget() noexcept {
  head_ = nullptr;
  view_.reset();
  if (!file_) return;
  file_.reset();
  DeleteFileW(path_.c_str());
}

bool StartSentinel::isReady() noexcept {
  if (GetCurrentThreadId() != thread_) return false;
  if (!std::exchange(isTried_, true)) {
    try {
      makeFile();
    } catch (const std::bad_alloc&) {  // then without
    }
    if (!head_) forget();
  }
  return head_ != nullptr;
}

void StartSentinel::makeFile() {
  const std::wstring where = folder();
  if (where.empty()) return;
  const std::wstring program = modulePath(nullptr);
  const u64 begun = beginOfProcess();
  wchar_t own[64];
  wsprintfW(own, L".%u.%08x%08x", GetCurrentProcessId(), static_cast<u32>(begun >> 32), static_cast<u32>(begun));
  path_ = where + L"\\" + program.substr(program.find_last_of(L'\\') + 1) + own + kSuffix;
  makeFolders(where);
  constexpr u32 kMode =
      file_mode::kRead | file_mode::kWrite | file_mode::kNew | file_mode::kShareRead | file_mode::kShareWrite;
  file_ = openFile(path_.c_str(), kMode);
  // A full disk is to be told here, not when a page of the view is first touched.
  const std::string room(file_ ? kSizeBytes : 0, '\0');
  DWORD written = 0;
  if (!file_ || !WriteFile(file_.get(), room.data(), kSizeBytes, &written, nullptr) || written != kSizeBytes) return;
  const KernelHandle mapping(CreateFileMappingW(file_.get(), nullptr, PAGE_READWRITE, 0, kSizeBytes, nullptr));
  view_.reset(mapping ? MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, kSizeBytes) : nullptr);
  if (!view_) return;
  head_ = static_cast<Head*>(view_.get());
  *head_ = {kMagic, kLayout, begun, GetCurrentProcessId(), 0, 0, 0};
  top_ = sizeof(Head);
  if (!put(program, {})) head_ = nullptr;
}

// Where it stands now, or 0 when there is no room for it.
u32 StartSentinel::put(const std::wstring& path, const FileStamp& stamp) noexcept {
  const std::size_t sizeBytes = sizeof(Name) + path.size() * sizeof(wchar_t);
  if (sizeBytes > kSizeBytes - top_) return 0;
  const Name name{stamp, static_cast<u32>(path.size())};
  char* const at = static_cast<char*>(view_.get()) + top_;
  std::memcpy(at, &name, sizeof name);
  // NOLINTNEXTLINE(bugprone-not-null-terminated-result): its length stands before it
  std::memcpy(at + sizeof name, path.data(), path.size() * sizeof(wchar_t));
  return std::exchange(top_, static_cast<u32>(top_ + (sizeBytes + 7) / 8 * 8));
}

StartSentinel::Busy StartSentinel::enter(const std::wstring& path, const FileStamp& stamp, StartPhase phase) noexcept {
  if (!isReady()) return {};
  const Busy before{head_->busy, top_};
  const u32 name = put(path, stamp);
  if (!name) return {};
  say(name | static_cast<u32>(phase) << kPhaseShift);
  return before;
}

void StartSentinel::change(StartPhase phase) noexcept {
  if (head_ && GetCurrentThreadId() == thread_ && head_->busy)
    say((head_->busy & kNameMask) | static_cast<u32>(phase) << kPhaseShift);
}

void StartSentinel::leave(const Busy& before) noexcept {
  if (!head_ || GetCurrentThreadId() != thread_) return;
  say(before.busy);
  top_ = before.top;
}

// The name stands before its place does, whenever the process ends.
void StartSentinel::say(u32 busy) noexcept { std::atomic_ref(head_->busy).store(busy, std::memory_order_release); }

}  // namespace corvix
