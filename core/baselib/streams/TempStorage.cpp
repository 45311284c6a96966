#include "core/baselib/streams/TempStorage.h"

#include "core/baselib/streams/RangedFile_p.h"
#include "core/baselib/system/Exception.h"

namespace corvix {

namespace {

constexpr u32 kLongestPath = 260;

// Deleting is shared by every system that the library runs on; without it there is no second handle on a file
// that is deleted on close.
FileHandle openTemporary(const wchar_t* path, DWORD disposition) noexcept {
  return FileHandle(CreateFileW(
      path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, disposition,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS, nullptr));
}

// Creates the file, empty.
bool makeName(WideString& name) {
  wchar_t folder[kLongestPath + 1];
  wchar_t path[kLongestPath + 1];
  const DWORD length = GetTempPathW(kLongestPath + 1, folder);
  if (length == 0 || length > kLongestPath || !GetTempFileNameW(folder, L"cvx", 0, path)) return false;
  try {
    name.assign(path);
  } catch (const std::bad_alloc&) {
    DeleteFileW(path);
    return false;
  }
  return true;
}

// The line is a fixed number, deliberately: reports of this error are collected by it.
[[noreturn]] void throwCloseFailed() {
  static SException exception(L"core/baselib/streams/TempStorage.cpp", 74, L"CloseHandle(m_hFile)");
  throw &exception;
}

}  // namespace

BTempStorage::BTempStorage() : file_(new RangedFile) {}

// The existing file is opened: creating it anew would cut off what was written. Once a former copy was closed
// the system may refuse to open the file, then a duplicate of the handle has to do.
BTempStorage::BTempStorage(const BTempStorage& other) : BTempStorage() {
  name_ = other.name_;
  if (!other.isOpen()) return;
  if (!file_->attach(openTemporary(name_.c_str(), OPEN_EXISTING))) file_->attachDuplicateOf(*other.file_);
}

BTempStorage::~BTempStorage() { file_->close(); }

bool BTempStorage::open() {
  close();
  if (!makeName(name_)) return false;
  if (file_->attach(openTemporary(name_.c_str(), CREATE_ALWAYS))) return true;
  DeleteFileW(name_.c_str());
  return false;
}

bool BTempStorage::isOpen() const noexcept { return file_->isOpen(); }

void BTempStorage::close() {
  if (!file_->close()) throwCloseFailed();
}

u32 BTempStorage::getPosition() const noexcept { return file_->position(); }

u32 BTempStorage::size() const noexcept { return file_->size(); }

bool BTempStorage::atEnd() { return file_->atEnd(); }

u32 BTempStorage::read(void* buffer, u32 count) { return file_->read(buffer, count); }

int BTempStorage::readByte() { return file_->readByte(); }

u32 BTempStorage::unreadByte() { return file_->stepBack(); }

u32 BTempStorage::skip(u32 count) { return file_->skip(count); }

bool BTempStorage::setSize(u32 size) { return file_->setSize(size); }

u32 BTempStorage::write(const void* buffer, u32 count) { return file_->write(buffer, count); }

bool BTempStorage::seek(u32 position) { return file_->seek(position); }

BTempStorage* BTempStorage::clone() { return new BTempStorage(*this); }

u32 BTempStorage::limit() const noexcept { return file_->limit(); }

void BTempStorage::setLimit(u32 limit) noexcept { file_->setLimit(limit); }

}  // namespace corvix
