#include "core/suppliers/InternetInputStream_p.h"

#include "core/suppliers/InternetAgent_p.h"
#include "core/suppliers/InternetTransfer_p.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

// What must not stand in a request cannot get into one. The fragment is not for the server.
WideString requestText(UrlRecord url) {
  url.remove(UrlPart::Fragment);
  return url.escapedText();
}

}  // namespace

InternetSession& internetSession() noexcept {
  // Streams may outlive every static object.
  static InternetSession* const session = new InternetSession;  // NOLINT(bugprone-unhandled-exception-at-new)
  return *session;
}

void InternetInputStream::GiveUp::operator()(InternetTransfer* transfer) const noexcept {
  InternetTransfer::giveUp(transfer);
}

InternetInputStream::InternetInputStream(const UrlRecord& url) : url_(url) {
  if (!winInet()) return;
  transfer_.reset(new InternetTransfer(requestText(url_)));
  if (!joinSession()) return;
  InternetPatience patience(isCancelled_);
  if (transfer_->open(internetSession().handle.get(), patience)) size_ = transfer_->size();
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
  session.handle.reset(winInet()->open(internetAgentName(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  if (!session.handle) return false;
  ++session.useCount;
  return true;
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
  transfer_.reset();
}

// A stream that was cancelled is closed by its own thread.
bool InternetInputStream::goesOn() {
  if (isOpen_ && isCancelled_) close();
  return isOpen_;
}

u32 InternetInputStream::read(void* buffer, u32 count) {
  if (!goesOn() || !buffer || count == 0) return 0;
  auto* const to = static_cast<u8*>(buffer);
  u32 got = 0;
  if (isPushed_) {
    to[got++] = pushed_;
    isPushed_ = false;
  }
  got += takeAhead(to + got, count - got);
  if (got < count) got += fetch(to + got, count - got);
  if (got > 0) {
    last_ = to[got - 1];
    hasLast_ = true;
  } else if (isOver_) {
    close();
  }
  position_ += got;
  return got;
}

// Bytes that are here already are taken along with small reads.
u32 InternetInputStream::fetch(u8* to, u32 count) {
  InternetPatience patience(isCancelled_);
  if (count <= kSmallRead) {
    aheadNext_ = 0;
    aheadEnd_ = fetchPiece(ahead_, count, kAheadBytes, patience);
    return takeAhead(to, count);
  }
  u32 got = 0;
  while (got < count) {
    const u32 asked = std::min(count - got, InternetTransfer::kPieceBytes);
    const u32 came = fetchPiece(to + got, asked, asked, patience);
    got += came;
    if (came < asked) break;
  }
  return got;
}

u32 InternetInputStream::fetchPiece(u8* to, u32 count, u32 most, InternetPatience& patience) {
  const auto size = static_cast<u32>(size_);
  isOver_ = false;
  if (fetched_ >= size) return 0;
  const u32 got = std::min(transfer_->read(to, count, most, patience, isOver_), size - fetched_);
  fetched_ += got;
  return got;
}

u32 InternetInputStream::takeAhead(u8* to, u32 count) noexcept {
  const u32 taken = std::min(count, aheadEnd_ - aheadNext_);
  std::memcpy(to, ahead_ + aheadNext_, taken);
  aheadNext_ += taken;
  return taken;
}

int InternetInputStream::readByte() {
  if (aheadNext_ < aheadEnd_ && !isPushed_ && !isCancelled_) {
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
  const u32 most = std::min(count, 0xFFFFFFFF - position_);
  if (canSeek_ && seek(position_ + most)) return most;
  return BInputStream::skip(most);  // NOLINT(bugprone-parent-virtual-call): the base between them would seek
}

// Deliberate: a byte that was pushed back stays, and the next read begins with it.
bool InternetInputStream::seek(u32 position) {
  if (!goesOn() || position > 0x7FFFFFFF) return false;
  InternetPatience patience(isCancelled_);
  switch (transfer_->seek(position, patience)) {
    case InternetTransfer::Sought::Reached:
      break;
    case InternetTransfer::Sought::Refused:
      canSeek_ = false;
      return false;
    case InternetTransfer::Sought::Late:
      close();
      return false;
  }
  aheadNext_ = aheadEnd_ = 0;
  hasLast_ = false;
  canSeek_ = true;
  position_ = fetched_ = position;
  return true;
}

bool InternetInputStream::checkConnection() {
  if (!winInet()) return false;
  const std::unique_ptr<InternetTransfer, GiveUp> transfer(new InternetTransfer(requestText(url_)));
  InternetPatience patience(isCancelled_);
  return transfer->checkConnection(patience);
}

}  // namespace corvix
