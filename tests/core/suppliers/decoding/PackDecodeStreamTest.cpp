#include "core/suppliers/decoding/PackDecodeStream.h"

#include "core/suppliers/decoding/PackImageInputStream.h"
#include "tests/support/Soak.h"
#include "tests/support/StreamTesting.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include <windows.h>
#include <zlib.h>

namespace corvix {
namespace {

using testing_support::Forward;
using testing_support::pattern;

using Decoder = Ref<PackDecodeStream>;

Decoder decoderOf(std::string packed, const PackParams& parameters, u32 piece = 0xFFFFFFFF) {
  return Decoder::adopt(PackDecodeStream::create(make<Forward>(std::move(packed), piece), parameters));
}

std::string readAll(BInputStream& stream, u32 piece = 100) {
  std::string all;
  std::string bytes(piece, 0);
  while (const u32 got = stream.read(bytes.data(), piece)) all.append(bytes, 0, got);
  return all;
}

Ref<PackParams> params(PackMethod method, bool earlyChange = true) {
  auto parameters = make<PackParams>();
  parameters->method = method;
  parameters->earlyChange = earlyChange;
  return parameters;
}

std::string deflated(const std::string& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  std::string packed(size, 0);
  compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
            static_cast<uLong>(plain.size()), 9);
  packed.resize(size);
  return packed;
}

std::string bytes(std::initializer_list<int> values) { return {values.begin(), values.end()}; }

TEST(PackDecodeStream, UnpacksAndTellsWhatIsWrong) {
  using enum PackMethod;
  using PackFault::Damaged, PackFault::Truncated;
  constexpr PackFault kFine = PackFault::None;
  const struct {
    PackMethod method;
    std::string packed, plain;
    PackFault fault;
  } rows[] = {
      {RunLength, bytes({2, 'a', 'b', 'c', 255, 'x', 129, 'y', 128, 'z'}), "abcxx" + std::string(128, 'y'), kFine},
      {RunLength, bytes({2, 'a', 'b'}), "ab", Truncated},
      {RunLength, bytes({200}), "", Truncated},
      {RunLength, bytes({0, 'a'}), "a", Truncated},
      {RunLength, "", "", Truncated},
      {AsciiHex, "48 65\n6C6c 6F>zz", "Hello", kFine},
      {AsciiHex, "487>", "Hp", kFine},
      {AsciiHex, "4865", "He", Truncated},
      {AsciiHex, "48x5>", "H", Damaged},
      {Ascii85, "<~87cURD_*#4DfT\nZ)~>", "Hello, World", kFine},
      {Ascii85, "z87cURDZ~>", std::string(4, 0) + "Hello", kFine},
      {Ascii85, "87cUR", "Hell", Truncated},
      {Ascii85, "87cUR8~>", "Hell", Damaged},
      {Ascii85, "87cUR8z~>", "Hell", Damaged},
      {Ascii85, "87cUR~x", "Hell", Damaged},
      {Ascii85, "<", "", Truncated},
      {Ascii85, "87cUR~\r\n>", "Hell", kFine},
      {Ascii85, "<\n~87cUR~ \t\n", "Hell", Truncated},
      {Ascii85, "87cUR~\n", "Hell", Truncated},
      {Ascii85, "s8W-!~>", "\xFF\xFF\xFF\xFF", kFine},
      {Ascii85, "s8W-\"~>", "", Damaged},
      {Ascii85, "87cUR{~>", "Hell", Damaged},
      // The documented example of the method, and what cannot be.
      {Lzw, bytes({0x80, 0x0B, 0x60, 0x50, 0x22, 0x0C, 0x0C, 0x85, 0x01}),
       bytes({45, 45, 45, 45, 45, 65, 45, 45, 45, 66}), kFine},
      {Lzw, bytes({0x80, 0x0B, 0x60, 0x50}), bytes({45, 45, 45}), Truncated},
      {Lzw, bytes({0x80, 0x0B, 0x7F, 0xFF}), bytes({45}), Damaged},
      {Lzw, bytes({0xFF, 0xFF}), "", Damaged},
      {Flate, deflated("Hello") + "more", "Hello", kFine},
      {Flate, deflated(""), "", kFine},
      {Flate, "", "", Truncated},
      {Flate, "no zlib", "", Damaged},
      {PackMethod::None, "as it is", "as it is", kFine},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(static_cast<int>(row.method)) + " " + row.packed);
    for (const auto& [piece, count] : {std::pair(1u, 1u), {1u, 5000u}, {3u, 7u}, {100000u, 1u}, {100000u, 5000u}}) {
      const auto stream = decoderOf(row.packed, *params(row.method), piece);
      EXPECT_EQ(readAll(*stream, count), row.plain);
      EXPECT_EQ(stream->fault(), row.fault);
    }
  }
}

