// What formats read from and write to: streams that show how far they are, and end when the user wants no more.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/text/WideString.h"
#include "shell/documents/DocFormat.h"

namespace corvix {

class IShell;

// A progress of the shell, from the first step to the end of the object.
class ShownProgress {
 public:
  // `maximum` 0: the end is not known. What is short is hidden.
  ShownProgress(IShell& shell, u32 maximum);
  ~ShownProgress();
  ShownProgress(const ShownProgress&) = delete;
  ShownProgress& operator=(const ShownProgress&) = delete;

  // Shown when it is a step further than what was shown last. False once the user has stopped it.
  bool goTo(u32 position);
  bool isStopped() const noexcept { return isStopped_; }

 private:
  IShell& shell_;
  const i32 id_;
  const u32 maximum_;
  const i32 flags_;
  u32 step_;
  u32 shift_ = 0;  // positions have 32 bits, what is shown 31
  u32 shown_ = 0;
  bool isStopped_ = false;
};

class WatchedInputStream final : public BRAInputStream, public IStreamPlace {
  CORVIX_IDENTITY(WatchedInputStream, 0x707A8410, 0xABDECCAF, 0xE81DD501, 0xC826BA94, BRAInputStream, IStreamPlace)

 public:
  // The progress goes before the stream when `letGo` is called.
  WatchedInputStream(Ref<BRAInputStream> source, ShownProgress& progress, std::wstring_view location)
      : source_(std::move(source)), progress_(&progress), location_(location) {}

  void letGo() noexcept { progress_ = nullptr; }
  const wchar_t* location() const noexcept override { return location_.c_str(); }

  bool isOpen() const noexcept override { return source_->isOpen(); }
  void close() override { source_->close(); }
  u32 getPosition() const noexcept override { return source_->getPosition(); }
  u32 size() const noexcept override { return source_->size(); }
  u32 read(void* buffer, u32 count) override;
  int readByte() override { return (++singleBytes_ & 0xFFF) && !isStopped() ? source_->readByte() : readByteAndShow(); }
  u32 unreadByte() override { return source_->unreadByte(); }
  u32 skip(u32 count) override { return source_->skip(count); }
  bool atEnd() override { return isStopped() || source_->atEnd(); }
  bool seek(u32 position) override { return source_->seek(position); }
  BRAInputStream* clone() override { return source_->clone(); }

 private:
  bool isStopped() const noexcept { return progress_ && progress_->isStopped(); }
  int readByteAndShow();

  const Ref<BRAInputStream> source_;
  ShownProgress* progress_;
  const WideString location_;
  u32 singleBytes_ = 0;
};

class WatchedOutputStream final : public BOutputStream, public IBRAStream, public IBResizableStream {
  CORVIX_IDENTITY(WatchedOutputStream, 0xFF0B1225, 0x4F1E2B8D, 0xB3894C70, 0x7FA52BD7, BOutputStream, IBRAStream,
                  IBResizableStream)

 public:
  WatchedOutputStream(Ref<BFileOutputStream> file, ShownProgress& progress) noexcept
      : file_(std::move(file)), progress_(&progress) {}

  void letGo() noexcept;  // closes the file

  // The system's error of the first write that did not take all; 0 when every one did.
  u32 error() const noexcept { return error_; }

  bool isOpen() const noexcept override { return file_->isOpen(); }
  u32 getPosition() const noexcept override { return file_->getPosition(); }
  u32 size() const noexcept override { return file_->size(); }
  u32 write(const void* buffer, u32 count) override;
  bool seek(u32 position) override { return file_->seek(position); }
  bool setSize(u32 size) override { return file_->setSize(size); }

 private:
  const Ref<BFileOutputStream> file_;
  ShownProgress* progress_;
  u32 error_ = 0;
};

}  // namespace corvix
