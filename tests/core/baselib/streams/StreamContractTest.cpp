// What every stream promises, tried on every one: random operations against a plain model.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/streams/ChunkInputStream.h"
#include "core/baselib/streams/FileInputStream.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/WindowInputStream.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/StreamTesting.h"

namespace corvix {
namespace {

using testing_support::Forward;
using testing_support::pattern;

constexpr u32 kStart = 1234;  // of the range in its file
constexpr u32 kSize = 20001;
constexpr u32 kAll = BStream::kUnknownSize;

class StreamContract : public testing::Test {
 protected:
  std::filesystem::path file() const { return folder_.file(L"bytes"); }

  Ref<BInputStream> openFile(u32 start, u32 length) {
    std::ofstream(file(), std::ios::binary)
        << pattern(kStart) << bytes_ << pattern(start == 0 || length == kSize ? kStart : 0);
    auto stream = make<BFileInputStream>();
    EXPECT_TRUE(stream->open(file().c_str(), start, length));
    return stream;
  }
  Ref<BTempStorage> temporary() {
    auto storage = make<BTempStorage>();
    EXPECT_TRUE(storage->open());
    EXPECT_EQ(storage->write(bytes_.data(), kSize), kSize);
    EXPECT_TRUE(storage->seek(0));
    return storage;
  }

