#include "core/baselib/system/Log.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <thread>
#include <vector>

#include "core/baselib/system/KernelFile_p.h"
#include "core/baselib/system/Log_p.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnRegistry.h"

namespace corvix {
namespace {

using testing_support::bytesOf;

constexpr char kStart[] = "Start .* at [A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9:]{8} [0-9]{4}\n\n";
constexpr char kEnd[] = "End .* at [A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9:]{8} [0-9]{4}\n\n";

// A program that exists as a name only: its folder, its key in the registry, its log.
class LogTest : public testing::Test {
 protected:
  LogTest() : executable_(folder_.file(L"app.exe")) {}
  ~LogTest() override { closeLog(); }

  RegistryKey key() const {
    return RegistryKey::create(HKEY_CURRENT_USER, registryPathOf(executable_), KEY_ALL_ACCESS);
  }
  void switchOn() const { key().setNumber(L"WriteLog", 1); }
  std::wstring path() const { return executable_ + L".log"; }
  bool exists() const { return std::filesystem::exists(path()); }
  void run(const std::function<void()>& write) const {
    openLog(executable_);
    write();
    closeLog();
  }

  // What stands between the start and the end line of a single run.
  std::string entries() const {
    const std::string log = bytesOf(path());
    const std::size_t entry = std::min(log.find("\n\n"), log.size() - 2) + 2;
    const std::size_t end = std::min(log.rfind("End "), log.size());
    const bool isLog = std::regex_match(log.substr(0, entry), std::regex(kStart)) &&
                       std::regex_match(log.substr(end), std::regex(kEnd));
    return isLog ? log.substr(entry, end - entry) : "not a log: " + log;
  }

  testing_support::OwnRegistry registry_;
  testing_support::OwnFolder folder_;
  std::wstring executable_;
};

struct SwitchRow {
  const char* why;
  DWORD type;
  std::string bytes;
  bool on;
};

const SwitchRow kSwitchRows[] = {
    {"no value", REG_NONE, "", false},
    {"zero", REG_DWORD, std::string(4, '\0'), false},
    {"one", REG_DWORD, std::string("\1\0\0\0", 4), true},
    {"any other number", REG_DWORD, std::string("\0\0\0\x80", 4), true},
    {"a text", REG_SZ, std::string("1\0\0\0", 4), false},
    {"a number of eight bytes", REG_QWORD, std::string("\1\0\0\0\0\0\0\0", 8), false},
    {"a number of two bytes", REG_DWORD, std::string("\1\0", 2), false},
    {"a number of five bytes", REG_DWORD, std::string("\1\0\0\0\0", 5), false},
};

TEST_F(LogTest, IsOnForANumberOfFourBytesThatIsNotZero) {
  for (const SwitchRow& row : kSwitchRows) {
    SCOPED_TRACE(row.why);
    RegDeleteValueW(key().get(), L"WriteLog");
    if (row.type != REG_NONE) {
      RegSetValueExW(key().get(), L"WriteLog", 0, row.type, reinterpret_cast<const BYTE*>(row.bytes.data()),
                     static_cast<DWORD>(row.bytes.size()));
    }
    run([] { sWriteLog("entry\n"); });
    EXPECT_EQ(exists(), row.on);
    EXPECT_EQ(row.on ? entries() : "", row.on ? "entry\n" : "");
    DeleteFileW(path().c_str());
  }
}

struct EntryRow {
  const char* why;
  std::function<void()> write;
  std::string expected;
};

std::string inCodePage(const std::wstring& text) {
  std::string bytes(text.size() * 4, 0);
  bytes.resize(
      static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                                   static_cast<int>(bytes.size()), nullptr, nullptr)));
  return bytes;
}

std::vector<EntryRow> entryRows() {
  const std::wstring mixed = L"\x00E4\x4E2D\xD83D\xDE00.";
  std::vector<EntryRow> rows = {
      {"nothing, wide", [] { sWriteLog(L""); }, ""},
      {"numbers", [] { sWriteLog("%d %s %.2f|", -7, "text", 0.5); }, "-7 text 0.50|"},
      {"text of its own width", [] { sWriteLog(L"%s %hs %d|", L"wide", "narrow", 3); }, "wide narrow 3|"},
      {"wide text in a narrow format", [] { sWriteLog("%ls|", L"wide"); }, "wide|"},
      {"percent signs", [] { sWriteLog("%s%%|", "100% %d %s %n%%"); }, "100% %d %s %n%%%|"},
      {"a zero inside", [] { sWriteLog("a%cb|", 0); }, std::string("a\0b|", 4)},
      {"outside the code page", [mixed] { sWriteLog(L"%s", mixed.c_str()); }, inCodePage(mixed)},
      {"a lone surrogate", [] { sWriteLog(L"%s", L"a\xD800z"); }, inCodePage(L"a\xD800z")},
      {"a format that cannot be formatted", [] { sWriteLog("<%ls>", L"\xD800"); }, "<%ls>"},
      {"no format", [] { sWriteLog(static_cast<const char*>(nullptr)); }, ""},
  };
  for (const int length : {13, 14, 15, 16, 17, 31, 32, 511, 512, 513, 300000}) {
    const std::string expected = std::string(static_cast<std::size_t>(length) - 1, ' ') + "7";
    rows.push_back({"its length", [length] { sWriteLog("%*d", length, 7); }, expected});
    rows.push_back({"its wide length", [length] { sWriteLog(L"%*d", length, 7); }, expected});
  }
  return rows;
}

