// The internet stream against real servers; web/servers.py starts and stops them around these tests.
#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/InputStream.h"
#include "core/suppliers/InternetStream.h"
#include "shell/Locations.h"
#include "shell/Shell.h"
#include "tests/support/StreamTesting.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>

namespace corvix {
namespace {

struct Servers {
  int nginx = 0, scripted = 0, nobody = 0;
  Servers() {
    std::ifstream(CORVIX_WEB_FOLDER "/ports.txt") >> nginx >> scripted >> nobody;
    if (nobody == 0) ADD_FAILURE() << "the servers do not run: start the tests through ctest";
  }
};

Ref<BInputStream> openAt(int port, const std::wstring& path) {
  const std::wstring location = L"http://127.0.0.1:" + std::to_wstring(port) + path;
  return Ref<IBStream>::adopt(openLocation(*IShell::getInstance()->pluginManager(), location.c_str()))
      .as<BInputStream>();
}

std::string readAll(BInputStream& stream, u32 piece) {
  std::string all;
  std::string bytes(piece, 0);
  while (const u32 got = stream.read(bytes.data(), piece)) all.append(bytes, 0, got);
  return all;
}

TEST(Web, ReadsWhatServersSend) {
  const Servers servers;
  const std::string body = testing_support::pattern(100000);
  const struct {
    const char* why;
    int port;
    const wchar_t* path;
    bool opens;
    std::size_t comes;  // of the body
  } rows[] = {
      {"known length", servers.nginx, L"/known.bin", true, 100000},
      {"redirect", servers.nginx, L"/moved", true, 100000},
      {"capital letters", servers.nginx, L"/%6bnown.bin", true, 100000},
      {"empty", servers.nginx, L"/empty.bin", false, 0},
      {"ends early", servers.scripted, L"/short", true, 60000},
      {"reset in the middle", servers.scripted, L"/reset", true, 60000},
      {"longer than it said", servers.scripted, L"/longer", true, 100000},
      {"stalls for a moment", servers.scripted, L"/stall", true, 100000},
      {"connection refused", servers.nobody, L"/", false, 0},
  };
  for (const auto& row : rows) {
    const auto stream = openAt(row.port, row.path);
    ASSERT_TRUE(stream) << row.why;
    EXPECT_EQ(stream->isOpen(), row.opens) << row.why;
    EXPECT_EQ(stream->size(), row.opens ? 100000u : 0u) << row.why;
    EXPECT_TRUE(readAll(*stream, 7001) == body.substr(0, row.comes)) << row.why;
    EXPECT_EQ(stream->getPosition(), row.comes) << row.why;
  }
  for (const wchar_t* path : {L"/nolength", L"/chunked", L"/huge", L"/negative", L"/garbage", L"/silent"}) {
    const auto stream = openAt(servers.scripted, path);
    EXPECT_TRUE(stream && !stream->isOpen() && stream->size() == 0 && stream->readByte() < 0) << path;
  }
}

// The system's own limits do nothing under Wine.
TEST(Web, HoldsNobodyForEver) {
  const Servers servers;
  const struct {
    const wchar_t* path;
    u32 comes;
    u32 timeoutMs;
  } rows[] = {{L"/never", 0, 2000}, {L"/circle", 0, 500}, {L"/half", 60000, 4000}};
  for (const auto& [path, comes, timeoutMs] : rows) {
    setInternetTimeout(timeoutMs);
    const auto before = std::chrono::steady_clock::now();
    auto stream = openAt(servers.scripted, path);
    EXPECT_EQ(stream->isOpen(), comes > 0) << path;
    EXPECT_TRUE(readAll(*stream, 7001) == testing_support::pattern(100000).substr(0, comes)) << path;
    EXPECT_FALSE(stream->isOpen()) << path;
    stream.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(60)) << path;
  }
  setInternetTimeout(kInternetTimeoutMs);
  EXPECT_TRUE(openAt(servers.nginx, L"/known.bin")->isOpen()) << "and the next one is as ever";
}

// Who listens to progress may end a wait.
struct Impatient : IProgressCallback {
  int onStartProgress(const Progress& progress) override {
    id = progress.id;
    return notify::kTaken;
  }
  int onChangeProgress(const Progress& progress) override {
    return progress.id == id && progress.flags & kProgressCanStop ? notify::kStop : notify::kGoOn;
  }
  int onUpdateProgress(const Progress&) override { return notify::kGoOn; }
  int onStopProgress(const Progress&) override {
    hasStopped = true;
    return notify::kTaken;
  }
  CORVIX_IDENTITY(Impatient, 0x30000011, 2, 3, 4, IProgressCallback)