TEST(PackParams, EveryMethodHasTwoNames) {
  const struct {
    const wchar_t *name, *shortName;
    PackMethod method;
  } rows[] = {{L"FlateDecode", L"Fl", PackMethod::Flate},
              {L"LZWDecode", L"LZW", PackMethod::Lzw},
              {L"RunLengthDecode", L"RL", PackMethod::RunLength},
              {L"ASCIIHexDecode", L"AHx", PackMethod::AsciiHex},
              {L"ASCII85Decode", L"A85", PackMethod::Ascii85}};
  for (const auto& row : rows) {
    for (const wchar_t* name : {row.name, row.shortName}) {
      PackParams parameters;
      EXPECT_TRUE(parameters.setMethod(name));
      EXPECT_EQ(parameters.method, row.method);
      EXPECT_FALSE(parameters.setMethod(L"flatedecode"));
      EXPECT_EQ(parameters.method, row.method) << "as it was";
    }
  }
}

TEST(PackParams, RowBytesAreThoseOfRowsThatCanBe) {
  const struct {
    i32 colors, bits, columns;
    u32 bytes;
  } rows[] = {{3, 8, 10, 30},
              {1, 1, 9, 2},
              {32, 16, 1, 64},
              {1, 8, 16 << 20, 16 << 20},
              {1, 8, (16 << 20) + 1, 0},
              {0, 8, 1, 0},
              {33, 8, 1, 0},
              {1, 3, 1, 0},
              {1, 0, 1, 0},
              {1, 32, 1, 0},
              {1, 8, 0, 0},
              {1, 8, -1, 0},
              {32, 16, 0x7FFFFFFF, 0}};
  for (const auto& row : rows) {
    PackParams parameters;
    parameters.colors = row.colors;
    parameters.bitsPerComponent = row.bits;
    parameters.columns = row.columns;
    EXPECT_EQ(parameters.rowBytes(), row.bytes) << row.colors << ' ' << row.bits << ' ' << row.columns;
  }
}

// Of cut data comes whatever the part that is there tells.
TEST(PackDecodeStream, GivesWhatCutDataHolds) {
  const std::string plain = pattern(100000) + std::string(5000, 'x');
  const std::string packed = deflated(plain);
  for (const std::size_t left : {std::size_t{1000}, packed.size() / 2, packed.size() - 1}) {
    const auto stream = decoderOf(packed.substr(0, left), *params(PackMethod::Flate));
    const std::string got = readAll(*stream);
    EXPECT_TRUE(plain.compare(0, got.size(), got) == 0);
    EXPECT_GE(got.size() + 100, std::min(left, plain.size()));
    EXPECT_EQ(stream->fault(), PackFault::Truncated);
  }
}