  testing_support::OwnFolder folder_;
  std::string bytes_ = pattern(kSize);
};

struct ReaderRow {
  const char* name;
  std::function<Ref<BInputStream>()> open;
  bool random;      // IBRAStream
  bool stopsAtEnd;  // moving past the end goes to the end
};

// The same as the stream under test, of which nothing can go wrong.
struct Model {
  const std::string& bytes;
  u32 position = 0;
  u32 left() const { return position < bytes.size() ? static_cast<u32>(bytes.size()) - position : 0; }
  std::string take(u32 count) {
    std::string part = position < bytes.size() ? bytes.substr(position, count) : "";
    position += static_cast<u32>(part.size());
    return part;
  }
};

void compare(const ReaderRow& row, BInputStream& stream, const std::string& bytes) {
  std::mt19937 random(7);
  Model model{bytes};
  IBRAStream* const seekable = query<IBRAStream>(&stream);
  ASSERT_EQ(seekable != nullptr, row.random);
  bool justRead = false;
  const auto moved = [&](u32 target) { return row.stopsAtEnd ? std::min(target, kSize) : target; };
  for (int step = 0; step < 4000; ++step) {
    const u32 count = random() % 8 == 0 ? random() % 9000 : random() % 40;
    std::string buffer(count + 1, '#');
    switch (random() % 6) {
      case 0: {
        const u32 got = stream.read(buffer.data(), count);
        ASSERT_EQ(buffer[got], '#') << "wrote past what it read";
        ASSERT_TRUE(!row.random || got == std::min(count, model.left()));
        ASSERT_EQ(got == 0, count == 0 || model.left() == 0);
        ASSERT_TRUE(buffer.substr(0, got) == model.take(got));
        justRead = got > 0;
        break;
      }
      case 1: {
        const int byte = stream.readByte();
        const std::string expected = model.take(1);
        ASSERT_EQ(byte, expected.empty() ? -1 : static_cast<unsigned char>(expected[0]));
        justRead = byte >= 0;
        break;
      }
      case 2:
        if (!row.random && !justRead) break;
        if (model.position > 0) --model.position;
        ASSERT_EQ(stream.unreadByte(), model.position);
        justRead = false;
        break;
      case 3: {
        const u32 from = model.position;
        model.position = row.random ? moved(from + count) : from + std::min(count, model.left());
        ASSERT_EQ(stream.skip(count), model.position - from);
        justRead = justRead && count == 0;
        break;
      }
      case 4:
        if (!seekable) break;
        model.position = moved(random() % (kSize + 100));
        ASSERT_TRUE(seekable->seek(model.position));
        break;
      default:
        ASSERT_EQ(stream.atEnd(), model.left() == 0);
        ASSERT_EQ(stream.available(), kSize);
    }
    ASSERT_EQ(stream.getPosition(), model.position) << "step " << step;
    if (!seekable && model.left() == 0) return;
  }
}

TEST_F(StreamContract, EveryReaderDoesAsTheModel) {
  const auto chunked = [](Ref<BInputStream> source) { return make<BChunkInputStream>(std::move(source)); };
  const auto memory = [&](BMemoryInputStream::Bytes how) {
    return make<BMemoryInputStream>(bytes_.data(), kSize, how);
  };
  // Whose original moved before and closed after.
  const auto copyOf = [](const Ref<BInputStream>& stream) {
    stream->skip(5000);
    const auto copy = Ref<BRAInputStream>::adopt(query<BRAInputStream>(stream.get())->clone());
    stream->close();
    return copy;
  };
  const auto forward = [&](u32 piece) { return make<Forward>(bytes_, piece); };
  const auto windowOn = [](Ref<BInputStream> source, u32 offset, u32 length = BStream::kUnknownSize) {
    return make<BWindowInputStream>(std::move(source), offset, length);
  };
  const ReaderRow rows[] = {
      {"memory", [&] { return memory(BMemoryInputStream::Bytes::Borrow); }, true, false},
      {"copied memory", [&] { return memory(BMemoryInputStream::Bytes::Copy); }, true, false},
      {"to the file's end", [&] { return openFile(kStart, BFileInputStream::kUnknownSize); }, true, false},
      {"a range of a file", [&] { return openFile(kStart, kSize); }, true, true},
      {"temporary storage", [&] { return temporary(); }, true, false},
      {"a copy of memory", [&] { return copyOf(memory(BMemoryInputStream::Bytes::Copy)); }, true, false},
      {"a copy of a range", [&] { return copyOf(openFile(kStart, kSize)); }, true, true},
      {"a copy of temporary storage", [&] { return copyOf(temporary()); }, true, false},
      {"forward", [&] { return forward(0xFFFFFFFF); }, false, false},
      {"forward, one by one", [&] { return forward(1); }, false, false},
      {"forward in odd pieces", [&] { return forward(777); }, false, false},
      {"pages of memory", [&] { return chunked(memory(BMemoryInputStream::Bytes::Borrow)); }, true, true},
      {"pages of a forward stream", [&] { return chunked(forward(777)); }, true, true},
      {"a window", [&] { return windowOn(memory(BMemoryInputStream::Bytes::Borrow), 0); }, true, false},
      {"a window on the middle", [&] { return windowOn(openFile(0, kAll), kStart, kSize); }, true, true},
      {"a window in a window", [&] { return windowOn(windowOn(openFile(0, kAll), 1000, kSize + 500), 234, kSize); },
       true, true},
      {"a window on pages", [&] { return windowOn(chunked(forward(777)), 0, kSize); }, true, true},
      {"a copy of a window", [&] { return copyOf(windowOn(openFile(0, kAll), kStart, kSize)); }, true, true},
  };
  for (const ReaderRow& row : rows) {
    SCOPED_TRACE(row.name);
    const Ref<BInputStream> stream = row.open();
    compare(row, *stream, bytes_);
    if (!row.random) continue;
    stream->close();
    stream->close();
    u8 byte = 7;
    EXPECT_FALSE(stream->isOpen());
    EXPECT_EQ(stream->read(&byte, 1), 0u);
    EXPECT_EQ(stream->readByte(), -1);
    EXPECT_EQ(stream->skip(1), 0u);
    EXPECT_EQ(stream->size(), 0u);
    EXPECT_TRUE(stream->atEnd());
    EXPECT_FALSE(query<IBRAStream>(stream.get())->seek(0));
  }
}

// As a program writes them: three operations, and nothing known of the end.
class Endless : public BInputStream {
  CORVIX_IDENTITY(Endless, 0x30000003, 2, 3, 4, BInputStream)
 public:
  explicit Endless(std::string bytes) : bytes_(std::move(bytes)) {}
  u32 getPosition() const noexcept override { return next_; }
  u32 unreadByte() override { return next_ > 0 ? --next_ : 0; }
  u32 read(void* buffer, u32 count) override {
    const u32 got = static_cast<u32>(bytes_.copy(static_cast<char*>(buffer), count, next_));
    next_ += got;
    return got;
  }

