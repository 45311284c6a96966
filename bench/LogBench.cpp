// A line of the log, against the same bytes written bare and against spdlog; and a line that is not wanted.
#include "bench/Bench.h"
#include "core/baselib/system/Log.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <filesystem>
#include <stdexcept>

#include <windows.h>

namespace corvix::bench {
namespace {

namespace fs = std::filesystem;

constexpr char kFormat[] = "Load library %s as number %d\n";
constexpr char kPath[] = "C:\\Programs\\Corvix\\plugins\\greeter.dll";

fs::path libraryPath() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(GetModuleHandleW(L"corvix.dll"), path, MAX_PATH);
  return path;
}

// The log is opened when the library is loaded: a second copy of it is, with the switch on.
class SecondLibrary {
 public:
  using Writer = void (*)(const char*, ...);

  SecondLibrary() {
    fs::copy_file(libraryPath(), path_, fs::copy_options::overwrite_existing);
    const bool wasOn = isLogSwitchedOn();
    switchLog(true);
    module_ = LoadLibraryW(path_.c_str());
    switchLog(wasOn);
    FARPROC const found = module_ ? GetProcAddress(module_, "_ZN6corvix9sWriteLogEPKcz") : nullptr;
    if (!found) throw std::runtime_error("the copied library does not export sWriteLog");
    write = reinterpret_cast<Writer>(reinterpret_cast<void*>(found));
  }
  ~SecondLibrary() {
    FreeLibrary(module_);
    std::error_code ignored;
    fs::remove(path_, ignored);
    fs::remove(logPath().c_str(), ignored);
  }

  Writer write;

 private:
  fs::path path_ = libraryPath().replace_filename("corvix-second.dll");
  HMODULE module_;
};

void measureLog(Report& report) {
  const auto off = [](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) sWriteLog(kFormat, kPath, static_cast<int>(i));
  };
  if (isLogSwitchedOn()) throw std::runtime_error("switch the log of the benchmarks off first");
  report.compare("a line, switched off", "10 ns", 1, off, [](std::uint64_t n) {
    LARGE_INTEGER start, now, frequency;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    const auto ticks = static_cast<LONGLONG>(static_cast<double>(n) * 10e-9 * static_cast<double>(frequency.QuadPart));
    do QueryPerformanceCounter(&now);
    while (now.QuadPart - start.QuadPart < ticks);
  });

  const SecondLibrary library;
  const auto line = [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) library.write(kFormat, kPath, static_cast<int>(i));
  };
  const fs::path peerPath = libraryPath().replace_filename("peer.log");
  HANDLE const file = CreateFileW(peerPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  report.compare("a line, written", "WriteFile + FlushFileBuffers of the same bytes", 1.05, line, [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      char text[128];
      const int length = _snprintf(text, sizeof text, kFormat, kPath, static_cast<int>(i));
      DWORD written;
      WriteFile(file, text, static_cast<DWORD>(length), &written, nullptr);
      FlushFileBuffers(file);
    }
  });
  CloseHandle(file);

  const fs::path spdlogPath = libraryPath().replace_filename("spdlog.log");
  {
    // Its flush hands the line to the system; ours also waits for the disk.
    spdlog::logger logger("peer", std::make_shared<spdlog::sinks::basic_file_sink_mt>(spdlogPath.string(), true));
    logger.set_pattern("%v");
    logger.flush_on(spdlog::level::info);
    report.compare("a line, written and on disk", "spdlog basic file sink, flushed, not on disk", 0, line,
                   [&](std::uint64_t n) {
                     for (std::uint64_t i = 0; i < n; ++i) logger.info("Load library {} as number {}", kPath, i);
                   });
  }
  std::error_code ignored;
  fs::remove(peerPath, ignored);
  fs::remove(spdlogPath, ignored);
}

const Area area{"log", measureLog};

}  // namespace
}  // namespace corvix::bench
