// What is asked of WinINet, and when: against a table of calls that does what the row says.
#include "core/suppliers/InternetAgent_p.h"
#include "core/suppliers/InternetInputStream_p.h"
#include "core/suppliers/InternetTransfer_p.h"

#include "core/baselib/objects/Ref.h"
#include "core/suppliers/KHTTPSupplier_p.h"
#include "tests/support/StreamTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>

namespace corvix {
namespace {

struct Net {
  std::string calls;
  std::string body = "0123456789";
  bool hasSession = true;
  bool hasResource = true;
  bool seeks = true;
  bool reads = true;
  DWORD seekError = ERROR_INTERNET_INVALID_OPERATION;
  const wchar_t* contentLength = nullptr;
  DWORD here = 0;              // bytes that have come
  char stallsAt = 0;           // 'o'pening or 'r'eading, or a 'c'heck
  std::size_t stallsFrom = 0;  // reading
  std::wstring agent, url;
  std::size_t position = 0;
  void* sessionAsked = nullptr;
} net;

// A server that does not answer until the test says so.
std::atomic<bool> isStalled{false};
const HANDLE answer = CreateEventW(nullptr, TRUE, FALSE, nullptr);

void stall(char where) {
  if (net.stallsAt != where || (where == 'r' && net.position < net.stallsFrom)) return;
  isStalled = true;
  WaitForSingleObject(answer, INFINITE);
}

HINTERNET handle(std::uintptr_t number) { return reinterpret_cast<HINTERNET>(number); }

HINTERNET WINAPI open(const wchar_t* agent, DWORD type, const wchar_t* proxy, const wchar_t* bypass, DWORD flags) {
  net.calls += "open, ";
  net.agent = agent ? agent : L"(null)";
  EXPECT_TRUE(type == INTERNET_OPEN_TYPE_PRECONFIG && !proxy && !bypass && flags == 0);
  return net.hasSession ? handle(1) : nullptr;
}
HINTERNET WINAPI openUrl(HINTERNET session, const wchar_t* url, const wchar_t* headers, DWORD length, DWORD flags,
                         DWORD_PTR context) {
  net.calls += "openUrl, ";
  net.url = url;
  net.sessionAsked = session;
  net.position = 0;
  EXPECT_TRUE(!headers && length == 0 && flags == 0 && context == 0);
  stall('o');
  return session && net.hasResource ? handle(2) : nullptr;
}
BOOL WINAPI readFile(HINTERNET, void* buffer, DWORD count, DWORD* got) {
  net.calls += "read " + std::to_string(count) + ", ";
  stall('r');
  if (!net.reads) return FALSE;  // the count stays as it was, as the system leaves it
  *got = static_cast<DWORD>(std::min<std::size_t>(count, net.body.size() - net.position));
  std::memcpy(buffer, net.body.data() + net.position, *got);
  net.position += *got;
  return TRUE;
}
DWORD WINAPI setFilePointer(HINTERNET, LONG offset, void*, DWORD from, DWORD_PTR) {
  net.calls += (from == FILE_END ? "end " : "begin ") + std::to_string(offset) + ", ";
  SetLastError(net.seekError);
  if (!net.seeks) return static_cast<DWORD>(-1);
  net.position = (from == FILE_END ? net.body.size() : 0) + static_cast<std::size_t>(offset);
  return static_cast<DWORD>(net.position);
}
BOOL WINAPI closeHandle(HINTERNET closed) {
  net.calls += closed == handle(1) ? "close session, " : "close request, ";
  return TRUE;
}
BOOL WINAPI checkConnection(const wchar_t* url, DWORD flags, DWORD) {
  net.calls += "check " + std::to_string(flags) + ", ";
  stall('c');
  return std::wstring_view(url) == L"http://h/" ? 7 : FALSE;
}
BOOL WINAPI lastResponse(DWORD*, wchar_t*, DWORD* length) {
  net.calls += "response " + std::to_string(*length) + ", ";
  return TRUE;
}
BOOL WINAPI available(HINTERNET, DWORD* count, DWORD, DWORD_PTR) {
  *count = std::min(net.here, static_cast<DWORD>(net.body.size() - net.position));
  return TRUE;
}
BOOL WINAPI queryInfo(HINTERNET, DWORD, void* buffer, DWORD* bytes, DWORD*) {
  if (!net.contentLength) return FALSE;
  *bytes = static_cast<DWORD>(std::wcslen(net.contentLength)) * DWORD{sizeof(wchar_t)};
  std::memcpy(buffer, net.contentLength, *bytes);
  return TRUE;
}

class InternetInputStreamTest : public testing::Test {
 protected:
  InternetInputStreamTest() {
    net = Net();
    replaceWinInet(&table_);
  }
  ~InternetInputStreamTest() override {
    internetSession().handle.reset();
    internetSession().useCount = 0;
    replaceWinInet(nullptr);
  }

