#include "examples/host/Commands.h"
#include "examples/host/Console.h"
#include "examples/host/ShellDisplay.h"

#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/InputStream.h"
#include "shell/Locations.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include <windows.h>
#include <fcntl.h>
#include <io.h>

namespace host {

using namespace corvix;

namespace {

constexpr u32 kPieceBytes = 64 * 1024;

int failed(const std::string& what) {
  std::fprintf(stderr, "corvix-host: %s\n", what.c_str());
  return 1;
}

// Where fetched bytes go: into a file that appears under its name only when it is whole, or to the standard output.
class Receiver {
 public:
  explicit Receiver(std::wstring path) : path_(std::move(path)) {}
  ~Receiver() {
    if (file_) file_->close();
    if (file_) DeleteFileW(partPath().c_str());
  }

  bool open() {
    if (path_.empty()) return _setmode(_fileno(stdout), _O_BINARY) != -1;
    auto file = make<BFileOutputStream>();
    if (!file->open(partPath().c_str())) return false;
    file_ = std::move(file);
    return true;
  }

  bool write(const void* bytes, u32 count) {
    return file_ ? file_->write(bytes, count) == count : std::fwrite(bytes, 1, count, stdout) == count;
  }

  bool finish() {
    if (!file_) return std::fflush(stdout) == 0;
    file_->close();
    if (!MoveFileExW(partPath().c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING)) return false;
    file_.reset();
    return true;
  }

 private:
  std::wstring partPath() const { return path_ + L".part"; }

  std::wstring path_;
  Ref<BFileOutputStream> file_;
};

// Tells the shell's listeners how far a transfer is, in percent.
class Percentage {
 public:
  Percentage(IShell& shell, u32 total)
      : shell_(shell), id_(shell.newProgressId()), total_(total), end_(total == IBStream::kUnknownSize ? 0 : 100) {
    shell_.startProgress(id_, 0, end_, 0, kProgressCanStop);
  }
  ~Percentage() { shell_.stopProgress(id_, 0, end_, position_, kProgressCanStop); }

  // False when somebody asks for an early end.
  bool update(u64 done) {
    const i32 position = end_ > 0 && total_ > 0 ? static_cast<i32>(done * 100 / total_) : 0;
    const auto now = std::chrono::steady_clock::now();
    if (position == position_ || (position < end_ && now - told_ < std::chrono::milliseconds(100))) return true;
    position_ = position;
    told_ = now;
    return shell_.changeProgress(id_, 0, end_, position, kProgressCanStop) != notify::kStop;
  }
  void finish(u64 done) {
    if (total_ == done) position_ = end_;
  }

 private:
  IShell& shell_;
  i32 id_;
  u32 total_;
  i32 end_;
  i32 position_ = 0;
  std::chrono::steady_clock::time_point told_;
};

std::string whyNoStream(IPluginManager& manager, const wchar_t* location) {
  const WideString name = supplierNameOf(location);
  const auto entries = Ref<IBCollection>::adopt(manager.findByName(name.c_str()));
  if (!entries) return "no module declares \"" + utf8(name) + "\", so locations of this scheme cannot be opened";
  for (i32 i = 0; i < entries->count(); ++i) {
    const IPluginModule& module = *query<IPluginInterface>(entries->item(i))->module();
    if (*module.reason()) return utf8(module.path()) + ": " + utf8(module.reason());
  }
  return "there is no such thing, or it may not be opened";
}

}  // namespace

int fetch(IShell& shell, const std::string& location, const std::string& file) {
  IPluginManager& manager = *shell.pluginManager();
  const std::wstring wideLocation = wide(location);
  const auto opened = Ref<IBStream>::adopt(openLocation(manager, wideLocation.c_str()));
  const auto stream = opened.as<BInputStream>();
  if (!stream) return failed("cannot open " + location + ": " + whyNoStream(manager, wideLocation.c_str()));
  if (!stream->isOpen())
    return failed("cannot open " + location +
                  ": no answer from its server, or a reply that is empty or does not tell its length");

  Receiver receiver(wide(file));
  if (!receiver.open()) return failed("cannot write " + file + ": is its folder there, and may you write in it?");
  const u32 size = stream->size();
  std::optional<ShellDisplay> display;  // the standard output has one use at a time
  if (!file.empty()) display.emplace(shell);
  Percentage progress(shell, size);
  const auto piece = std::make_unique<u8[]>(kPieceBytes);
  u64 done = 0;
  while (const u32 got = stream->read(piece.get(), kPieceBytes)) {
    done += got;
    if (!receiver.write(piece.get(), got)) return failed("cannot write " + file + ": the disk is full?");
    if (!progress.update(done)) return failed("stopped by the user; nothing was kept");
  }
  progress.finish(done);
  if (size != IBStream::kUnknownSize && done < size)
    return failed("only " + std::to_string(done) + " of " + std::to_string(size) + " bytes of " + location + " came");
  if (!receiver.finish()) return failed("cannot write " + file + ": is it open elsewhere?");
  return 0;
}

}  // namespace host
