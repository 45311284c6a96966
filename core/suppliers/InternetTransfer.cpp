#include "core/suppliers/InternetTransfer_p.h"

#include "core/suppliers/InternetAgent_p.h"
#include "core/suppliers/InternetStream.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr u32 kSliceMs = 50;
constexpr u32 kEndMs = 200;
constexpr u32 kQuietMs = 500;  // before anybody is told that there is a wait

std::atomic<u32> timeoutMs{kInternetTimeoutMs};
std::atomic<u32> cancels{0};
std::atomic<u32> threads{0};
IInternetAgent* agentTeller = nullptr;

// The length that the reply's head tells, or -1.
i32 contentLength(const WinInetCalls& calls, HINTERNET request) noexcept {
  wchar_t text[32];
  DWORD bytes = sizeof text;
  if (!calls.queryInfo || !calls.queryInfo(request, HTTP_QUERY_CONTENT_LENGTH, text, &bytes, nullptr)) return -1;
  i64 length = 0;
  const DWORD digits = std::min<DWORD>(bytes / sizeof(wchar_t), 31);
  for (DWORD i = 0; i < digits; ++i) {
    if (text[i] < L'0' || text[i] > L'9') return -1;
    length = length * 10 + (text[i] - L'0');
    if (length > 0x7FFFFFFF) return -1;
  }
  return digits > 0 ? static_cast<i32>(length) : -1;
}

// The code that the thread runs must stay: the library may be freed while a server has not answered.
HMODULE keepLibrary() noexcept {
  HMODULE library = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&timeoutMs), &library);
  return library;
}

}  // namespace

void setInternetAgent(IInternetAgent* agent) noexcept { agentTeller = agent; }

const wchar_t* internetAgentName() noexcept { return agentTeller ? agentTeller->internetAgent() : nullptr; }

void setInternetTimeout(u32 milliseconds) noexcept { timeoutMs = milliseconds; }

u32 internetTimeout() noexcept { return timeoutMs; }

void cancelInternetWaits() noexcept { ++cancels; }

InternetPatience::InternetPatience(const std::atomic<bool>& isCancelled) noexcept
    : isCancelled_(isCancelled), start_(GetTickCount64()), cancelsBefore_(cancels) {}

InternetPatience::~InternetPatience() {
  if (isTold_ && agentTeller) agentTeller->endWait(wait_);
}

u32 InternetPatience::next() noexcept {
  const u64 waited = GetTickCount64() - start_;
  const u32 limit = timeoutMs;
  if (isCancelled_ || cancels != cancelsBefore_ || !isStillWanted(waited)) return 0;
  if (limit == kInternetForever) return kSliceMs;
  return waited < limit ? static_cast<u32>(std::min<u64>(limit - waited, kSliceMs)) : 0;
}

bool InternetPatience::isStillWanted(u64 waitedMs) {
  if (waitedMs < kQuietMs || !agentTeller) return true;
  if (!std::exchange(isTold_, true)) wait_ = agentTeller->startWait();
  return agentTeller->goOnWaiting(wait_);
}

InternetTransfer::~InternetTransfer() {
  if (request_) calls_.closeHandle(request_);
  if (wake_) CloseHandle(wake_);
  if (news_) CloseHandle(news_);
  if (thread_) CloseHandle(thread_);
}

void InternetTransfer::release(InternetTransfer* transfer) noexcept {
  if (transfer->owners_.fetch_sub(1) == 1) delete transfer;
}

u32 InternetTransfer::threadCount() noexcept { return threads; }

// At the very end of the process the thread may have ended with the lock held: all is left as it is then.
bool InternetTransfer::tryLock() noexcept {
  constexpr int kMostTries = 100;
  for (int i = 0; i < kMostTries; ++i) {
    if (lock_.tryEnter()) return true;
    Sleep(1);
  }
  return false;
}

void InternetTransfer::giveUp(InternetTransfer* transfer) noexcept {
  if (!transfer || !transfer->tryLock()) return;
  HINTERNET request = nullptr;
  transfer->isGivenUp_ = true;
  const bool isIdle = transfer->call_ == Call::None;
  const bool endsAtOnce = isIdle || (transfer->call_ == Call::Read && transfer->isAhead_);
  if (isIdle) request = std::exchange(transfer->request_, nullptr);
  HANDLE const thread = std::exchange(transfer->thread_, nullptr);
  transfer->lock_.leave();
  if (request) transfer->calls_.closeHandle(request);
  if (transfer->wake_) SetEvent(transfer->wake_);
  // One that is at its end when the process comes to its own may crash it in the emulation, so it is let go first; one
  // that a server holds is not waited for.
  if (thread && endsAtOnce) WaitForSingleObject(thread, kEndMs);
  release(transfer);
  if (thread) CloseHandle(thread);
}

