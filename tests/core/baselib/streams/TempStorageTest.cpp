#include "core/baselib/streams/TempStorage.h"

#include <gtest/gtest.h>

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/FileInputStream.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/KernelFile_p.h"
#include "tests/support/CloseBehind.h"
#include "tests/support/ImportSlot.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/StreamTesting.h"

extern "C" decltype(&CreateFileW) createFileSlot CORVIX_IMPORTED(CreateFileW, "@28");

namespace corvix {
namespace {

namespace fs = std::filesystem;

// The system's temporary folder is the test's own.
class TempStorageTest : public testing::Test {
 protected:
  TempStorageTest() { use(folder_.path()); }
  ~TempStorageTest() override {
    for (const wchar_t* name : {L"TMP", L"TEMP"}) SetEnvironmentVariableW(name, former_.c_str());
  }
  static void use(const fs::path& folder) {
    for (const wchar_t* name : {L"TMP", L"TEMP"}) SetEnvironmentVariableW(name, folder.c_str());
  }
  std::ptrdiff_t files() const {
    return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
  }

  std::wstring former_ = fs::temp_directory_path().wstring();
  testing_support::OwnFolder folder_;
};

TEST_F(TempStorageTest, FileGoesWithTheLastStreamInWhateverOrder) {
  for (const bool originalFirst : {true, false}) {
    auto original = make<BTempStorage>();
    ASSERT_TRUE(original->open());
    const fs::path path(original->fileName().c_str());
    EXPECT_EQ(path.parent_path(), folder_.path());
    EXPECT_EQ(path.filename().wstring().substr(0, 3), L"cvx");
    original->write("abc", 3);
    auto copy = Ref<BTempStorage>::adopt(original->clone());
    auto third = Ref<BTempStorage>::adopt(copy->clone());
    EXPECT_EQ(files(), 1);
    (originalFirst ? original : copy).reset();
    auto late = Ref<BTempStorage>::adopt(third->clone());
    EXPECT_TRUE(late->isOpen()) << "still to be copied after one was closed";
    EXPECT_EQ(late->readByte(), 'a');
    EXPECT_EQ(third->size(), 3u);
    original.reset();
    copy.reset();
    late.reset();
    EXPECT_EQ(third->readByte(), 'a');
    third->close();
    EXPECT_EQ(files(), 0);
  }
}

// Systems refuse to open a file that is marked for deletion, as it is when a former copy was closed. Here it is
// refused because it has another name.
TEST_F(TempStorageTest, CopiesCanBeHadWhenTheFileIsNotOpened) {
  BTempStorage original;
  ASSERT_TRUE(original.open());
  const std::string bytes = testing_support::pattern(20000);
  original.write(bytes.data(), 20000);
  ASSERT_TRUE(MoveFileW(original.fileName().c_str(), folder_.file(L"elsewhere").c_str()));
  const auto copy = Ref<BTempStorage>::adopt(original.clone());
  const auto third = Ref<BTempStorage>::adopt(copy->clone());
  original.seek(1000);
  for (u32 at = 0; at < 5000; at += 1000) {
    for (BTempStorage* stream : {&original, copy.get(), third.get()}) {
      const u32 from = stream->getPosition();
      std::string read(1000, 0);
      ASSERT_EQ(stream->read(read.data(), 1000), 1000u);
      ASSERT_EQ(read.compare(0, 1000, bytes, from, 1000), 0) << "each from its own position";
    }
  }
  copy->seek(7);
  EXPECT_EQ(copy->writeByte('+'), 1u);
  third->seek(7);
  EXPECT_EQ(third->readByte(), '+');
}

struct LimitRow {
  u32 limit;
  u32 position;
  u32 count;
  u32 moved;  // by reading, writing or skipping so much
};

TEST_F(TempStorageTest, NothingPassesTheLimit) {
  constexpr u32 kNone = BTempStorage::kNoLimit;
  const LimitRow rows[] = {
      {10, 8, 5, 2}, {10, 10, 5, 0}, {10, 12, 5, 0}, {10, 0, 25, 10}, {0, 0, 1, 0}, {kNone, 8, 5, 5},
  };
  for (const LimitRow& row : rows) {
    SCOPED_TRACE(row.limit);
    SCOPED_TRACE(row.position);
    BTempStorage storage;
    ASSERT_TRUE(storage.open());
    const std::string bytes = testing_support::pattern(30);
    storage.write(bytes.data(), 30);
    std::string buffer(40, 0);
    const auto at = [&] {
      storage.setLimit(kNone);
      storage.seek(row.position);
      storage.setLimit(row.limit);
    };
    at();
    EXPECT_EQ(storage.read(buffer.data(), row.count), row.moved);
    at();
    EXPECT_EQ(storage.write(bytes.data(), row.count), row.moved);
    at();
    EXPECT_EQ(storage.skip(row.count), row.moved);
    at();
    EXPECT_EQ(storage.readByte() >= 0, row.moved > 0);
    EXPECT_EQ(storage.atEnd(), row.position >= row.limit);
    EXPECT_EQ(storage.available(), std::min(row.limit, 30u));
    EXPECT_TRUE(storage.seek(25));
    EXPECT_EQ(storage.getPosition(), std::min(row.limit, 25u));
  }
}

// The page that is read ahead must not hide anything.
TEST_F(TempStorageTest, CopiesSeeEachOthersWritesAtOnce) {
  BTempStorage original;
  ASSERT_TRUE(original.open());
  BTempStorage copy(original);
  for (u32 i = 0; i < 10000; ++i) {
    ASSERT_TRUE(copy.atEnd());
    ASSERT_EQ(copy.readByte(), -1);
    ASSERT_EQ(original.writeByte(static_cast<u8>(i)), 1u);
    ASSERT_EQ(copy.readByte(), static_cast<u8>(i));
  }
  const auto rewrite = [](BTempStorage& writer, BTempStorage& reader, u8 byte) {
    reader.seek(4000);
    reader.readByte();
    writer.seek(4001);
    writer.writeByte(byte);
    return reader.readByte() == byte;
  };
  EXPECT_TRUE(rewrite(original, copy, 201));
  EXPECT_TRUE(rewrite(copy, original, 202));
  BTempStorage third(copy);
  EXPECT_TRUE(rewrite(third, original, 203));

  BFileOutputStream output;
  ASSERT_TRUE(output.open(folder_.file(L"plain").c_str()));
  BFileInputStream input;
  ASSERT_TRUE(input.open(folder_.file(L"plain").c_str()));
  for (const char byte : {'a', 'b'}) {
    output.seek(0);
    output.write(&byte, 1);
    input.seek(0);
    EXPECT_EQ(input.readByte(), byte) << "streams that know of each other by the file only";
  }
}

struct LargeRow {
  u32 position;
  u32 size;  // after writing two bytes there
  u32 written;
};

// Files with a hole: they take no room on the disk.
TEST_F(TempStorageTest, GoesUpToFourGibibytes) {
  const LargeRow rows[] = {
      {0x7FFFFFFE, 0x80000000, 2}, {0x80000000, 0x80000002, 2}, {0xFFFFFFFD, 0xFFFFFFFF, 2},
      {0xFFFFFFFE, 0xFFFFFFFF, 1}, {0xFFFFFFFF, 0, 0},
  };
  for (const LargeRow& row : rows) {
    SCOPED_TRACE(row.position);
    BTempStorage storage;
    ASSERT_TRUE(storage.open());
    ASSERT_TRUE(storage.seek(row.position));
    EXPECT_EQ(storage.write("xy", 2), row.written);
    EXPECT_EQ(storage.size(), row.size);
    EXPECT_EQ(storage.skip(10), std::min(10u, 0xFFFFFFFF - storage.getPosition()));
    ASSERT_TRUE(storage.seek(row.position));
    EXPECT_EQ(storage.readByte(), row.written > 0 ? 'x' : -1);
  }
  // What others made larger can be read as far as positions go.
  const std::wstring path = folder_.file(L"large");
  FileHandle file = openFile(path.c_str(), file_mode::kWrite | file_mode::kCreate);
  LARGE_INTEGER size;
  size.QuadPart = 5'000'000'000;
  SetFilePointerEx(file.get(), size, nullptr, FILE_BEGIN);
  ASSERT_TRUE(SetEndOfFile(file.get()));
  file.reset();
  BFileInputStream stream;
  ASSERT_TRUE(stream.open(path.c_str()));
  EXPECT_EQ(stream.size(), BFileInputStream::kUnknownSize);
  EXPECT_TRUE(stream.seek(0xFFFFFFFE));
  EXPECT_EQ(stream.readByte(), 0);
  EXPECT_EQ(stream.readByte(), -1);
  ASSERT_TRUE(stream.open(path.c_str(), 0xFFFFFFFF));
  EXPECT_EQ(stream.size(), 5'000'000'000 - 0xFFFFFFFF);
  BFileOutputStream output;
  EXPECT_FALSE(output.open(path.c_str(), BFileOutputStream::Existing::Append));

  // And farther from where the stream is told to start.
  ASSERT_TRUE(output.open(path.c_str(), BFileOutputStream::Existing::Modify));
  ASSERT_TRUE(output.setStart(5'000'000'000));
  EXPECT_EQ(output.size(), 0u);
  EXPECT_EQ(output.write("xy", 2), 2u);
  ASSERT_TRUE(stream.open(path.c_str()));
  EXPECT_EQ(stream.readByte(), 0);
  ASSERT_TRUE(stream.setStart(4'999'999'999));
  const auto second = Ref<BFileInputStream>::adopt(stream.clone());
  for (BFileInputStream* const one : {&stream, second.get()}) {
    EXPECT_EQ(one->start(), 4'999'999'999u);
    EXPECT_EQ(one->fileSize(), 5'000'000'002u);
    EXPECT_EQ(one->size(), 3u);
    EXPECT_EQ(one->readByte(), 0) << "nothing that was read ahead elsewhere";
    EXPECT_EQ(one->readByte(), 'x');
  }
  EXPECT_FALSE(stream.setStart(1ull << 63));
  EXPECT_EQ(stream.readByte(), 'y');
  ASSERT_TRUE(output.setSize(1));
  EXPECT_EQ(stream.size(), 2u);
  ASSERT_TRUE(stream.open(path.c_str(), 0, 100));
  EXPECT_FALSE(stream.setStart(1)) << "a part of a file stays one";
  stream.close();
  EXPECT_FALSE(stream.setStart(1));
}

TEST_F(TempStorageTest, LeavesNothingWhenTheFolderIsMissing) {
  use(folder_.path() / "absent");
  BTempStorage storage;
  EXPECT_FALSE(storage.open());
  EXPECT_FALSE(storage.isOpen());
  use(folder_.path() / std::wstring(300, L'x'));
  EXPECT_FALSE(storage.open());
  EXPECT_EQ(files(), 0);
}

HANDLE WINAPI noFile(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
  return INVALID_HANDLE_VALUE;
}

TEST_F(TempStorageTest, LeavesNothingWhenTheFileCannotBeOpened) {
  BTempStorage storage;
  {
    const testing_support::ImportSlot slot(createFileSlot, noFile);
    EXPECT_FALSE(storage.open());
  }
  EXPECT_FALSE(storage.isOpen());
  EXPECT_EQ(files(), 0) << "its name was taken by an empty file";
  EXPECT_TRUE(storage.open());
}

TEST_F(TempStorageTest, ACloseThatFailsIsThrownEachTimeAsTheSameObject) {
  const SException* first = nullptr;
  for (int time = 0; time < 2; ++time) {
    BTempStorage storage;
    ASSERT_TRUE(storage.open());
    testing_support::closeBehindItsBack(storage);
    const SException* caught = nullptr;
    try {
      storage.close();
    } catch (SException* exception) {
      caught = exception;
    }
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->sourceLine(), 74) << "a fixed number: reports are collected by it";
    EXPECT_STREQ(caught->sourceFile(), L"core/baselib/streams/TempStorage.cpp");
    wchar_t* const message = caught->getMessage();
    EXPECT_STREQ(message, L"CloseHandle(m_hFile)");
    _sfree(message);
    EXPECT_FALSE(storage.isOpen());
    EXPECT_NO_THROW(storage.close());
    EXPECT_TRUE(!first || caught == first);
    first = caught;
  }
  BTempStorage dropped;
  ASSERT_TRUE(dropped.open());
  testing_support::closeBehindItsBack(dropped);  // the destructor does not throw
}

}  // namespace
}  // namespace corvix