 private:
  std::string bytes_;
  u32 next_ = 0;
};

TEST(BInputStream, TellsTheEndThatNobodyKnows) {
  for (const u32 size : {0u, 1u, 4096u, 5000u}) {
    const auto own = make<Endless>(pattern(size));
    const auto below = make<Endless>(pattern(size));
    for (const Ref<BInputStream>& stream :
         {Ref<BInputStream>(own), Ref<BInputStream>(make<BChunkInputStream>(below))}) {
      std::string read;
      while (!stream->atEnd() && read.size() <= size) read += static_cast<char>(stream->readByte());
      EXPECT_TRUE(read == pattern(size)) << size;
      EXPECT_EQ(stream->getPosition(), size);
    }
  }
}

class Unending : public BForwardInputStream {
  CORVIX_IDENTITY(Unending, 0x30000005, 2, 3, 4, BForwardInputStream)
  u32 fetch(void*, u32 count) override { return count; }
};

TEST(BForwardInputStream, EndsWherePositionsDo) {
  Unending stream;
  std::string piece(64 << 20, 0);
  while (stream.read(piece.data(), static_cast<u32>(piece.size())) > 0) {
  }
  EXPECT_EQ(stream.getPosition(), 0xFFFFFFFFu);
  EXPECT_EQ(stream.readByte(), -1);
  EXPECT_TRUE(stream.atEnd());
}

TEST(BTempStorage, GoesNowhereWithALimitBehindIt) {
  BTempStorage storage;
  ASSERT_TRUE(storage.open());
  storage.write("0123456789", 10);
  storage.setLimit(4);
  EXPECT_EQ(storage.skip(3), 0u);
  EXPECT_EQ(storage.getPosition(), 10u) << "not back";
  EXPECT_EQ(storage.read(nullptr, 1), 0u);
  EXPECT_EQ(storage.write("x", 1), 0u);
  EXPECT_TRUE(storage.atEnd());
  EXPECT_EQ(storage.unreadByte(), 9u);
  EXPECT_EQ(storage.getPosition(), 9u) << "as it was told";
  EXPECT_FALSE(storage.setSize(5));
  storage.setLimit(BTempStorage::kNoLimit);
  EXPECT_EQ(storage.readByte(), '9');
}

TEST_F(StreamContract, FilesThatAreOpenForDeletionCanBeRead) {
  BTempStorage storage;
  ASSERT_TRUE(storage.open());
  storage.write("still here", 10);
  BFileInputStream reader;
  ASSERT_TRUE(reader.open(storage.fileName().c_str()));
  EXPECT_EQ(reader.size(), 10u);
  const Ref<BInputStream> other = openFile(0, kAll);
  EXPECT_TRUE(MoveFileW(file().c_str(), folder_.file(L"renamed").c_str()));
  EXPECT_TRUE(DeleteFileW(folder_.file(L"renamed").c_str()));
  EXPECT_EQ(other->readByte(), static_cast<u8>(pattern(1)[0]));
}

TEST(BWindowInputStream, TakesWhatThereIs) {
  const std::string bytes = pattern(100);
  const auto memory = make<BMemoryInputStream>(bytes.data(), 100u, BMemoryInputStream::Bytes::Borrow);
  const struct {
    u32 offset, length, size;
  } rows[] = {{0, 100, 100}, {90, 20, 10}, {100, 5, 0}, {200, 5, 0}, {0xFFFFFFFF, kAll, 0}, {40, kAll, 60}, {40, 0, 0}};
  for (const auto& row : rows) {
    BWindowInputStream window(memory, row.offset, row.length);
    EXPECT_EQ(window.size(), row.size) << row.offset;
    std::string read(200, 0);
    EXPECT_EQ(window.read(read.data(), 200), row.size) << row.offset;
    EXPECT_TRUE(read.compare(0, row.size, bytes, std::min(row.offset, 100u), row.size) == 0) << row.offset;
    EXPECT_EQ(window.readByte(), -1);
    EXPECT_TRUE(window.atEnd());
  }
  BWindowInputStream first(memory, 10, 5), second(memory, 50, 5);
  for (u32 i = 0; i < 5; ++i) {
    EXPECT_EQ(first.readByte(), static_cast<u8>(bytes[10 + i])) << "one source, two windows";
    EXPECT_EQ(second.readByte(), static_cast<u8>(bytes[50 + i]));
  }
  first.close();
  EXPECT_TRUE(memory->isOpen());
  EXPECT_FALSE(BWindowInputStream(make<Forward>(bytes, 7u), 0).isOpen()) << "cannot be sought";
  EXPECT_FALSE(BWindowInputStream(nullptr, 0).isOpen());
}

// Writes forward, over what stands, and behind a gap.
void writeAll(BOutputStream& stream) {
  IBRAStream& random = *query<IBRAStream>(&stream);
  EXPECT_EQ(stream.write("0123456789", 10), 10u);
  EXPECT_TRUE(random.seek(3));
  EXPECT_EQ(stream.write("abc", 3), 3u);
  EXPECT_EQ(stream.writeByte('!'), 1u);
  EXPECT_EQ(stream.write("", 0), 0u);
  EXPECT_TRUE(random.seek(3000));
  EXPECT_EQ(stream.size(), 10u) << "moving writes nothing";
  EXPECT_EQ(stream.write(pattern(2000).data(), 2000), 2000u);
  EXPECT_EQ(stream.getPosition(), 5000u);
  EXPECT_EQ(stream.size(), 5000u);
  IBResizableStream& resizable = *query<IBResizableStream>(&stream);
  EXPECT_TRUE(resizable.setSize(10));
  EXPECT_EQ(stream.size(), 10u);
  EXPECT_TRUE(resizable.setSize(3000)) << "longer again, by zeros";
  EXPECT_EQ(stream.getPosition(), 5000u) << "stays";
  EXPECT_TRUE(random.seek(3000));
  EXPECT_EQ(stream.write(pattern(2000).data(), 2000), 2000u);
}

TEST_F(StreamContract, EveryWriterWritesTheSame) {
  const std::string expected = "012abc!789" + std::string(2990, '\0') + pattern(2000);
  BMemoryOutputStream memory;
  writeAll(memory);
  EXPECT_TRUE(std::string(reinterpret_cast<const char*>(memory.data()), memory.size()) == expected);

  for (const u32 buffer : {0u, 1u, 7u, 100000u}) {
    const auto receiver = make<BMemoryOutputStream>();
    BBufferedOutputStream buffered(receiver, buffer);
    writeAll(buffered);
    buffered.close();
    EXPECT_EQ(buffered.writeByte('a') + buffered.write("a", 1), 0u) << "closed";
    EXPECT_TRUE(std::string(reinterpret_cast<const char*>(receiver->data()), receiver->size()) == expected) << buffer;
  }

  BTempStorage storage;
  EXPECT_EQ(storage.write("a", 1), 0u) << "closed";
  EXPECT_FALSE(storage.setSize(1)) << "closed";
  ASSERT_TRUE(storage.open());
  writeAll(storage);
  std::string read(5000, 0);
  storage.seek(0);
  EXPECT_EQ(storage.read(read.data(), 5000), 5000u);
  EXPECT_TRUE(read == expected);

  BFileOutputStream output;
  EXPECT_FALSE(output.open(file().c_str(), BFileOutputStream::Existing::Modify)) << "there is none";
  ASSERT_TRUE(output.open(file().c_str()));
  writeAll(output);
  ASSERT_TRUE(output.open(file().c_str(), BFileOutputStream::Existing::Append));
  EXPECT_EQ(output.getPosition(), 5000u);
  EXPECT_EQ(output.write("+", 1), 1u);
  ASSERT_TRUE(output.open(file().c_str(), BFileOutputStream::Existing::Modify));
  EXPECT_EQ(output.write("-", 1), 1u);
  output.close();
  EXPECT_EQ(output.write("a", 1), 0u) << "closed";
  EXPECT_TRUE(testing_support::bytesOf(file()) == "-" + expected.substr(1) + "+");
  EXPECT_FALSE(output.open(file().c_str(), BFileOutputStream::Existing::Refuse)) << "there is one";
  ASSERT_TRUE(output.open(file().c_str()));
  EXPECT_EQ(output.size(), 0u) << "replaced";
  EXPECT_FALSE(output.open(folder_.file(L"absent\\file").c_str()));
  EXPECT_FALSE(output.isOpen());
}

TEST(BMemoryOutputStream, StopsAtItsLimitAndHandsItsBlockOver) {
  BMemoryOutputStream stream(10);
  EXPECT_EQ(stream.write("12345678", 8), 8u);
  EXPECT_EQ(stream.write("abcd", 4), 2u);
  EXPECT_EQ(stream.write("abcd", 4), 0u);
  EXPECT_EQ(stream.size(), 10u);
  u8* const block = stream.detach();
  EXPECT_EQ(std::string(reinterpret_cast<char*>(block), 10), "12345678ab");
  EXPECT_EQ(stream.size(), 0u);
  auto reader = make<BMemoryInputStream>(block, 10u, BMemoryInputStream::Bytes::Adopt);
  EXPECT_EQ(reader->readByte(), '1');
}

}  // namespace
}  // namespace corvix
