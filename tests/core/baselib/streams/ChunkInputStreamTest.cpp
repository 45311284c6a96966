#include "core/baselib/streams/ChunkInputStream.h"

#include <gtest/gtest.h>

#include "tests/support/StreamTesting.h"

namespace corvix {
namespace {

using testing_support::pattern;
using testing_support::Scripted;

struct LoadRow {
  u32 position;
  u32 count;               // 0: only the seek
  std::vector<u32> pages;  // that are read from the source
};

TEST(BChunkInputStream, LoadsThePagesOfAReadAndTheOneBehindIt) {
  const LoadRow rows[] = {
      {0, 0, {0}},          {4095, 0, {0, 1}},      {4095, 1, {0, 1}}, {4096, 1, {1}},
      {4096, 4096, {1, 2}}, {100, 9000, {0, 1, 2}}, {99999, 1, {24}},  {99999, 50, {24}},
      {100000, 1, {24}},    {200000, 1, {24}},
  };
  for (const LoadRow& row : rows) {
    SCOPED_TRACE(row.position);
    SCOPED_TRACE(row.count);
    const auto source = make<Scripted>(pattern(100000));
    BChunkInputStream stream(source);
    EXPECT_EQ(stream.pageMapSize(), 4u);
    std::string buffer(row.count, 0);
    for (int time = 0; time < 2; ++time) {
      ASSERT_TRUE(stream.seek(row.position));
      stream.read(buffer.data(), row.count);
      std::vector<u32> pages;
      for (const u32 position : source->readPositions) pages.push_back(position / 4096);
      EXPECT_EQ(pages, row.pages) << "and nothing the second time";
    }
    for (u32 page = 0; page < 25; ++page) {
      EXPECT_EQ(stream.isPageLoaded(page), std::count(row.pages.begin(), row.pages.end(), page) > 0) << page;
    }
  }
}

TEST(BChunkInputStream, MovingLoadsNothing) {
  const auto source = make<Scripted>(pattern(100000));
  BChunkInputStream stream(source);
  EXPECT_EQ(stream.skip(50000), 50000u);
  EXPECT_EQ(stream.unreadByte(), 49999u);
  EXPECT_TRUE(source->readPositions.empty());
  EXPECT_EQ(stream.readByte(), static_cast<u8>(source->bytes[49999]));
}

TEST(BChunkInputStream, AByteReadAtAPagesEndLoadsTheNextPage) {
  for (const bool byteByByte : {true, false}) {
    const auto source = make<Scripted>(pattern(10000));
    BChunkInputStream stream(source);
    if (byteByByte) {
      for (int i = 0; i < 4095; ++i) stream.readByte();
    } else {
      stream.skip(4095);
    }
    EXPECT_FALSE(stream.isPageLoaded(1));
    EXPECT_EQ(stream.readByte(), static_cast<u8>(source->bytes[4095]));
    EXPECT_TRUE(stream.isPageLoaded(1));
  }
}

constexpr u32 kSize = 20000;
constexpr u32 kAll = 0xFFFFFFFF;

struct SourceRow {
  const char* why;
  u32 bytes;     // that it has
  u32 toldSize;  // that it says it has
  u32 piece;     // at most so much a read
  u32 failsAt;
  u32 failures;
  u32 first;   // how much of 20000 bytes the first read gets
  u32 second;  // and the next ones
  u32 size;    // then
};

const SourceRow kSourceRows[] = {
    {"short reads", kSize, kSize, 333, 0, 0, kSize, 0, kSize},
    {"ends early", 9000, kSize, kAll, 0, 0, 9000, 0, 9000},
    {"ends early at a page", 8192, kSize, kAll, 0, 0, 8192, 0, 8192},
    {"has more than it told", kSize, 5000, kAll, 0, 0, 5000, 0, 5000},
    {"says it is empty", kSize, 0, kAll, 0, 0, 0, 0, 0},
    {"tells no size", kSize, 0xFFFFFFFF, kAll, 0, 0, kSize, 0, kSize},
    {"fails once in a page", kSize, kSize, kAll, 9000, 1, 9000, kSize - 9000, kSize},
    {"fails for good", kSize, kSize, kAll, 4096, 100, 4096, 0, kSize},
};

TEST(BChunkInputStream, NeverGivesAByteThatTheSourceDidNot) {
  for (const SourceRow& row : kSourceRows) {
    for (const bool seeks : {true, false}) {
      SCOPED_TRACE(row.why + std::string(seeks ? "" : ", no seek"));
      const std::string bytes = pattern(kSize);
      const auto source = make<Scripted>(bytes.substr(0, row.bytes));
      source->toldSize = row.toldSize;
      source->piece = row.piece;
      source->failsAt = row.failsAt;
      source->failures = row.failures;
      source->seeks = seeks;
      BChunkInputStream stream(source);
      std::string read(kSize, 0);
      const u32 first = stream.read(read.data(), kSize);
      EXPECT_EQ(first, row.first);
      EXPECT_EQ(readFully(stream, read.data() + first, kSize - first), row.second);
      EXPECT_EQ(read.compare(0, first + row.second, bytes, 0, first + row.second), 0);
      EXPECT_EQ(stream.size(), row.size);
      EXPECT_EQ(stream.atEnd(), first + row.second == row.size);
    }
  }
}

// A page behind one that failed is in the file already; the hole between must not be read as zeros.
TEST(BChunkInputStream, AHoleIsNotRead) {
  const auto source = make<Scripted>(pattern(kSize));
  BChunkInputStream stream(source);
  ASSERT_TRUE(stream.seek(12288));
  source->failsAt = 5000;
  source->failures = 1;
  ASSERT_TRUE(stream.seek(100));
  std::string read(15000, 0);
  EXPECT_EQ(stream.read(read.data(), 15000), 4900u);
  EXPECT_EQ(stream.read(read.data() + 4900, 10100), 10100u) << "asked again";
  EXPECT_EQ(read.compare(0, 15000, source->bytes, 100, 15000), 0);
}

TEST(BChunkInputStream, WhatHasGoneByCannotBeHad) {
  const auto source = make<Scripted>(pattern(kSize));
  source->seek(6000);
  source->seeks = false;
  BChunkInputStream stream(source);
  u8 byte;
  EXPECT_EQ(stream.read(&byte, 1), 0u);
  ASSERT_TRUE(stream.seek(10000));
  EXPECT_EQ(stream.readByte(), static_cast<u8>(source->bytes[10000]));
  ASSERT_TRUE(stream.seek(6000));
  EXPECT_EQ(stream.readByte(), -1) << "half a page";
}

TEST(BChunkInputStream, HoldsItsSourceUntilItIsClosedOrDropped) {
  const auto source = make<Scripted>(pattern(100));
  {
    BChunkInputStream stream(source), dropped(source);
    EXPECT_EQ(source->refCount(), 2u);
    stream.close();
    EXPECT_EQ(source->refCount(), 1u);
  }
  EXPECT_EQ(source->refCount(), 0u);
  EXPECT_FALSE(BChunkInputStream(nullptr).isOpen());
}

}  // namespace
}  // namespace corvix