bool InternetTransfer::start() noexcept {
  if (wake_ && news_) return true;
  if (!wake_) wake_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (wake_) news_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (!news_) return false;
  ++owners_;
  HMODULE const library = keepLibrary();
  ++threads;
  thread_ = CreateThread(nullptr, 0, work, this, 0, nullptr);
  if (thread_) return true;
  --threads;
  --owners_;
  CloseHandle(std::exchange(news_, nullptr));
  if (library) FreeLibrary(library);
  return false;
}

DWORD WINAPI InternetTransfer::work(void* transfer) noexcept {
  auto* const self = static_cast<InternetTransfer*>(transfer);
  for (;;) {
    WaitForSingleObject(self->wake_, INFINITE);
    SCriticalSection::Lock lock(self->lock_);
    const Call call = self->call_;
    if (call != Call::None && !self->isGivenUp_) {
      lock.release();
      self->makeCall(call);
    }
    if (self->isGivenUp_) break;
  }
  HMODULE library = nullptr;  // the count that `start` took is given back with the thread
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<const wchar_t*>(&timeoutMs), &library);
  release(self);
  --threads;
  if (library) FreeLibraryAndExitThread(library, 0);
  return 0;
}

void InternetTransfer::makeCall(Call call) noexcept {
  switch (call) {
    case Call::Open:
      openRequest();
      break;
    case Call::Read:
      while (fetchPiece()) {
      }
      return;
    case Call::Seek:
      isReached_ =
          static_cast<i32>(calls_.setFilePointer(request_, static_cast<LONG>(target_), nullptr, FILE_BEGIN, 0)) >= 0;
      break;
    case Call::Check:
      isReached_ = calls_.checkConnection(url_.c_str(), 0, 0) != FALSE;
      break;
    case Call::None:
      break;
  }
  const SCriticalSection::Lock lock(lock_);
  endCall();
}

// With the lock held.
void InternetTransfer::endCall() noexcept {
  call_ = Call::None;
  if (isWaiting_) SetEvent(news_);
}

void InternetTransfer::openRequest() noexcept {
  HINTERNET const request = calls_.openUrl(session_, url_.c_str(), nullptr, 0, 0, 0);
  static_cast<void>(GetLastError());
  DWORD error = 0;
  wchar_t response[1024];
  DWORD responseLength = 1024;
  calls_.getLastResponseInfo(&error, response, &responseLength);
  request_ = request;
  if (request_) size_ = findSize();
}

i32 InternetTransfer::findSize() noexcept {
  const auto end = static_cast<i32>(calls_.setFilePointer(request_, 0, nullptr, FILE_END, 0));
  // Where the system does not have the call at all, the reply's head tells.
  if (end < 0 && GetLastError() == ERROR_INTERNET_INVALID_OPERATION) return contentLength(calls_, request_);
  calls_.setFilePointer(request_, 0, nullptr, FILE_BEGIN, 0);
  return end;
}

u32 InternetTransfer::held() const noexcept { return filled_ - taken_; }

// Up to where the ring begins anew.
u32 InternetTransfer::room() const noexcept {
  return std::min({kRingBytes - held(), kRingBytes - filled_ % kRingBytes, kPieceBytes});
}

// The call ends together with what it brings: who has all that was wanted finds it at its end. True when it goes on.
bool InternetTransfer::put(u32 count, bool isEnd) noexcept {
  const SCriticalSection::Lock lock(lock_);
  filled_ += count;
  isAhead_ = filled_ >= goal_;
  isCut_ = isAhead_ && isFull_ && !room();
  if (isEnd || (isAhead_ && (!isFull_ || isCut_))) call_ = Call::None;
  // While pieces are full, many small reads are woken once; should the next not come, who waits looks by itself.
  const bool isEnough = held() >= awaited_ && (!isFull_ || held() >= kPieceBytes);
  if (isWaiting_ && (call_ == Call::None || isEnough)) SetEvent(news_);
  return call_ != Call::None;
}

