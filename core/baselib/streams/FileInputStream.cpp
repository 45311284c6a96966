#include "core/baselib/streams/FileInputStream.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/RangedFile_p.h"

namespace corvix {

BFileInputStream::BFileInputStream() : file_(new RangedFile) {}

BFileInputStream::~BFileInputStream() { file_->close(); }

bool BFileInputStream::open(const wchar_t* path, u32 start, u32 length) {
  close();
  constexpr u32 kShareAll = file_mode::kShareRead | file_mode::kShareWrite | file_mode::kShareDelete;
  return file_->attach(openFile(path, file_mode::kRead | kShareAll), start, length);
}

u64 BFileInputStream::fileSize() const noexcept { return file_->fileSize(); }

u64 BFileInputStream::start() const noexcept { return file_->base(); }

bool BFileInputStream::setStart(u64 offset) noexcept { return file_->setBase(offset); }

bool BFileInputStream::isOpen() const noexcept { return file_->isOpen(); }

void BFileInputStream::close() { file_->close(); }

u32 BFileInputStream::getPosition() const noexcept { return file_->position(); }

u32 BFileInputStream::size() const noexcept { return file_->size(); }

u32 BFileInputStream::read(void* buffer, u32 count) { return file_->read(buffer, count); }

int BFileInputStream::readByte() { return file_->readByte(); }

bool BFileInputStream::atEnd() { return file_->atEnd(); }

bool BFileInputStream::seek(u32 position) { return file_->seek(position); }

BFileInputStream* BFileInputStream::clone() {
  auto copy = make<BFileInputStream>();
  return copy->file_->attach(file_->reopen(), file_->base(), file_->limit()) ? copy.detach() : nullptr;
}

}  // namespace corvix