TEST_F(LogTest, WritesEntriesAsFormatted) {
  switchOn();
  for (const EntryRow& row : entryRows()) {
    run(row.write);
    EXPECT_TRUE(entries() == row.expected)
        << row.why << ", " << row.expected.size() << " bytes, got " << entries().substr(0, 80);
    DeleteFileW(path().c_str());
  }
}

TEST_F(LogTest, IsReadableWhileItIsWrittenAndGrowsRunByRun) {
  switchOn();
  for (int run = 0; run < 2; ++run) {
    openLog(executable_);
    sWriteLog("run %d\n", run);
    EXPECT_NE(bytesOf(path()).find("run " + std::to_string(run)), std::string::npos) << "at once";
    EXPECT_FALSE(openFile(path().c_str(), file_mode::kWrite | file_mode::kShareRead)) << "a second writer";
    closeLog();
  }
  const std::regex shape(std::string(kStart) + "run 0\n" + kEnd + kStart + "run 1\n" + kEnd);
  EXPECT_TRUE(std::regex_match(bytesOf(path()), shape)) << bytesOf(path());
}

// Every way of not getting a log leaves the caller alone.
TEST_F(LogTest, StaysOffWhenTheFileCannotBeHad) {
  switchOn();
  {
    const FileHandle other = openFile(path().c_str(), file_mode::kWrite | file_mode::kCreate | file_mode::kShareRead);
    run([] { sWriteLog("lost\n"); });
  }
  EXPECT_EQ(bytesOf(path()), "") << "another process writes it";
  DeleteFileW(path().c_str());
  for (const std::wstring& name : {std::wstring(L"absent\\app.exe"), std::wstring(400, L'x') + L".exe"}) {
    executable_ = folder_.file(name);
    switchOn();
    run([] { sWriteLog(L"lost\n"); });
    EXPECT_FALSE(exists());
  }
}

TEST_F(LogTest, EntriesOfThreadsAreNotSplit) {
  switchOn();
  openLog(executable_);
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([letter] {
      for (int i = 0; i < 50; ++i) sWriteLog("%s\n", std::string(700, letter).c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  closeLog();
  const std::string log = entries();
  ASSERT_EQ(log.size(), 4u * 50 * 701);
  for (std::size_t at = 0; at < log.size(); at += 701) {
    ASSERT_EQ(log.substr(at, 701), std::string(700, log[at]) + "\n") << "at " << at;
  }
}

struct ModeRow {
  u32 mode;
  bool opensMissing;
  const char* content;  // of the existing file "old" after writing "N", if that can be done
};

constexpr u32 kWrite = file_mode::kWrite;
const ModeRow kModeRows[] = {
    {kWrite, false, "Nld"},
    {kWrite | file_mode::kCreate, true, "N"},
    {kWrite | file_mode::kCreate | file_mode::kAppend, true, "oldN"},
    {kWrite | file_mode::kAppend, false, "oldN"},
    {file_mode::kRead, false, "old"},
    {0x1E, true, "oldN"},
};

TEST(OpenFile, ModeWordRows) {
  const testing_support::OwnFolder folder;
  const std::wstring path = folder.file(L"file");
  for (const ModeRow& row : kModeRows) {
    SCOPED_TRACE(row.mode);
    EXPECT_EQ(static_cast<bool>(openFile(path.c_str(), row.mode)), row.opensMissing);
    std::ofstream(folder.path() / "file") << "old";
    FileHandle file = openFile(path.c_str(), row.mode);
    EXPECT_TRUE(file);
    DWORD written;
    WriteFile(file.get(), "N", 1, &written, nullptr);
    file.reset();
    EXPECT_EQ(bytesOf(path), row.content);
    DeleteFileW(path.c_str());
  }
}

}  // namespace
}  // namespace corvix