// A packer with a table as plain as can be, of either kind; it starts anew before the table is full, or goes on with
// it.
std::string lzwPacked(const std::string& plain, bool earlyChange, bool startsAnew = true) {
  std::string packed;
  u32 bits = 0, bitCount = 0, width = 9;
  const auto put = [&](u32 code) {
    bits = bits << width | code;
    for (bitCount += width; bitCount >= 8; bitCount -= 8) packed += static_cast<char>(bits >> (bitCount - 8));
  };
  std::vector<std::string> table;
  const auto start = [&] {
    put(256);
    width = 9;
    table.clear();
    for (int i = 0; i < 258; ++i) table.push_back(i < 256 ? std::string(1, static_cast<char>(i)) : std::string());
  };
  start();
  for (std::size_t at = 0; at < plain.size();) {
    u32 best = static_cast<u8>(plain[at]);
    for (u32 code = 258; code < table.size(); ++code) {
      if (table[code].size() > table[best].size() && plain.compare(at, table[code].size(), table[code]) == 0)
        best = code;
    }
    put(best);
    at += table[best].size();
    if (at < plain.size() && table.size() < 4096) table.push_back(table[best] + plain[at]);
    const std::size_t change = table.size() - (earlyChange ? 0 : 1);
    if (change >= (1u << width) && width < 12) ++width;
    if (startsAnew && table.size() == 4094) start();
  }
  put(257);
  put(0);
  return packed;
}

TEST(PackDecodeStream, CodesOfAFullLzwTableStayAt12Bits) {
  const std::string plain = pattern(12000);
  for (const bool earlyChange : {true, false}) {
    const auto stream = decoderOf(lzwPacked(plain, earlyChange, false), *params(PackMethod::Lzw, earlyChange));
    EXPECT_TRUE(readAll(*stream) == plain);
    EXPECT_EQ(stream->fault(), PackFault::None);
  }
}

TEST(PackDecodeStream, UnpacksLongLzw) {
  std::string plain(3000, 'a');  // codes that stand for what is just being made
  for (const char c : pattern(30000)) plain += static_cast<char>(c & 3);
  for (const bool early : {true, false}) {
    const auto stream = decoderOf(lzwPacked(plain, early), *params(PackMethod::Lzw, early));
    EXPECT_TRUE(readAll(*stream, 1000) == plain) << early;
    EXPECT_EQ(stream->fault(), PackFault::None) << early;
  }
}

TEST(PackDecodeStream, TakesPredictorsBack) {
  constexpr PackFault kRefused = PackFault::Parameters;
  const struct {
    i32 predictor, colors, bits, columns;
    std::string packed, plain;
    PackFault fault = PackFault::None;
  } rows[] = {
      {12, 1, 8, 3, bytes({0, 1, 2, 3, 1, 1, 1, 1, 2, 1, 1, 1, 3, 10, 1, 0, 4, 1, 1, 1}),
       bytes({1, 2, 3, 1, 2, 3, 2, 3, 4, 11, 8, 6, 12, 9, 7})},
      {10, 3, 8, 2, bytes({1, 1, 2, 3, 1, 1, 1}), bytes({1, 2, 3, 2, 3, 4})},
      {15, 1, 16, 2, bytes({1, 1, 0, 1, 5}), bytes({1, 0, 2, 5})},
      {15, 1, 1, 9, bytes({1, 3, 5}), bytes({3, 8})},
      {15, 1, 8, 3, bytes({0, 1, 2, 3, 2, 1}), bytes({1, 2, 3, 2}), PackFault::Truncated},
      {15, 1, 8, 3, bytes({0, 1, 2, 3, 9, 1, 1, 1}), bytes({1, 2, 3}), PackFault::Damaged},
      {2, 1, 8, 3, bytes({1, 1, 1, 5, 255, 255}), bytes({1, 2, 3, 5, 4, 3})},
      {2, 2, 8, 2, bytes({1, 10, 1, 10}), bytes({1, 10, 2, 20})},
      {2, 1, 16, 2, bytes({0, 255, 0, 1}), bytes({0, 255, 1, 0})},
      {2, 1, 4, 4, bytes({0x11, 0x1F}), bytes({0x12, 0x32})},
      {2, 3, 2, 2, bytes({0x6C, 0x40}), bytes({0x6D, 0xF0})},
      {2, 1, 8, 3, bytes({1, 1, 1, 5}), bytes({1, 2, 3, 5}), PackFault::Truncated},
      {3, 1, 8, 3, "abc", "", kRefused},
      {16, 1, 8, 3, "abc", "", kRefused},
      {15, 1, 8, 0, "abc", "", kRefused},
      {15, 0, 8, 1, "abc", "", kRefused},
      {15, 33, 8, 1, "abc", "", kRefused},
      {15, 1, 3, 1, "abc", "", kRefused},
      {15, 32, 16, 0x7FFFFFFF, "abc", "", kRefused},
  };
  for (const auto& row : rows) {
    const auto parameters = params(PackMethod::Flate);
    parameters->predictor = row.predictor;
    parameters->colors = row.colors;
    parameters->bitsPerComponent = row.bits;
    parameters->columns = row.columns;
    for (const u32 count : {1u, 4u, 100u}) {
      const auto stream = decoderOf(deflated(row.packed), *parameters);
      EXPECT_EQ(readAll(*stream, count), row.plain) << row.predictor << " " << row.colors << " " << row.bits;
      EXPECT_EQ(stream->fault(), row.fault) << row.predictor << " " << row.colors << " " << row.bits;
    }
  }
}