  static Ref<InternetInputStream> stream() { return make<InternetInputStream>(UrlRecord(L"http://h/")); }
  static std::string taken() { return std::exchange(net.calls, {}); }

  WinInetCalls table_{open,         openUrl,   readFile, setFilePointer, closeHandle, checkConnection,
                      lastResponse, available, queryInfo};
};

TEST_F(InternetInputStreamTest, OpensAndClosesAsItShould) {
  const std::string kOpened = "open, openUrl, response 1024, ", kClosed = "close request, close session, ";
  const std::string kRefused = kOpened + "end 0, close request, ";
  const struct {
    const char* why;
    void (*arrange)();
    bool isOpen;
    std::string calls, afterwards;  // until it is open, and when it goes
  } rows[] = {
      {"all is well", [] {}, true, kOpened + "end 0, begin 0, ", kClosed},
      {"no session", [] { net.hasSession = false; }, false, "open, ", ""},
      {"no resource", [] { net.hasResource = false; }, false, kOpened, "close session, "},
      {"empty", [] { net.body.clear(); }, false, kOpened + "end 0, begin 0, close request, ", "close session, "},
      {"length unknown", [] { net.seeks = false, net.seekError = 87, net.contentLength = L"10"; }, false,
       kOpened + "end 0, begin 0, close request, ", "close session, "},
      {"no such call, but a length", [] { net.seeks = false, net.contentLength = L"10"; }, true, kOpened + "end 0, ",
       kClosed},
      {"no such call, no length", [] { net.seeks = false; }, false, kRefused, "close session, "},
      {"no such call, too long", [] { net.seeks = false, net.contentLength = L"2147483648"; }, false, kRefused,
       "close session, "},
      {"no such call, nonsense", [] { net.seeks = false, net.contentLength = L"-5"; }, false, kRefused,
       "close session, "}};
  for (const auto& row : rows) {
    net = Net();
    row.arrange();
    internetSession().useCount = 0;
    auto opened = stream();
    EXPECT_EQ(opened->isOpen(), row.isOpen) << row.why;
    EXPECT_EQ(opened->size(), row.isOpen ? 10u : 0u) << row.why;
    EXPECT_EQ(taken(), row.calls) << row.why;
    char byte;
    EXPECT_EQ(opened->read(&byte, 1), row.isOpen ? 1u : 0u) << row.why;
    taken();
    opened.reset();
    EXPECT_EQ(taken(), row.afterwards) << row.why;
  }
}

// Programs rely on the count being kept like this; see InternetStream.h.
TEST_F(InternetInputStreamTest, CountsSessionsAndNotStreams) {
  for (int i = 0; i < 3; ++i) {
    stream();
    EXPECT_EQ(internetSession().useCount, 0) << "one after the other";
  }
  taken();
  auto first = stream();
  auto second = stream();
  EXPECT_EQ(internetSession().useCount, 1);
  EXPECT_EQ(net.calls.rfind("open,"), 0u) << "the only one";
  first.reset();
  EXPECT_FALSE(internetSession().handle) << "ends with the first to go";
  second.reset();
  EXPECT_EQ(internetSession().useCount, -1);
  taken();
  const auto third = stream();
  EXPECT_FALSE(third->isOpen());
  EXPECT_EQ(taken(), "openUrl, response 1024, ");
  EXPECT_EQ(net.sessionAsked, nullptr);
}

TEST_F(InternetInputStreamTest, ReadsPushesBackAndSeeks) {
  const auto opened = stream();
  taken();
  char bytes[16] = {};
  EXPECT_EQ(opened->read(bytes, 3), 3u);
  EXPECT_EQ(opened->pushBack('x'), 2u);
  EXPECT_EQ(opened->read(bytes, 10), 8u) << "the pushed byte and what is left";
  EXPECT_EQ(std::string(bytes, 8), "x3456789");
  EXPECT_EQ(taken(), "read 3, read 9, ");
  EXPECT_EQ(opened->getPosition(), 10u);
  EXPECT_TRUE(opened->atEnd());
  EXPECT_EQ(opened->readCharacter(), 0xFFFF);
  EXPECT_EQ(opened->unreadByte(), 9u);
  EXPECT_EQ(opened->unreadByte(), 9u) << "there is room for one";
  EXPECT_EQ(opened->readCharacter(), '9');

  EXPECT_TRUE(opened->seek(4));
  EXPECT_EQ(opened->readByte(), '4');
  EXPECT_EQ(opened->skip(2), 2u);
  EXPECT_EQ(opened->readByte(), '7');
  opened->pushBack('y');
  EXPECT_TRUE(opened->seek(1));
  EXPECT_EQ(opened->readByte(), 'y') << "deliberate: a pushed byte outlives a seek";
  EXPECT_EQ(opened->getPosition(), 2u);
  net.seeks = false;
  EXPECT_FALSE(opened->seek(5));
  EXPECT_EQ(opened->getPosition(), 2u);
  EXPECT_EQ(opened->skip(1), 1u) << "read over";
  EXPECT_EQ(opened->readByte(), '2');
  net.reads = false;
  EXPECT_EQ(opened->read(bytes, 4), 0u) << "the count that a failed call leaves is not taken for bytes";
  EXPECT_TRUE(opened->checkConnection());
}

// Never more than is here already is taken ahead: no read waits for bytes that nobody asked for.
TEST_F(InternetInputStreamTest, TakesAlongWhatIsHere) {
  const auto opened = stream();
  taken();
  net.here = 4;
  for (const char expected : net.body) EXPECT_EQ(opened->readByte(), expected);
  EXPECT_EQ(taken(), "read 4, read 4, read 2, ");
  EXPECT_TRUE(opened->seek(0));
  EXPECT_EQ(opened->readByte(), '0');
  char bytes[8];
  EXPECT_EQ(opened->read(bytes, 8), 8u) << "from both";
  EXPECT_EQ(std::string(bytes, 8), "12345678");
  EXPECT_EQ(taken(), "begin 0, read 4, read 4, read 2, ") << "as they come";
  EXPECT_TRUE(opened->seek(6));
  EXPECT_EQ(opened->readByte(), '6');
  EXPECT_TRUE(opened->seek(1));
  EXPECT_EQ(opened->readByte(), '1') << "what was taken ahead is stale";
}

// What comes in full pieces is fetched while nobody waits for it; it is given in its order, and gone after a seek.
TEST_F(InternetInputStreamTest, FetchesWhatHasComeMeanwhile) {
  const struct {
    DWORD here;
    u32 piece;
  } rows[] = {{1'000'000, 1}, {1'000'000, 4096}, {70'000, 65'536}, {8192, 1000}, {8191, 200'000}, {0, 65'536}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.here) + " " + std::to_string(row.piece));
    net = Net();
    net.body = testing_support::pattern(700'000);
    net.here = row.here;
    internetSession().useCount = 0;
    auto opened = stream();
    std::string all, bytes(row.piece, 0);
    while (const u32 got = opened->read(bytes.data(), row.piece)) all.append(bytes, 0, got);
    EXPECT_TRUE(all == net.body) << all.size();
    for (const u32 position : {3u, 300'000u}) {
      EXPECT_TRUE(opened->seek(position));
      EXPECT_EQ(opened->readByte(), static_cast<unsigned char>(net.body[position])) << "not what was fetched before";
    }
    taken();
    opened.reset();
    while (InternetTransfer::threadCount() > 0) Sleep(1);
    EXPECT_NE(taken().find("close request, "), std::string::npos);
  }
}

struct Agent : IInternetAgent {
  const wchar_t* internetAgent() const noexcept override { return L"Somebody/2"; }
  i32 startWait() override {
    journal += "start ";
    return 7;
  }
  void endWait(i32 wait) override { journal += "end " + std::to_string(wait); }
  std::string journal;
};

TEST_F(InternetInputStreamTest, DropsWhatComesBehindTheLength) {
  for (const DWORD here : {0u, 3u, 100u}) {
    for (const u32 piece : {1u, 7u, 20u, 5000u}) {
      net = Net();
      net.seeks = false;
      net.contentLength = L"10";
      net.body += "surplus";
      net.here = here;
      internetSession().useCount = 0;
      const auto opened = stream();
      std::string all, bytes(piece, 0);
      while (const u32 got = opened->read(bytes.data(), piece)) all.append(bytes, 0, got);
      EXPECT_EQ(all, "0123456789") << here << " " << piece;
      EXPECT_TRUE(opened->atEnd());
      EXPECT_EQ(opened->getPosition(), 10u);
      EXPECT_EQ(opened->readByte(), -1);
    }
  }
}

// The thread that reads may be late to say that it is done.
TEST_F(InternetInputStreamTest, LosesNothingBetweenTheThreads) {
  for (const DWORD here : {700u, 1'000'000u}) {
    net = Net();
    net.body = testing_support::pattern(200'000);
    net.here = here;
    internetSession().useCount = 0;
    const auto opened = stream();
    taken();
    std::string all, bytes(1000, 0);
    while (const u32 got = opened->read(bytes.data(), 1000)) {
      EXPECT_EQ(got, 1000u) << "as many as are asked for";
      all.append(bytes, 0, got);
    }
    EXPECT_TRUE(all == net.body) << all.size();
    if (here > net.body.size()) {
      EXPECT_EQ(taken(), "read 65536, read 65536, read 65536, read 3392, ");
    }
  }
}

// Loses patience when the server stalls, and not before.
struct Watcher final : Agent {
  bool goOnWaiting(i32 wait) override { return wait == 7 && !isStalled; }
};

class StallingServerTest : public InternetInputStreamTest {
 protected:
  StallingServerTest() {
    setInternetTimeout(kInternetForever);
    stallAt(0);
  }
  ~StallingServerTest() override {
    answerNow();
    EXPECT_TRUE(isThreadGone()) << "nobody waits for it, but it ends";
    setInternetTimeout(kInternetTimeoutMs);
    setInternetAgent(nullptr);
  }
  static void stallAt(char where) {
    ResetEvent(answer);
    isStalled = false;
    net.stallsAt = where;
  }
  static void answerNow() {
    isStalled = false;
    SetEvent(answer);
  }
  static bool isThreadGone() {
    for (int i = 0; i < 10000 && InternetTransfer::threadCount() > 0; ++i) Sleep(1);
    return InternetTransfer::threadCount() == 0;
  }
  static void awaitStall() {
    while (!isStalled) Sleep(1);
  }

  Watcher watcher_;
};

TEST_F(StallingServerTest, HoldsNobodyLongerThanIsSet) {
  setInternetTimeout(50);
  stallAt('o');
  EXPECT_FALSE(stream()->isOpen());
}

TEST_F(StallingServerTest, ClosesWhatComesLate) {
  setInternetAgent(&watcher_);
  stallAt('o');
  auto opened = stream();
  EXPECT_FALSE(opened->isOpen());
  EXPECT_EQ(taken(), "open, openUrl, ");
  opened.reset();
  EXPECT_EQ(taken(), "close session, ") << "not waited for";
  answerNow();
  EXPECT_TRUE(isThreadGone());
  EXPECT_EQ(taken(), "response 1024, end 0, begin 0, close request, ");

  stallAt('c');
  EXPECT_FALSE(stream()->checkConnection());
  answerNow();
  EXPECT_TRUE(isThreadGone());

  stallAt('r');
  opened = stream();
  taken();
  EXPECT_EQ(opened->readByte(), -1);
  EXPECT_FALSE(opened->isOpen());
  EXPECT_EQ(opened->size(), 0u);
  opened.reset();
  EXPECT_EQ(taken(), "read 1, close session, ");
  answerNow();
  EXPECT_TRUE(isThreadGone());
  EXPECT_EQ(taken(), "close request, ");
}

TEST_F(StallingServerTest, GivesWhatCameAndGoesOnWhenMoreComes) {
  setInternetAgent(&watcher_);
  stallAt('r');
  net.stallsFrom = 4;
  net.here = 2;
  const auto opened = stream();
  char bytes[16] = {};
  EXPECT_EQ(opened->read(bytes, 8), 4u) << "in time";
  EXPECT_TRUE(opened->isOpen());
  answerNow();
  EXPECT_EQ(opened->read(bytes + 4, 3), 3u);
  EXPECT_EQ(opened->readByte(), '7') << "the rest of the first";
  EXPECT_EQ(opened->read(bytes + 8, 8), 2u);
  EXPECT_EQ(std::string(bytes, 7), "0123456");
  EXPECT_EQ(std::string(bytes + 8, 2), "89");
  EXPECT_TRUE(opened->atEnd());
}

TEST_F(StallingServerTest, WaitsAreCancelledFromElsewhere) {
  stallAt('r');
  auto opened = stream();
  std::thread one([&] {
    awaitStall();
    query<IInternetCancel>(opened.get())->cancel();
  });
  EXPECT_EQ(opened->readByte(), -1);
  one.join();
  EXPECT_FALSE(opened->isOpen());
  opened.reset();
  answerNow();
  EXPECT_TRUE(isThreadGone());

  stallAt('o');
  std::thread all([] {
    awaitStall();
    cancelInternetWaits();
  });
  EXPECT_FALSE(stream()->isOpen());
  all.join();
  answerNow();
  EXPECT_TRUE(isThreadGone());

  stallAt('o');
  setInternetAgent(&watcher_);
  EXPECT_FALSE(stream()->isOpen());
  EXPECT_EQ(watcher_.journal, "start end 7");
}

TEST_F(InternetInputStreamTest, SupplierTakesWholeHttpResourcesOnly) {
  Agent agent;
  setInternetAgent(&agent);
  const auto asked = [&](const wchar_t* location, const wchar_t* relative = nullptr, u32 flags = 0, i32 start = -1,
                         i32 length = -1) {
    const auto supplier = make<KHTTPSupplier>();
    EXPECT_TRUE(supplier->setLocation(location));
    taken();
    const auto opened = Ref<IBStream>::adopt(supplier->open(flags, relative, start, length));
    EXPECT_EQ(taken().empty(), !opened) << location;
    return opened ? net.url : L"nothing";
  };
  EXPECT_EQ(asked(L"http://h/a/b"), L"http://h/a/b");
  EXPECT_EQ(asked(L"HTTP://h/a/b", L"../c?d#e", 2), L"HTTP://h/c?d");
  EXPECT_EQ(asked(L"http://h/a b\r\nX: y"), L"http://h/a%20b%0D%0AX:%20y");
  EXPECT_EQ(asked(L"http://h/a", nullptr, 1), L"nothing");
  EXPECT_EQ(asked(L"http://h/a", nullptr, 0, 0), L"nothing");
  EXPECT_EQ(asked(L"http://h/a", nullptr, 0, -1, 5), L"nothing");
  EXPECT_EQ(asked(L"http://h/a", L"ftp://h/b"), L"nothing");
  EXPECT_EQ(asked(L"ftp://h/a", L"http://h/b"), L"http://h/b");
  for (const wchar_t* location : {L"ftp://h/a", L"https://h/a", L""}) EXPECT_EQ(asked(location), L"nothing");
  EXPECT_EQ(net.agent, L"Somebody/2");
  setInternetAgent(nullptr);
}

}  // namespace
}  // namespace corvix
