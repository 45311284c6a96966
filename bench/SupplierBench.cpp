// Streams by location against the bare calls below them: WinINet over the loopback, zlib, and the system's taking
// apart of URLs.
#include "bench/Bench.h"
#include "bench/LoopbackServer.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/suppliers/UrlRecord.h"
#include "core/suppliers/decoding/PackDecodeStream.h"
#include "shell/Locations.h"
#include "shell/Shell.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>
#include <wininet.h>
#include <zlib.h>

namespace corvix::bench {
namespace {

constexpr u32 kBodyBytes = 64u << 20;

// What a program would write itself.
class Bare {
 public:
  explicit Bare(const std::wstring& location)
      : session_(InternetOpenW(L"Bench/1.00", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0)),
        request_(InternetOpenUrlW(session_, location.c_str(), nullptr, 0, 0, 0)) {}
  Bare(const Bare&) = delete;
  Bare& operator=(const Bare&) = delete;
  ~Bare() {
    InternetCloseHandle(request_);
    InternetCloseHandle(session_);
  }
  u32 read(void* buffer, u32 count) {
    DWORD got = 0;
    InternetReadFile(request_, buffer, count, &got);
    return got;
  }

 private:
  HINTERNET session_;
  HINTERNET request_;
};

class Ours {
 public:
  explicit Ours(const std::wstring& location)
      : stream_(Ref<IBStream>::adopt(openLocation(*IShell::getInstance()->pluginManager(), location.c_str()))
                    .as<BInputStream>()) {
    if (!stream_ || !stream_->isOpen()) throw std::runtime_error("the loopback server does not answer");
  }
  u32 read(void* buffer, u32 count) { return stream_->read(buffer, count); }
  int readByte() { return stream_->readByte(); }

 private:
  Ref<BInputStream> stream_;
};

// Reads of 64 MiB after 64 MiB, `again` when one has come to its end.
template <class Source>
class Endless {
 public:
  explicit Endless(std::wstring location) : location_(std::move(location)) { again(); }

  void read(u32 piece) {
    static char buffer[64 * 1024];
    u32 got = source_->read(buffer, piece);
    keep(got);
    if (got == 0) again();
  }
  void readByte() {
    int byte = source_->readByte();
    keep(byte);
    if (byte < 0) again();
  }

 private:
  void again() {
    source_.reset();  // one at a time
    source_ = std::make_unique<Source>(location_);
  }

  std::wstring location_;
  std::unique_ptr<Source> source_;
};

void measureReads(Report& report) {
  const LoopbackServer server(kBodyBytes);
  Endless<Ours> ours(server.location());
  Endless<Bare> bare(server.location());
  // A MiB at a time: some reads find their bytes here, others wait.
  for (const auto& [piece, wanted] : {std::pair(4u * 1024, 1.1), {64u * 1024, 0.0}}) {
    const u32 pieces = (1u << 20) / piece;
    report.compare(
        "loopback, a read of " + std::to_string(piece / 1024) + " KiB of 64 MiB", "bare InternetReadFile", wanted,
        [&, piece = piece](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n * pieces; ++i) ours.read(piece);
        },
        [&, piece = piece](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n * pieces; ++i) bare.read(piece);
        },
        pieces, pieces);
  }
  report.compare(
      "loopback, one byte of 64 MiB", "bare InternetReadFile of one byte", 0.05,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) ours.readByte();
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) bare.read(1);
      });
}

std::vector<Bytef> packedText(u32 size) {
  std::string text;
  u32 state = 1;
  while (text.size() < size) {
    state = state * 1664525 + 1013904223;
    text += std::to_string(state >> 20) + (state >> 30 ? " l\n" : " m\n");  // as drawing operators are
  }
  uLongf packedSize = compressBound(static_cast<uLong>(text.size()));
  std::vector<Bytef> packed(packedSize);
  compress(packed.data(), &packedSize, reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()));
  packed.resize(packedSize);
  return packed;
}

void measureFlate(Report& report) {
  std::vector<Bytef> packed = packedText(8u << 20);
  static Bytef buffer[64 * 1024];
  PackParams parameters;
  parameters.method = PackMethod::Flate;
  report.compare(
      "unpack 8 MiB of deflated text, 64 KiB a read", "bare zlib", 1.05,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          const auto stream = Ref<PackDecodeStream>::adopt(
              PackDecodeStream::create(make<BMemoryInputStream>(packed.data(), static_cast<u32>(packed.size()),
                                                                BMemoryInputStream::Bytes::Borrow),
                                       parameters));
          while (u32 got = stream->read(buffer, sizeof buffer)) keep(got);
        }
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          z_stream state{};
          inflateInit(&state);
          state.next_in = packed.data();
          state.avail_in = static_cast<uInt>(packed.size());
          int result = Z_OK;
          while (result == Z_OK) {
            state.next_out = buffer;
            state.avail_out = sizeof buffer;
            result = inflate(&state, Z_NO_FLUSH);
          }
          inflateEnd(&state);
        }
      });
}

void measureUrls(Report& report) {
  const std::wstring text = L"http://ann@www.example.org:8080/books/2026/index.tar.gz;v=1?name=value&page=12#top";
  UrlRecord url;
  report.compare(
      "take a location of 82 characters apart", "InternetCrackUrlW, pointers only", 0.5,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          url.parse(text);
          keep(url);
        }
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          URL_COMPONENTSW parts{};
          parts.dwStructSize = sizeof parts;
          parts.dwSchemeLength = parts.dwHostNameLength = parts.dwUserNameLength = parts.dwPasswordLength =
              parts.dwUrlPathLength = parts.dwExtraInfoLength = 1;
          InternetCrackUrlW(text.c_str(), static_cast<DWORD>(text.size()), 0, &parts);
          keep(parts);
        }
      });
  const UrlRecord base{std::wstring_view(text)};
  report.compare(
      "resolve a relative location", "InternetCombineUrlW", 0,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          UrlRecord resolved = base.resolve(L"../2025/./other.pdf?x");
          keep(resolved);
        }
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          wchar_t combined[256];
          DWORD length = 256;
          InternetCombineUrlW(text.c_str(), L"../2025/./other.pdf?x", combined, &length, ICU_BROWSER_MODE);
          keep(combined);
        }
      });
}

const Area flateArea{"flate", measureFlate};
const Area internetArea{"internet", measureReads};
const Area urlArea{"urls", measureUrls};

}  // namespace
}  // namespace corvix::bench
