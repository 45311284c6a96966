#include "examples/host/Commands.h"
#include "examples/host/Console.h"
#include "examples/host/ProgressLine.h"

#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/InputStream.h"
#include "shell/Locations.h"

#include <memory>
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

int fetch(IPluginManager& manager, const std::string& location, const std::string& file) {
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
  ProgressLine progress(location, size);
  const auto piece = std::make_unique<u8[]>(kPieceBytes);
  u64 done = 0;
  while (const u32 got = stream->read(piece.get(), kPieceBytes)) {
    done += got;
    if (!receiver.write(piece.get(), got)) return failed("cannot write " + file + ": the disk is full?");
    progress.update(done);
  }
  progress.finish(done);
  if (size != IBStream::kUnknownSize && done < size)
    return failed("only " + std::to_string(done) + " of " + std::to_string(size) + " bytes of " + location + " came");
  if (!receiver.finish()) return failed("cannot write " + file + ": is it open elsewhere?");
  return 0;
}

}  // namespace host
