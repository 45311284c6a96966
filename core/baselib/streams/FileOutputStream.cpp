#include "core/baselib/streams/FileOutputStream.h"

#include "core/baselib/streams/RangedFile_p.h"

namespace corvix {

namespace {

u32 modeFor(BFileOutputStream::Existing existing) noexcept {
  const u32 mode = file_mode::kWrite | file_mode::kShareRead;
  switch (existing) {
    case BFileOutputStream::Existing::Replace:
      return mode | file_mode::kCreate;
    case BFileOutputStream::Existing::Append:
      return mode | file_mode::kCreate | file_mode::kAppend;
    case BFileOutputStream::Existing::Refuse:
      return mode | file_mode::kNew;
    case BFileOutputStream::Existing::Modify:
      break;
  }
  return mode;
}

}  // namespace

BFileOutputStream::BFileOutputStream() : file_(new RangedFile) {}

BFileOutputStream::~BFileOutputStream() { file_->close(); }

bool BFileOutputStream::open(const wchar_t* path, Existing existing) {
  close();  // the same file may be meant
  if (!file_->attach(openFile(path, modeFor(existing)))) return false;
  if (existing != Existing::Append) return true;
  if (const u32 end = file_->size(); end != kUnknownSize) return file_->seek(end);
  file_->close();
  return false;
}

u64 BFileOutputStream::fileSize() const noexcept { return file_->fileSize(); }

u64 BFileOutputStream::start() const noexcept { return file_->base(); }

bool BFileOutputStream::setStart(u64 offset) noexcept { return file_->setBase(offset); }

bool BFileOutputStream::isOpen() const noexcept { return file_->isOpen(); }

void BFileOutputStream::close() { file_->close(); }

u32 BFileOutputStream::getPosition() const noexcept { return file_->position(); }

u32 BFileOutputStream::size() const noexcept { return file_->size(); }

u32 BFileOutputStream::write(const void* buffer, u32 count) { return file_->write(buffer, count); }

bool BFileOutputStream::seek(u32 position) { return file_->seek(position); }

bool BFileOutputStream::setSize(u32 size) { return file_->setSize(size); }

}  // namespace corvix
