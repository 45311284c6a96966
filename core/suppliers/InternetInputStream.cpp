#include "core/suppliers/InternetInputStream_p.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

const IInternetAgent* agentTeller = nullptr;

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

// What must not stand in a request cannot get into one. The fragment is not for the server.
WideString requestText(UrlRecord url) {
  url.remove(UrlPart::Fragment);
  return url.escapedText();
}

}  // namespace

InternetSession& internetSession() noexcept {
  static InternetSession* const session = new InternetSession;  // streams may outlive every static object
  return *session;
}

void setInternetAgent(const IInternetAgent* agent) noexcept { agentTeller = agent; }

InternetInputStream::InternetInputStream(const UrlRecord& url) : url_(url) {
  const WinInetCalls* const calls = winInet();
  if (!calls || !joinSession()) return;
  request_.reset(calls->openUrl(internetSession().handle.get(), requestText(url_).c_str(), nullptr, 0, 0, 0));
  static_cast<void>(GetLastError());
  DWORD error = 0;
  wchar_t response[1024];
  DWORD responseLength = 1024;
  calls->getLastResponseInfo(&error, response, &responseLength);
  if (!request_) {
    close();
    return;
  }
  size_ = findSize();
  if (size_ > 0) {
    isOpen_ = true;
  } else {
    close();
  }
}

// Deliberate: the count grows only where the session is created, and ~InternetInputStream lowers it for every
// stream. Programs rely on the session ending with the stream that made it.
bool InternetInputStream::joinSession() {
  InternetSession& session = internetSession();
  const SCriticalSection::Lock lock(session.lock);
  if (session.useCount != 0) return true;
  session.handle.reset(winInet()->open(agentTeller ? agentTeller->internetAgent() : nullptr,
                                       INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  if (!session.handle) return false;
  ++session.useCount;
  return true;
}

i32 InternetInputStream::findSize() {
  const WinInetCalls& calls = *winInet();
  const auto end = static_cast<i32>(calls.setFilePointer(request_.get(), 0, nullptr, FILE_END, 0));
  // Where the system does not have the call at all, the reply's head tells.
  if (end < 0 && GetLastError() == ERROR_INTERNET_INVALID_OPERATION) return contentLength(calls, request_.get());
  calls.setFilePointer(request_.get(), 0, nullptr, FILE_BEGIN, 0);
  return end;
}

InternetInputStream::~InternetInputStream() {
  InternetInputStream::close();
  InternetSession& session = internetSession();
  const SCriticalSection::Lock lock(session.lock);
  if (session.useCount-- == 1) session.handle.reset();
}

void InternetInputStream::close() {
  isOpen_ = false;
  aheadNext_ = aheadEnd_ = 0;
  request_.reset();
}

u32 InternetInputStream::read(void* buffer, u32 count) {
  if (!isOpen_ || count == 0) return 0;
  auto* const to = static_cast<u8*>(buffer);
  u32 got = 0;
  if (isPushed_) {
    to[got++] = pushed_;
    isPushed_ = false;
  }
  got += takeAhead(to + got, count - got);
  if (count - got > 0 && count - got <= kSmallRead) {
    readAhead(count - got);
    got += takeAhead(to + got, count - got);
  }
  if (got < count) got += readNow(to + got, count - got);
  if (got > 0) {
    last_ = to[got - 1];
    hasLast_ = true;
  }
  position_ += got;
  return got;
}

u32 InternetInputStream::readNow(void* buffer, u32 count) {
  DWORD got = 0;  // a call that fails leaves it alone
  winInet()->readFile(request_.get(), buffer, count, &got);
  return std::min<u32>(got, count);
}

u32 InternetInputStream::takeAhead(u8* to, u32 count) noexcept {
  const u32 taken = std::min(count, aheadEnd_ - aheadNext_);
  std::memcpy(to, ahead_ + aheadNext_, taken);
  aheadNext_ += taken;
  return taken;
}

// Fetches what is here already, if that is at least what is wanted. The system waits for the first byte, as the
// read would.
void InternetInputStream::readAhead(u32 wanted) {
  const WinInetCalls& calls = *winInet();
  DWORD here = 0;
  if (!calls.queryDataAvailable || !calls.queryDataAvailable(request_.get(), &here, 0, 0) || here < wanted) return;
  aheadNext_ = 0;
  aheadEnd_ = readNow(ahead_, std::min<u32>(here, kAheadBytes));
}

int InternetInputStream::readByte() {
  if (aheadNext_ < aheadEnd_ && !isPushed_) {
    ++position_;
    hasLast_ = true;
    return last_ = ahead_[aheadNext_++];
  }
  u8 byte;
  return read(&byte, 1) == 1 ? byte : -1;
}

u16 InternetInputStream::readCharacter() {
  const int byte = readByte();
  return byte < 0 ? kNoCharacter : static_cast<u16>(byte);
}

u32 InternetInputStream::pushBack(u8 byte) {
  pushed_ = byte;
  isPushed_ = true;
  hasLast_ = false;
  return --position_;
}

u32 InternetInputStream::unreadByte() { return hasLast_ && !isPushed_ ? pushBack(last_) : position_; }

u32 InternetInputStream::skip(u32 count) {
  const u32 position = position_;
  const u32 most = std::min(count, 0xFFFFFFFF - position);
  if (seek(position + most)) return most;
  return BInputStream::skip(most);
}

// Deliberate: a byte that was pushed back stays, and the next read begins with it.
bool InternetInputStream::seek(u32 position) {
  if (!isOpen_ || position > 0x7FFFFFFF) return false;
  const auto reached =
      static_cast<i32>(winInet()->setFilePointer(request_.get(), static_cast<LONG>(position), nullptr, FILE_BEGIN, 0));
  if (reached < 0) return false;
  aheadNext_ = aheadEnd_ = 0;
  hasLast_ = false;
  position_ = position;
  return true;
}

bool InternetInputStream::checkConnection() {
  const WinInetCalls* const calls = winInet();
  return calls && calls->checkConnection(requestText(url_).c_str(), 0, 0) != FALSE;
}

}  // namespace corvix
