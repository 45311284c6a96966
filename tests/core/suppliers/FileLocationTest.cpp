#include "core/suppliers/FileLocation.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/suppliers/KFileSupplier_p.h"
#include "core/suppliers/KIStreamSupplier_p.h"
#include "core/suppliers/RegisteredStreams.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/Words.h"

#include <gtest/gtest.h>

#include <vector>

namespace corvix {
namespace {

TEST(FileLocation, NamesPathsAndNothingElse) {
  const std::wstring longName(200, L'n');
  const std::vector<std::pair<std::wstring, std::wstring>> rows{
      {L"file:///C:/dir/a%20b.txt", L"C:\\dir\\a b.txt"},
      {L"FILE://LocalHost/c|/x", L"c:\\x"},
      {L"file://server/share/x", L"\\\\server\\share\\x"},
      {L"file:////server/share/x", L"\\\\server\\share\\x"},
      {L"file://///server/share/x", L"\\\\server\\share\\x"},
      {L"file:///dir/%C3%A4", L"\\dir\\\u00e4"},
      {L"file:name", L"name"},
      {L"file:///C:/common", L"C:\\common"},
      {L"file:///C:/" + longName + L"/" + longName, L"\\\\?\\C:\\" + longName + L"\\" + longName},
      {L"file://s/" + longName + L"/" + longName, L"\\\\?\\UNC\\s\\" + longName + L"\\" + longName}};
  for (const auto& [location, path] : rows)
    EXPECT_EQ(pathOfLocation(UrlRecord(location)).view(), path) << location.c_str();
  testing_support::Words others(
      LR"(
file:C:/x//y                 http://h/x               file:                   file://u@server/share/x
file://server:80/share/x     file:///C:/a%00b         file:///C:/a%0Ab        file:///C:/a%2Fb
file:///C:/a%5Cb             file:///C:/%2E%2E/b      file:///C:/x.txt:stream file:///C:/x.txt%3Astream
file:///C:/x.txt::$DATA      file:///C:/CON           file:///C:/dir/nul.txt  file:///C:/dir/Aux%20.x/y
file:///C:/com1              file:///C:/LPT%C2%B2     file:///C:/x.           file:///C:/x%20
file:///C:/what%3F           file://./C:/x            file://./pipe/x         file://%3F/C:/x
file:////./C:/x              file:////?/C:/x          file://server/pipe/x    file://server/PIP%45/x
file://[::1]/share/x         file://////server/share/x file:////server          file:////C:/x
file:////server/pipe/x       file://///./C:/x          file://///%3F/C:/x)");
  for (std::wstring location; others >> location;)
    EXPECT_TRUE(pathOfLocation(UrlRecord(location)).empty()) << location.c_str();
}

TEST(FileLocation, MakesLocationsOfPaths) {
  for (const wchar_t* path : {L"C:\\dir\\a b#c%20;d.txt", L"\\\\server\\share\\\u00e4", L"Z:\\"}) {
    const WideString location = locationOfPath(path);
    EXPECT_EQ(pathOfLocation(UrlRecord(location.view())).view(), path) << location.c_str();
  }
  const std::wstring longName = std::wstring(300, L'n') + L"\\x";
  const std::pair<std::wstring, std::wstring> marked[] = {
      {L"\\\\?\\C:\\dir\\a b", L"C:\\dir\\a b"},
      {L"\\\\?\\UNC\\server\\share\\x", L"\\\\server\\share\\x"},
      {L"\\\\?\\unc\\server\\share\\x", L"\\\\server\\share\\x"},
      {L"\\\\?\\C:\\" + longName, L"\\\\?\\C:\\" + longName},
      {L"\\\\?\\UNC\\s\\" + longName, L"\\\\?\\UNC\\s\\" + longName}};
  for (const auto& [path, back] : marked)
    EXPECT_EQ(pathOfLocation(UrlRecord(locationOfPath(path))).view(), back) << path.c_str();
  for (const wchar_t* path : {L"",
                              L"x",
                              L"\\x",
                              L"C:",
                              L"C:x",
                              L"\\\\",
                              L"\\\\\\x",
                              L"\\\\server",
                              L"\\\\server\\",
                              L"\\\\.\\C:\\x",
                              L"\\\\?\\C:",
                              L"\\\\?\\Volume{1}\\x",
                              L"\\\\?\\UNC\\server",
                              L"\\\\?\\\\\\server\\share",
                              L"\\\\?\\C:\\x.",
                              L"\\\\?\\C:\\a\\..\\b",
                              L"\\\\?\\C:\\a/b",
                              L"\\\\server@SSL\\share",
                              L"\\\\server:80\\share",
                              L"\\\\C:\\a\\b",
                              L"C:\\CON",
                              L"C:\\dir\\nul.txt\\x"})
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
  const testing_support::OwnFolder folder;
  std::filesystem::create_directory(folder.file(L"sub"));
  std::ofstream(folder.file(L"a b.txt")) << "0123456789";
  const auto supplier = make<KFileSupplier>();
  const std::wstring base(locationOfPath(folder.path().wstring() + L"\\sub\\base").view());
  ASSERT_TRUE(supplier->setLocation(base.c_str()));
  const auto opened = [&](const wchar_t* relative, i32 start = -1, i32 length = -1, u32 flags = 0) {
    return readAll(supplier->open(flags, relative, start, length));
  };
  constexpr auto kFile = L"../a%20b.txt";
  EXPECT_FALSE(supplier->setLocation(nullptr)) << "the former one is kept";
  EXPECT_EQ(opened(L"..\\a%20b.txt"), "0123456789");
  EXPECT_EQ(opened(kFile, 3, 4), "3456");
  EXPECT_EQ(opened(kFile, -1, 2), "01");
  EXPECT_EQ(opened(kFile, 20), "");
  EXPECT_EQ(opened(kFile, -2), "(null)");
  EXPECT_EQ(opened(kFile, -1, -1, 1), "(null)");
  EXPECT_EQ(opened(kFile, -1, -1, 2), "0123456789");
  for (const wchar_t* other : {L"nothing", L"../sub", L"http://127.0.0.1/"})
    EXPECT_EQ(opened(other), "(null)") << other;
  EXPECT_EQ(opened(nullptr), "(null)");
}

TEST(KIStreamSupplier, OpensWhatIsRegistered) {
  const auto stream = make<BMemoryInputStream>("abc", 3u, BMemoryInputStream::Bytes::Borrow);
  EXPECT_FALSE(registerStream(L"", stream.get()));
  EXPECT_FALSE(registerStream(L"my stream", make<BMemoryOutputStream>().get())) << "nothing to read";
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
