// Copying, numbers, and what a buffer does before a receiver that has no more room.
#include "core/baselib/streams/StreamCopy.h"

#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/Numbers.h"
#include "tests/support/StreamTesting.h"

#include <gtest/gtest.h>

namespace corvix {
namespace {

using testing_support::Forward;
using testing_support::pattern;

constexpr u32 kSize = 150000;
constexpr u32 kAll = IBStream::kUnknownSize;

// Takes at most `piece` bytes a write.
class Reluctant : public BOutputStream {
  CORVIX_IDENTITY(Reluctant, 0x30000004, 2, 3, 4, BOutputStream)
 public:
  explicit Reluctant(u32 most, u32 piece = kAll) : room(most), piece_(piece) {}
  u32 getPosition() const noexcept override { return static_cast<u32>(bytes.size()); }
  u32 write(const void* buffer, u32 count) override {
    if (throws && !bytes.empty()) throw 5;
    const u32 taken = std::min({count, piece_, room});
    bytes.append(static_cast<const char*>(buffer), taken);
    room -= taken;
    return taken;
  }
  std::string bytes;
  u32 room;
  bool throws = false;  // from the second write on

 private:
  u32 piece_;
};

struct Watch : ICopyProgress {
  u32 stopsAt = kAll, done = 0, total = 0;
  bool onCopied(u32 now, u32 all) override {
    EXPECT_GT(now, done);
    done = now;
    total = all;
    return now < stopsAt;
  }
};

TEST(StreamCopy, CopiesTellsAndStops) {
  const struct {
    const char* why;
    u32 from, most, room, piece, stopsAt;
    CopyEnd end;
    u32 bytes, total;
  } rows[] = {
      {"all", 0, kAll, kAll, kAll, kAll, CopyEnd::Done, kSize, kSize},
      {"from the position on", 1000, kAll, kAll, kAll, kAll, CopyEnd::Done, kSize - 1000, kSize - 1000},
      {"a part", 7, 70000, kAll, kAll, kAll, CopyEnd::Done, 70000, 70000},
      {"more than there is", 149000, 5000, kAll, kAll, kAll, CopyEnd::Done, 1000, 1000},
      {"short writes", 0, kAll, kAll, 333, kAll, CopyEnd::Done, kSize, kSize},
      {"no room", 0, kAll, 100000, kAll, kAll, CopyEnd::Full, 100000, kSize},
      {"stopped", 0, kAll, kAll, kAll, 65536, CopyEnd::Stopped, 65536, kSize},
      {"nothing", 0, 0, kAll, kAll, kAll, CopyEnd::Done, 0, 0},
  };
  const std::string bytes = pattern(kSize);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    BMemoryInputStream from(bytes.data(), kSize, BMemoryInputStream::Bytes::Borrow);
    from.seek(row.from);
    Reluctant to(row.room, row.piece);
    Watch watch;
    watch.stopsAt = row.stopsAt;
    const CopyResult result = copy(from, to, &watch, row.most);
    EXPECT_EQ(result.end, row.end);
    EXPECT_EQ(result.bytes, row.bytes);
    EXPECT_EQ(watch.total, row.total);
    EXPECT_TRUE(to.bytes == bytes.substr(row.from, row.bytes));
  }
}

TEST(StreamCopy, PutsNumbersInEitherOrder) {
  const auto written = make<BMemoryOutputStream>();
  EXPECT_TRUE(writeU16(*written, 0x8102, ByteOrder::Little) && writeU16(*written, 0x8102, ByteOrder::Big));
  EXPECT_TRUE(writeU32(*written, 0x81020304, ByteOrder::Little) && writeU32(*written, 0x81020304, ByteOrder::Big));
  const std::string bytes(reinterpret_cast<const char*>(written->data()), written->size());
  EXPECT_EQ(bytes, "\x02\x81\x81\x02\x04\x03\x02\x81\x81\x02\x03\x04");
  Forward read(bytes + "abc", 1);
  for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
    u16 number = 0;
    EXPECT_TRUE(readU16(read, number, order));
    EXPECT_EQ(number, 0x8102);
  }
  for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
    u32 number = 0;
    EXPECT_TRUE(readU32(read, number, order));
    EXPECT_EQ(number, 0x81020304);
  }
  u32 cut = 7;
  EXPECT_FALSE(readU32(read, cut, ByteOrder::Big));
  EXPECT_EQ(cut, 7u) << "as it was";
  Reluctant full(3);
  EXPECT_FALSE(writeU32(full, 1, ByteOrder::Big));
}

TEST(BBufferedOutputStream, KeepsWhatItsReceiverDidNotTake) {
  const auto receiver = make<Reluctant>(10u, 4u);
  {
    BBufferedOutputStream buffered(receiver, 8);
    for (char c = 'a'; c <= 'h'; ++c) EXPECT_EQ(buffered.writeByte(static_cast<u8>(c)), 1u);
    EXPECT_EQ(receiver->bytes, "") << "gathered";
    EXPECT_EQ(buffered.getPosition(), 8u);
    EXPECT_EQ(buffered.write("ijklmnop", 8), 2u) << "what the receiver has room for";
    EXPECT_EQ(buffered.write("k", 1), 1u);
    EXPECT_FALSE(buffered.flush());
    EXPECT_EQ(buffered.write("lmnopqrstu", 10), 7u) << "until the buffer is full too";
    EXPECT_EQ(buffered.writeByte('!'), 0u);
    EXPECT_EQ(buffered.getPosition(), 18u);
    EXPECT_FALSE(buffered.seek(0) || buffered.setSize(0)) << "the receiver cannot";
    receiver->room = 100;
  }
  EXPECT_EQ(receiver->bytes, "abcdefghijklmnopqr") << "nothing is lost, nothing comes twice";
}

TEST(BBufferedOutputStream, OutlivesAReceiverThatThrows) {
  const auto receiver = make<Reluctant>(10u, 4u);
  receiver->throws = true;
  {
    BBufferedOutputStream buffered(receiver, 8);
    EXPECT_EQ(buffered.write("abcdefgh", 8), 8u);
    EXPECT_THROW(buffered.flush(), int);
    EXPECT_EQ(buffered.getPosition(), 8u) << "nothing is lost, nothing comes twice";
  }
  EXPECT_EQ(receiver->bytes, "abcd");
}

}  // namespace
}  // namespace corvix
