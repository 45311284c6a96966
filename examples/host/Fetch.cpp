#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "examples/host/ShellDisplay.h"

#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/StreamCopy.h"
#include "shell/Locations.h"

#include <chrono>
#include <optional>
#include <string>

#include <windows.h>
#include <fcntl.h>
#include <io.h>

namespace host {

using namespace corvix;

namespace {

int failed(const std::string& what) {
  std::fprintf(stderr, "corvix-host: %s\n", what.c_str());
  return 1;
}

class StandardOutput : public BOutputStream {
  CORVIX_IDENTITY(StandardOutput, 0xD41F0B67, 0x4E92A8C3, 0x8B5D7021, 0xF36A94E0, BOutputStream)

 public:
  u32 getPosition() const noexcept override { return written_; }
  u32 write(const void* buffer, u32 count) override {
    const auto done = static_cast<u32>(std::fwrite(buffer, 1, count, stdout));
    written_ += done;
    return done;
  }

 private:
  u32 written_ = 0;
};

// Where fetched bytes go: into a file that appears under its name only when it is whole, or to the standard output.
class Receiver {
 public:
  explicit Receiver(std::wstring path) : path_(std::move(path)) {}
  ~Receiver() {
    if (!file_) return;
    file_->close();
    DeleteFileW(part_.c_str());
  }

  bool open() {
    if (path_.empty()) {
      stream_ = make<StandardOutput>();
      return _setmode(_fileno(stdout), _O_BINARY) != -1;
    }
    auto file = make<BFileOutputStream>();
    for (int number = 1; !file->isOpen(); ++number) {  // a file of the user's that has the name stays
      part_ = path_ + (number > 1 ? L"." + std::to_wstring(number) : std::wstring()) + L".part";
      const bool isNew = file->open(part_.c_str(), BFileOutputStream::Existing::Refuse);
      if (!isNew && (GetFileAttributesW(part_.c_str()) == INVALID_FILE_ATTRIBUTES || number == kMostTries))
        return false;
    }
    stream_ = file_ = std::move(file);
    return true;
  }

  BOutputStream& stream() { return *stream_; }

  bool finish() {
    if (!file_) return std::fflush(stdout) == 0;
    file_->close();
    if (!MoveFileExW(part_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING)) return false;
    file_.reset();
    return true;
  }

 private:
  static constexpr int kMostTries = 1000;

  std::wstring path_, part_;
  Ref<BOutputStream> stream_;
  Ref<BFileOutputStream> file_;
};

// Tells the shell's listeners how far a transfer is, in percent.
class Percentage final : public ICopyProgress {
 public:
  Percentage(IShell& shell, u32 total)
      : shell_(shell), id_(shell.newProgressId()), total_(total), end_(total == IBStream::kUnknownSize ? 0 : 100) {
    shell_.startProgress(id_, 0, end_, 0, kProgressCanStop);
  }
  ~Percentage() { shell_.stopProgress(id_, 0, end_, position_, kProgressCanStop); }

  // False when somebody asks for an early end.
  bool onCopied(u32 done, u32) override {
    const i32 position = end_ > 0 && total_ > 0 ? static_cast<i32>(u64{done} * 100 / total_) : 0;
    const auto now = std::chrono::steady_clock::now();
    if (position == position_ || (position < end_ && now - told_ < std::chrono::milliseconds(100))) return true;
    position_ = position;
    told_ = now;
    return shell_.changeProgress(id_, 0, end_, position, kProgressCanStop) != notify::kStop;
  }
  void finish(u32 done) {
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
    IPluginInterface& entry = *query<IPluginInterface>(entries->item(i));
    const std::string why = whyNot(entry);
    if (!why.empty()) return shown(entry.module()->path(), kSentence) + ": " + why;
  }
  return "there is no such thing, or it may not be opened";
}

int fetch(IShell& shell, const std::string& location, const std::string& file) {
  IPluginManager& manager = *shell.pluginManager();
  const std::wstring wideLocation = wide(location);
  std::optional<ShellDisplay> display;  // the standard output has one use at a time
  if (!file.empty()) display.emplace(shell);
  const auto opened = Ref<IBStream>::adopt(openLocation(manager, wideLocation.c_str()));
  const auto stream = opened.as<BInputStream>();
  if (!stream) return failed("cannot open " + location + ": " + whyNoStream(manager, wideLocation.c_str()));
  if (!stream->isOpen())
    return failed("cannot open " + location +
                  ": no answer from its server, or a reply that is empty or does not tell its length");

  Receiver receiver(wide(file));
  if (!receiver.open()) return failed("cannot write " + file + ": is its folder there, and may you write in it?");
  const u32 size = stream->size();
  Percentage progress(shell, size);
  const CopyResult copied = copy(*stream, receiver.stream(), &progress);
  if (copied.end == CopyEnd::Full) return failed("cannot write " + file + ": the disk is full?");
  if (copied.end == CopyEnd::Stopped) return failed("stopped by the user; nothing was kept");
  progress.finish(copied.bytes);
  if (size != IBStream::kUnknownSize && copied.bytes < size)
    return failed("only " + std::to_string(copied.bytes) + " of " + std::to_string(size) + " bytes of " + location +
                  " came");
  if (!receiver.finish()) return failed("cannot write " + file + ": is it open elsewhere?");
  return 0;
}

}  // namespace

const Command fetchCommand("fetch", "Copy what a location names, whatever its scheme",
                           {{"LOCATION", "file:, http: or any scheme that a plug-in adds; or a path"},
                            {"FILE", "Where to; the standard output if there is none", Argument::Optional}},
                           [](Host& host, const Texts& given) { return fetch(host.shell(), given[0], given[1]); });

}  // namespace host