TEST(PackDecodeStream, StepsBackAndCloses) {
  const auto stream = decoderOf(deflated(pattern(100000)), *params(PackMethod::Flate));
  EXPECT_TRUE(readAll(*stream, 65536) == pattern(100000));
  EXPECT_EQ(stream->unreadByte(), 99999u);
  EXPECT_EQ(static_cast<char>(stream->readByte()), pattern(100000).back());
  stream->close();
  EXPECT_FALSE(stream->isOpen());
  EXPECT_EQ(stream->readByte(), -1);
  EXPECT_EQ(stream->size(), 0u);
  EXPECT_EQ(stream->available(), 0u);
}

// 64 MiB out of less than one KiB: packed twice.
TEST(PackDecodeStream, ReadsBombsInBoundedMemory) {
  const std::string twice = deflated(deflated(std::string(64 << 20, 0)));
  ASSERT_LT(twice.size(), 1024u);
  const auto inner = decoderOf(twice, *params(PackMethod::Flate));
  const auto outer = Decoder::adopt(PackDecodeStream::create(inner, *params(PackMethod::Flate)));
  MEMORYSTATUSEX before{}, after{};
  before.dwLength = after.dwLength = sizeof before;
  char piece[4096];
  ASSERT_EQ(outer->read(piece, 1), 1u);
  GlobalMemoryStatusEx(&before);
  EXPECT_EQ(outer->skip(0xFFFFFFFF), (64u << 20) - 1);
  GlobalMemoryStatusEx(&after);
  EXPECT_LT(before.ullAvailVirtual - after.ullAvailVirtual, 1u << 20);
  EXPECT_EQ(outer->fault(), PackFault::None);
}

TEST(PackDecodeStream, TellsTheFaultOfWhatItUnpacks) {
  const auto inner = decoderOf("78 9C", *params(PackMethod::AsciiHex));
  const auto outer = Decoder::adopt(PackDecodeStream::create(inner, *params(PackMethod::Flate)));
  EXPECT_EQ(readAll(*outer), "");
  EXPECT_EQ(outer->fault(), PackFault::Truncated);
}

// Any bytes come to an end, whatever they are taken for.
TEST(PackDecodeStream, TakesAnyData) {
  std::mt19937 random(3);
  const std::string seeds[] = {deflated(pattern(300) + std::string(300, 'a')), lzwPacked(pattern(400), true),
                               pattern(64)};
  for (int round = 0; round < testing_support::soak(3000, 500000); ++round) {
    std::string data = seeds[random() % 3];
    for (int i = 0; i < 4; ++i) data[random() % data.size()] = static_cast<char>(random());
    const auto parameters = params(static_cast<PackMethod>(random() % 6), random() % 2 == 0);
    parameters->predictor = static_cast<i32>(random() % 3 == 0 ? 1 : random() % 2 == 0 ? 2 : 15);
    parameters->colors = static_cast<i32>(1 + random() % 4);
    parameters->bitsPerComponent = 1 << random() % 5;
    parameters->columns = static_cast<i32>(1 + random() % 40);
    const auto stream = decoderOf(data, *parameters);
    ASSERT_LT(readAll(*stream).size(), 1u << 20);
    ASSERT_TRUE(stream->atEnd());
  }
}

}  // namespace
}  // namespace corvix
