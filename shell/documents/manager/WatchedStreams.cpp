#include "shell/documents/manager/WatchedStreams_p.h"

#include "shell/Shell.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr u32 kSmallestStep = 64 * 1024;
constexpr u32 kSteps = 128;
constexpr u32 kShort = 512 * 1024;

}  // namespace

ShownProgress::ShownProgress(IShell& shell, u32 maximum)
    : shell_(shell),
      id_(shell.newProgressId()),
      maximum_(maximum == IBStream::kUnknownSize ? 0 : maximum),
      flags_(kProgressCanStop | (maximum && maximum < kShort ? kProgressIsHidden : 0)) {
  step_ = std::max(maximum_ / kSteps, kSmallestStep);
  shift_ = maximum_ > 0x7FFFFFFF ? 1 : 0;
  shell_.startProgress(id_, 0, static_cast<i32>(maximum_ >> shift_), 0, flags_);
}

ShownProgress::~ShownProgress() {
  callForeign(codeOf(&shell_), L"IShell", [&] {
    const i32 end = static_cast<i32>((maximum_ ? maximum_ : shown_) >> shift_);
    return shell_.stopProgress(id_, 0, static_cast<i32>(maximum_ >> shift_), end, flags_);
  });
}

bool ShownProgress::goTo(u32 position) {
  if (isStopped_ || (position >= shown_ ? position - shown_ : shown_ - position) < step_) return !isStopped_;
  shown_ = position;
  const i32 maximum = static_cast<i32>(maximum_ >> shift_);
  const i32 now = static_cast<i32>(std::min(position, 0x7FFFFFFFu << shift_) >> shift_);
  isStopped_ = shell_.changeProgress(id_, 0, maximum, now, flags_) == notify::kStop;
  return !isStopped_;
}

u32 WatchedInputStream::read(void* buffer, u32 count) {
  if (isStopped()) return 0;
  const u32 got = source_->read(buffer, count);
  return !progress_ || progress_->goTo(source_->getPosition()) ? got : 0;
}

int WatchedInputStream::readByteAndShow() {
  u8 byte;
  return read(&byte, 1) == 1 ? byte : -1;
}

void WatchedOutputStream::letGo() noexcept {
  progress_ = nullptr;
  file_->close();
}

u32 WatchedOutputStream::write(const void* buffer, u32 count) {
  if (error_ || !progress_ || !progress_->goTo(file_->getPosition())) {
    if (!error_) error_ = ERROR_CANCELLED;
    return 0;
  }
  const u32 written = buffer ? file_->write(buffer, count) : 0;
  if (written < count && buffer) {
    error_ = GetLastError();
    if (!error_) error_ = ERROR_DISK_FULL;
  }
  return written;
}

}  // namespace corvix
