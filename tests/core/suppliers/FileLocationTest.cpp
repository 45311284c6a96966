#include "core/suppliers/FileLocation.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/suppliers/KFileSupplier.h"
#include "core/suppliers/KIStreamSupplier.h"
#include "tests/support/OwnFolder.h"

#include <gtest/gtest.h>

namespace corvix {
namespace {

TEST(FileLocation, NamesPathsAndNothingElse) {
  const std::wstring longName(200, L'n');
  const struct {
    std::wstring location;
    std::wstring path;  // empty: nothing
  } rows[] = {
      {L"file:///C:/dir/a%20b.txt", L"C:\\dir\\a b.txt"},
      {L"FILE://LocalHost/c|/x", L"c:\\x"},
      {L"file:C:/x//y", L""},
      {L"file://server/share/x", L"\\\\server\\share\\x"},
      {L"file:///dir/%C3%A4", L"\\dir\\\u00e4"},
      {L"file:name", L"name"},
      {L"file:///C:/" + longName + L"/" + longName, L"\\\\?\\C:\\" + longName + L"\\" + longName},
      {L"file://s/" + longName + L"/" + longName, L"\\\\?\\UNC\\s\\" + longName + L"\\" + longName},
      {L"http://h/x", L""},
      {L"file:", L""},
      {L"file://u@server/share/x", L""},
      {L"file://server:80/share/x", L""},
      {L"file:///C:/a%00b", L""},
      {L"file:///C:/a%0Ab", L""},
      {L"file:///C:/a%2Fb", L""},
      {L"file:///C:/a%5Cb", L""},
      {L"file:///C:/%2E%2E/b", L""},
      {L"file:///C:/x.txt:stream", L""},
      {L"file:///C:/x.txt%3Astream", L""},
      {L"file:///C:/x.txt::$DATA", L""},
      {L"file:///C:/CON", L""},
      {L"file:///C:/dir/nul.txt", L""},
      {L"file:///C:/dir/Aux%20.x/y", L""},
      {L"file:///C:/com1", L""},
      {L"file:///C:/LPT%C2%B2", L""},
      {L"file:///C:/common", L"C:\\common"},
      {L"file:///C:/x.", L""},
      {L"file:///C:/x%20", L""},
      {L"file:///C:/what%3F", L""},
      {L"file://./C:/x", L""},
      {L"file://./pipe/x", L""},
      {L"file://%3F/C:/x", L""},
      {L"file:////./C:/x", L""},
      {L"file:////?/C:/x", L""},
      {L"file://server/pipe/x", L""},
      {L"file://server/PIP%45/x", L""},
      {L"file://[::1]/share/x", L""},
  };
  for (const auto& row : rows)
    EXPECT_EQ(pathOfLocation(UrlRecord(row.location)).view(), row.path) << row.location.c_str();
}

TEST(FileLocation, MakesLocationsOfPaths) {
  for (const wchar_t* path : {L"C:\\dir\\a b#c%20;d.txt", L"\\\\server\\share\\\u00e4", L"Z:\\"}) {
    const WideString location = locationOfPath(path);
    EXPECT_EQ(pathOfLocation(UrlRecord(location.view())).view(), path) << location.c_str();
  }
  for (const wchar_t* path : {L"", L"x", L"\\x", L"C:", L"C:x", L"\\\\", L"\\\\\\x"})
    EXPECT_TRUE(locationOfPath(path).empty()) << path;
  EXPECT_TRUE(isPath(L"C:\\x") && isPath(L"a/b:c") && isPath(L""));
  EXPECT_FALSE(isPath(L"ab:c"));
}

std::string readAll(IBStream* opened) {
  const auto stream = Ref<IBStream>::adopt(opened).as<BInputStream>();
  if (!stream) return "(null)";
  char bytes[64];
  return std::string(bytes, readFully(*stream, bytes, sizeof bytes));
}

TEST(KFileSupplier, OpensFilesAndPartsOfThem) {
  const testing_world::OwnFolder folder;
  std::filesystem::create_directory(folder.file(L"sub"));
  std::ofstream(folder.file(L"a b.txt")) << "0123456789";
  const auto supplier = make<KFileSupplier>();
  const std::wstring base(locationOfPath(folder.path().wstring() + L"\\sub\\base").view());
  ASSERT_TRUE(supplier->setLocation(base.c_str()));
  const struct {
    const wchar_t* relative;
    u32 flags;
    i32 start, length;
    const char* content;
  } rows[] = {
      {L"../a%20b.txt", 0, -1, -1, "0123456789"},
      {L"..\\a%20b.txt", 0, -1, -1, "0123456789"},
      {L"../a%20b.txt", 0, 3, 4, "3456"},
      {L"../a%20b.txt", 0, -1, 2, "01"},
      {L"../a%20b.txt", 0, 20, -1, ""},
      {L"../a%20b.txt", 0, -2, -1, "(null)"},
      {L"../a%20b.txt", 1, -1, -1, "(null)"},
      {L"../a%20b.txt", 2, -1, -1, "0123456789"},
      {L"nothing", 0, -1, -1, "(null)"},
      {L"../sub", 0, -1, -1, "(null)"},
      {L"http://127.0.0.1/", 0, -1, -1, "(null)"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(readAll(supplier->open(row.flags, row.relative, row.start, row.length)), row.content)
        << row.relative << " " << row.start << " " << row.length;
  EXPECT_EQ(readAll(supplier->open(0, nullptr, -1, -1)), "(null)");
}

TEST(KIStreamSupplier, OpensWhatIsRegistered) {
  const auto stream = make<BMemoryInputStream>("abc", 3u, BMemoryInputStream::Bytes::Borrow);
  EXPECT_FALSE(registerStream(L"", stream.get()));
  ASSERT_TRUE(registerStream(L"my stream", stream.get()));
  const auto supplier = make<KIStreamSupplier>();
  const auto opened = [&](const wchar_t* location, i32 start = -1) {
    supplier->setLocation(location);
    return readAll(supplier->open(supply::kRead, nullptr, start, -1));
  };
  EXPECT_EQ(opened(L"istream:my%20stream"), "abc");
  EXPECT_EQ(opened(L"IStream://my%20stream"), "abc") << "a reader of its own";
  EXPECT_EQ(opened(L"istream:My%20stream"), "(null)");
  EXPECT_EQ(opened(L"istream:my%20stream", 0), "(null)");
  EXPECT_TRUE(registerStream(L"my stream", nullptr));
  EXPECT_EQ(opened(L"istream:my%20stream"), "(null)");
  EXPECT_EQ(stream->refCount(), 0u);
}

}  // namespace
}  // namespace corvix
