// Run by ctest with files limited to 64 KiB, which is what a full disk looks like; disabled otherwise.
#include <gtest/gtest.h>

#include "core/baselib/streams/ChunkInputStream.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/Log_p.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnRegistry.h"
#include "tests/support/StreamTesting.h"

namespace corvix {
namespace {

using testing_support::Forward;
using testing_support::pattern;

constexpr u32 kRoom = 64 * 1024;
constexpr u32 kSize = 100000;

TEST(DiskFull, DISABLED_TempStorageTellsWhatWasWritten) {
  BTempStorage storage;
  ASSERT_TRUE(storage.open());
  const std::string bytes = pattern(kSize);
  EXPECT_EQ(storage.write(bytes.data(), kSize), kRoom);
  EXPECT_EQ(storage.write(bytes.data(), kSize), 0u);
  EXPECT_EQ(storage.getPosition(), kRoom);
  EXPECT_EQ(storage.size(), kRoom);
  std::string read(kSize, 0);
  storage.seek(0);
  EXPECT_EQ(storage.read(read.data(), kSize), kRoom);
  EXPECT_EQ(read.compare(0, kRoom, bytes, 0, kRoom), 0);
}

TEST(DiskFull, DISABLED_PagesThatWereKeptCanBeReadAndNoOthers) {
  const std::string bytes = pattern(kSize);
  const Ref<BInputStream> sources[] = {
      make<BMemoryInputStream>(bytes.data(), kSize, BMemoryInputStream::Bytes::Borrow),
      make<Forward>(bytes, 1000u),
  };
  for (const Ref<BInputStream>& source : sources) {
    BChunkInputStream stream(source);
    std::string read(kSize, 0);
    for (int time = 0; time < 2; ++time) {
      EXPECT_EQ(readFully(stream, read.data(), kSize), kRoom);
      EXPECT_EQ(read.compare(0, kRoom, bytes, 0, kRoom), 0);
      EXPECT_EQ(stream.readByte(), -1);
      EXPECT_TRUE(stream.seek(90000));
      EXPECT_EQ(stream.readByte(), -1);
      EXPECT_FALSE(stream.atEnd());
      EXPECT_TRUE(stream.seek(0));
    }
  }
}

TEST(DiskFull, DISABLED_LogGoesOnWithoutItsEntries) {
  const testing_support::OwnRegistry registry;
  const testing_support::OwnFolder folder;
  const std::wstring executable = folder.file(L"app.exe");
  RegistryKey::create(HKEY_CURRENT_USER, registryPathOf(executable), KEY_ALL_ACCESS).setNumber(L"WriteLog", 1);
  openLog(executable);
  for (int i = 0; i < 1000; ++i) sWriteLog("%s\n", std::string(999, 'x').c_str());
  closeLog();
  EXPECT_EQ(std::filesystem::file_size(logPathOf(executable)), kRoom);
}

}  // namespace
}  // namespace corvix