 public:
  i32 id = 0;
  bool hasStopped = false;
};

TEST(Web, AListenerToProgressEndsTheWait) {
  const Servers servers;
  Impatient listener;
  IShell& shell = *IShell::getInstance();
  constexpr ShellNotification kAll[] = {ShellNotification::StartProgress, ShellNotification::ChangeProgress,
                                        ShellNotification::StopProgress};
  for (const ShellNotification each : kAll) shell.sender(each).addListener(static_cast<IProgressCallback*>(&listener));
  setInternetTimeout(kInternetForever);
  EXPECT_FALSE(openAt(servers.scripted, L"/never")->isOpen());
  EXPECT_TRUE(listener.hasStopped);
  setInternetTimeout(kInternetTimeoutMs);
  for (const ShellNotification each : kAll)
    shell.sender(each).removeListener(static_cast<IProgressCallback*>(&listener));
}

TEST(Web, AsksAsItShouldAndGivesTheTextOfAnyReply) {
  const Servers servers;
  EXPECT_EQ(readAll(*openAt(servers.scripted, L"/a/../echo?q=1#fragment"), 512),
            "GET /echo?q=1 HTTP/1.1\nUser-Agent: Corvix/1.00\n");
  EXPECT_EQ(readAll(*openAt(servers.nginx, L"/a b.txt"), 512), "a blank in the name");
  EXPECT_NE(readAll(*openAt(servers.nginx, L"/nothing"), 512).find("404 Not Found"), std::string::npos);
}

TEST(Web, ByteByByteIsTheSame) {
  const auto stream = openAt(Servers().scripted, L"/stall");
  const auto before = std::chrono::steady_clock::now();
  std::string head;
  for (int i = 0; i < 1000; ++i) head += static_cast<char>(stream->readByte());
  const auto passed = std::chrono::steady_clock::now() - before;
  EXPECT_TRUE(head == testing_support::pattern(1000));
  EXPECT_LT(passed, std::chrono::milliseconds(1200)) << "waited for what came later";
  EXPECT_EQ(stream->unreadByte(), 999u);
  std::string all = head.substr(0, 999);
  for (int byte = stream->readByte(); byte >= 0; byte = stream->readByte()) all += static_cast<char>(byte);
  EXPECT_TRUE(all == testing_support::pattern(100000));
}

TEST(Web, SeeksWhereTheSystemCan) {
  const auto stream = openAt(Servers().nginx, L"/known.bin");
  const auto random = stream.as<IBRAStream>();
  ASSERT_TRUE(random);
  const std::string body = testing_support::pattern(100000);
  const bool couldSeek = random->seek(50000);  // the emulation cannot
  EXPECT_EQ(stream->getPosition(), couldSeek ? 50000u : 0u);
  EXPECT_EQ(stream->skip(10000), 10000u);
  EXPECT_EQ(static_cast<char>(stream->readByte()), body[couldSeek ? 60000 : 10000]);
}

TEST(Web, ManyOneAfterTheOther) {
  const Servers servers;
  for (int i = 0; i < 200; ++i) {
    const auto stream = openAt(servers.nginx, L"/known.bin");
    ASSERT_TRUE(stream && stream->isOpen()) << i;
    ASSERT_EQ(stream->readByte(), static_cast<u8>(testing_support::pattern(1)[0]));
  }
}

}  // namespace
}  // namespace corvix