// One piece as it comes, where the system tells, so that a slow server's bytes can be had before its last one: the
// system waits for the first byte of each. Behind what the call is to bring pieces are fetched only as long as they are
// full: then more has most likely come already. False at the end of the call.
bool InternetTransfer::fetchPiece() noexcept {
  u32 left = 0, most = 0;
  {
    const SCriticalSection::Lock lock(lock_);
    left = goal_ > filled_ ? goal_ - filled_ : 0;
    most = room();
    if (isGivenUp_ || !most) return endCall(), false;
  }
  DWORD here = 0;
  if (!calls_.queryDataAvailable || !calls_.queryDataAvailable(request_, &here, 0, 0)) here = 0;
  isFull_ = here >= kFullPieceBytes;
  const u32 asked = std::min<u32>(here > 0 ? here : left, most);
  DWORD got = 0;  // a call that fails leaves it alone
  if (asked) calls_.readFile(request_, buffer_ + filled_ % kRingBytes, asked, &got);
  return put(std::min<DWORD>(got, asked), !asked || got < asked);
}

template <class Ready>
bool InternetTransfer::waitUntil(Ready ready, InternetPatience& patience) noexcept {
  for (;;) {
    {
      const SCriticalSection::Lock lock(lock_);
      isWaiting_ = !ready();
      if (!isWaiting_) return true;
    }
    const u32 slice = patience.next();
    if (slice == 0) return false;
    WaitForSingleObject(news_, slice);
  }
}

bool InternetTransfer::ask(Call call, u32 bytes) noexcept {
  if (!start()) return false;
  const SCriticalSection::Lock lock(lock_);
  begin(call, bytes);
  return true;
}

// With the lock held, when no call is under way.
void InternetTransfer::begin(Call call, u32 bytes) noexcept {
  call_ = call;
  isCut_ = isFull_ = false;
  if (!held()) filled_ = taken_ = 0;
  goal_ = filled_ + bytes;
  isAhead_ = !bytes;
  SetEvent(wake_);
}

bool InternetTransfer::run(Call call, InternetPatience& patience) noexcept {
  const auto isIdle = [this] { return call_ == Call::None; };
  return waitUntil(isIdle, patience) && ask(call) && waitUntil(isIdle, patience);
}

bool InternetTransfer::open(HINTERNET session, InternetPatience& patience) noexcept {
  session_ = session;
  return run(Call::Open, patience);
}

bool InternetTransfer::checkConnection(InternetPatience& patience) noexcept {
  return run(Call::Check, patience) && isReached_;
}

InternetTransfer::Sought InternetTransfer::seek(u32 position, InternetPatience& patience) noexcept {
  target_ = position;
  if (!run(Call::Seek, patience)) return Sought::Late;
  if (!isReached_) return Sought::Refused;
  filled_ = taken_ = 0;
  return Sought::Reached;
}

// What a call leaves is taken before the next is asked for, once; a call that is late may have left nothing and not be
// the end.
u32 InternetTransfer::read(u8* to, u32 count, u32 most, InternetPatience& patience, bool& isOver) noexcept {
  u32 got = 0;
  for (bool hasAsked = false;; hasAsked = true) {
    const bool isReady = waitUntil(
        [&] {
          awaited_ = count - got;
          return call_ == Call::None || held() >= awaited_;
        },
        patience);
    got += take(to + got, most - got);
    isOver = got == 0 && !isReady;
    if (got >= count || !isReady || hasAsked) break;
    if (ask(Call::Read, count - got)) continue;
    isOver = got == 0;
    break;
  }
  fetchAhead();
  return got;
}

u32 InternetTransfer::take(u8* to, u32 most) noexcept {
  SCriticalSection::Lock lock(lock_);
  const u32 count = std::min(held(), most);
  lock.release();
  const u32 at = taken_ % kRingBytes, first = std::min(count, kRingBytes - at);
  std::memcpy(to, buffer_ + at, first);
  std::memcpy(to + first, buffer_, count - first);
  const SCriticalSection::Lock again(lock_);
  taken_ += count;
  return count;
}

// Where more had come than there was room for, the thread goes on as soon as half of it is free.
void InternetTransfer::fetchAhead() noexcept {
  const SCriticalSection::Lock lock(lock_);
  isWaiting_ = false;
  if (isCut_ && call_ == Call::None && held() <= kRingBytes / 2) begin(Call::Read, 0);
}

}  // namespace corvix
