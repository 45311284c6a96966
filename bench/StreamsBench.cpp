// Temporary storage and the page cache, against bare calls of the system.
#include "bench/Bench.h"
#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/streams/ChunkInputStream.h"
#include "core/baselib/streams/MemoryInputStream.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr u32 kSize = 64 << 20;
constexpr u32 kPage = 4096;

// A file of the same kind, driven by hand.
class BareFile {
 public:
  explicit BareFile(const std::vector<u8>& bytes) {
    wchar_t folder[MAX_PATH], path[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"cvx", 0, path);
    handle_ = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          nullptr, CREATE_ALWAYS,
                          FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS, nullptr);
    DWORD written;
    WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  }
  ~BareFile() { CloseHandle(handle_); }
  void seek(u32 position) { SetFilePointer(handle_, static_cast<LONG>(position), nullptr, FILE_BEGIN); }
  void read(void* buffer, u32 count) {
    DWORD got;
    ReadFile(handle_, buffer, count, &got, nullptr);
  }
  void write(u8 byte) {
    DWORD written;
    WriteFile(handle_, &byte, 1, &written, nullptr);
  }

 private:
  HANDLE handle_;
};

std::vector<u32> randomPages() {
  std::mt19937 random(1);
  std::vector<u32> pages(4096);
  for (u32& page : pages) page = random() % (kSize / kPage) * kPage;
  return pages;
}

template <class Stream>
Work readsAt(Stream& stream, const std::vector<u32>& positions) {
  return [&](std::uint64_t n) {
    u8 buffer[kPage];
    for (std::uint64_t i = 0; i < n; ++i) {
      stream.seek(positions[static_cast<std::size_t>(i) % positions.size()]);
      stream.read(buffer, kPage);
      keep(buffer);
    }
  };
}

template <class Stream>
Work bytesOf(Stream& stream) {
  return [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      int byte = stream.readByte();
      if (byte < 0) stream.seek(0);
      keep(byte);
    }
  };
}

void measureStreams(Report& report) {
  std::vector<u8> bytes(kSize);
  for (u32 i = 0; i < kSize; ++i) bytes[i] = static_cast<u8>(i * 2654435761u >> 24);
  const std::vector<u32> pages = randomPages();
  BTempStorage storage;
  storage.open();
  storage.write(bytes.data(), kSize);
  BareFile bare(bytes);
  report.compare("random 4 KiB of 64 MiB", "SetFilePointer + ReadFile", 1.05, readsAt(storage, pages),
                 readsAt(bare, pages));

  storage.seek(0);
  report.compare("readByte", "ReadFile of one byte", 0, bytesOf(storage), [&](std::uint64_t n) {
    bare.seek(0);
    for (std::uint64_t i = 0; i < n; ++i) {
      u8 byte;
      bare.read(&byte, 1);
      keep(byte);
    }
  });
  {
    std::FILE* const file = std::tmpfile();
    if (!file) throw std::runtime_error("no temporary file");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    report.compare("readByte", "getc", 0, bytesOf(storage), [&](std::uint64_t n) {
      for (std::uint64_t i = 0; i < n; ++i) {
        int byte = std::getc(file);
        if (byte < 0) std::rewind(file);
        keep(byte);
      }
    });
    std::fclose(file);
  }
  BTempStorage copy(storage);
  report.compare(
      "writeByte, then readByte of a copy", "WriteFile, then ReadFile of one byte", 0,
      [&](std::uint64_t n) {
        storage.seek(0);
        copy.seek(0);
        for (std::uint64_t i = 0; i < n; ++i) {
          storage.writeByte(static_cast<u8>(i));
          int byte = copy.readByte();
          keep(byte);
        }
      },
      [&](std::uint64_t n) {
        BareFile own({});
        for (std::uint64_t i = 0; i < n; ++i) {
          bare.seek(static_cast<u32>(i));
          bare.write(static_cast<u8>(i));
          bare.seek(static_cast<u32>(i));
          u8 byte;
          bare.read(&byte, 1);
          keep(byte);
        }
      });

  wchar_t folder[MAX_PATH], path[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  GetTempFileNameW(folder, L"cvx", 0, path);
  std::FILE* const peer = _wfopen(path, L"wb");
  const auto gathered = make<BTempStorage>();
  gathered->open();
  BBufferedOutputStream buffered(gathered);
  report.compare(
      "writeByte through BBufferedOutputStream", "putc", 0,
      [&](std::uint64_t n) {
        buffered.seek(0);
        for (std::uint64_t i = 0; i < n; ++i) buffered.writeByte(static_cast<u8>(i));
      },
      [&](std::uint64_t n) {
        std::rewind(peer);
        for (std::uint64_t i = 0; i < n; ++i) putc(static_cast<int>(i & 255), peer);
      });
  std::fclose(peer);
  DeleteFileW(path);

  const auto chunkOver = [&] {
    return make<BChunkInputStream>(make<BMemoryInputStream>(bytes.data(), kSize, BMemoryInputStream::Bytes::Borrow));
  };
  const auto chunk = chunkOver();
  std::vector<u8> target(kSize);
  chunk->read(target.data(), kSize);
  BTempStorage paged;  // written as the other was
  paged.open();
  for (u32 at = 0; at < kSize; at += kPage) paged.write(bytes.data() + at, kPage);
  report.compare("pages that are loaded, random 4 KiB", "its temporary storage", 1.1, readsAt(*chunk, pages),
                 readsAt(paged, pages));
  chunk->seek(0);
  paged.seek(0);
  report.compare("pages that are loaded, readByte", "its temporary storage", 0, bytesOf(*chunk), bytesOf(paged));
  constexpr u32 kMebibyte = 1 << 20;
  report.compare(
      "first reading, a MiB of memory", "memcpy", 0,
      [&](std::uint64_t n) {
        Ref<BChunkInputStream> fresh;
        for (std::uint64_t i = 0; i < n; ++i) {
          if (i % (kSize / kMebibyte) == 0) fresh = chunkOver();
          fresh->read(target.data(), kMebibyte);
        }
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          const std::size_t at = static_cast<std::size_t>(i) % (kSize / kMebibyte) * kMebibyte;
          std::memcpy(target.data(), bytes.data() + at, kMebibyte);
          keep(target[at]);
        }
      });
}

const Area area{"streams", measureStreams};

}  // namespace
}  // namespace corvix::bench
