// Every decoder, with any parameters: how much is read at a time changes nothing.
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/suppliers/decoding/PackDecodeStream.h"
#include "tests/fuzz/Fuzz.h"

namespace corvix::fuzz {

namespace {

constexpr std::size_t kMostRead = 64 * 1024;  // bombs go on

struct Unpacked {
  std::string bytes;
  PackFault fault;
};

Unpacked unpack(Bytes packed, const PackParams& parameters, u32 piece) {
  auto source =
      make<BMemoryInputStream>(packed.data(), static_cast<u32>(packed.size()), BMemoryInputStream::Bytes::Borrow);
  const auto stream = Ref<PackDecodeStream>::adopt(PackDecodeStream::create(std::move(source), parameters));
  Unpacked result;
  std::string room(piece, 0);
  while (result.bytes.size() < kMostRead) {
    const u32 got = stream->read(room.data(), piece);
    require(got <= piece, "no more is read than was asked for");
    if (got == 0) {
      require(stream->atEnd(), "a read of nothing is the end");
      break;
    }
    result.bytes.append(room, 0, got);
  }
  result.fault = stream->fault();
  return result;
}

}  // namespace

void decoders(Bytes bytes) {
  const auto parameters = make<PackParams>();
  parameters->method = static_cast<PackMethod>(take(bytes) % 6);
  parameters->predictor = static_cast<i32>(take(bytes) % 18);
  parameters->colors = static_cast<i32>(take(bytes) % 36);
  parameters->bitsPerComponent = static_cast<i32>(take(bytes) % 20);
  parameters->columns = static_cast<i32>(take(bytes) << take(bytes) % 20);
  const u32 piece = 1 + take(bytes);
  parameters->earlyChange = piece % 2 == 0;

  const Unpacked whole = unpack(bytes, *parameters, kMostRead);
  const Unpacked inPieces = unpack(bytes, *parameters, piece);
  const std::size_t common = std::min(whole.bytes.size(), inPieces.bytes.size());
  require(whole.bytes.compare(0, common, inPieces.bytes, 0, common) == 0, "pieces hold the same bytes");
  if (whole.bytes.size() >= kMostRead || inPieces.bytes.size() >= kMostRead) return;
  require(whole.bytes.size() == inPieces.bytes.size(), "pieces are as long together");
  require(whole.fault == inPieces.fault, "pieces end for the same reason");
}

}  // namespace corvix::fuzz
