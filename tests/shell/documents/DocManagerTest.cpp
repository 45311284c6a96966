// The library's document manager, through formats that this program declares.
#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "shell/GlobalEvent.h"
#include "shell/documents/BDocument.h"
#include "shell/documents/DocFormat.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/FileFilter.h"
#include "shell/services/Report.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/ImportSlot.h"
#include "tests/support/ImportTable.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"
#include "tests/support/Soak.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace corvix {
namespace {

using namespace testing_support;

class Note final : public BDocument {
  CORVIX_IDENTITY(Note, 0x295D20D1, 0xC3925108, 0xC9E362A1, 0xD892FA62, BDocument)

 public:
  std::string text;
  void change(const char* to) {
    text = to;
    setModified();
  }
};

// Tells none of its texts.
class Mute final : public BSmartObject, public IDocument {
  CORVIX_IDENTITY(Mute, 0x5B1F2C90, 0x8E64D7A3, 0x13C05F7E, 0xD9A826B4, BSmartObject, IDocument)

 public:
  const wchar_t* location() const noexcept override { return nullptr; }
  const wchar_t* title() const noexcept override { return nullptr; }
  bool isModified() const noexcept override { return true; }
  const wchar_t* formatName() const noexcept override { return nullptr; }
  bool isReadOnly() const noexcept override { return false; }
  IStateList* history() override { return nullptr; }
};

Note& note(IDocument* document) { return *query<Note>(document); }

std::wstring readFrom;  // last

// Reads and writes the bytes of a Note, as its row in the table says.
class Format final : public BSmartObject, public IDocFormat {
  CORVIX_IDENTITY(Format, 0x774C7B65, 0xC251F004, 0x658A891C, 0x9F5D0808, BSmartObject, IDocFormat)

 public:
  explicit Format(char letter) : letter_(letter) { journal() += letter; }
  const wchar_t* name() const noexcept override { return L"Test"; }
  i32 probe(IBStream* stream) override {
    EXPECT_EQ(stream->getPosition(), 0u);
    query<BInputStream>(stream)->readByte();
    return letter_ == 'd' ? 0 : letter_ == 'e' ? 1000 : 100;
  }
  IBSmartObject* readDocument(IBStream* stream, IBReport* report) override {
    EXPECT_EQ(stream->getPosition(), 0u);
    readFrom = query<IStreamPlace>(stream)->location();
    journal() += '!';
    auto document = make<Note>();
    for (int c; (c = query<BInputStream>(stream)->readByte()) >= 0;) document->text += static_cast<char>(c);
    if (letter_ == 'f') throw 1;
    if (document->text.find("half") != document->text.npos) report->addLine(L"Half of it was left out.");
    if (document->text.find("mute") != document->text.npos) return new Mute;
    if (document->text.find("bad") == document->text.npos) return document.detach();
    if (letter_ == 'a') report->addLine(L"A: it is bad");
    return nullptr;
  }
  bool writeDocument(IDocument* document, IBStream* stream, IBReport*) override {
    const std::string& text = note(document).text;
    if (text == "unfit") return false;
    if (text == "AA busy") {
      IDocManager& manager = *shell().docManager();
      EXPECT_FALSE(manager.saveDocument(document) || manager.closeDocument(document));
      EXPECT_FALSE(manager.saveDocumentAs(document, L"C:\\other.a", nullptr));
    }
    for (const char c : text) query<BOutputStream>(stream)->writeByte(static_cast<u8>(c));
    return true;
  }
  IBSmartObject* createDocument() override { return letter_ == 'a' ? new Note : nullptr; }

 private:
  const char letter_;
};

template <char letter>
IBSmartObject* createFormat() {
  return new Format(letter);
}
const OwnObject kFormats[] = {
    {L"DocFormat.A", createFormat<'a'>}, {L"DocFormat.B", createFormat<'b'>},     {L"DocFormat.C", createFormat<'c'>},
    {L"DocFormat.D", createFormat<'d'>}, {L"DocFormat.E", createFormat<'e'>},     {L"DocFormat.F", createFormat<'f'>},
    {L"DocFormat.W", createFormat<'w'>}, {L"DocFormat.Useless", create<OfNoUse>},
};

IDocManager& documents() {
  static const bool declared = [] {
    Descriptor it;
    it.interface_(L"DocFormat.A", nullptr, {{L"Pattern", L"*.a"}, {L"Magic", L"4141"}, {L"Access", L"rw"}});
    it.interface_(L"DocFormat.B", nullptr,
                  {{L"Pattern", L"*.b; ?.bb"}, {L"Magic", L"41..4242;7a"}, {L"Access", L"rw"}});
    it.interface_(L"DocFormat.C", nullptr, {{L"Pattern", L"*.C"}, {L"sHumanName", L"Plain C"}});
    it.interface_(L"DocFormat.D", nullptr, {{L"Pattern", L"*.d"}, {L"Magic", L"xx;4"}});
    it.interface_(L"DocFormat.E", nullptr, {{L"Pattern", L"*.d"}});
    it.interface_(L"DocFormat.F", nullptr, {{L"Pattern", L"*.f"}, {L"Magic", L"66"}});
    it.interface_(L"DocFormat.W", nullptr, {{L"Pattern", L"*.w"}, {L"Magic", L"4141414141"}, {L"Access", L"w"}});
    it.interface_(L"DocFormat.Useless", L"-1", {{L"Pattern", L"*.u"}, {L"Magic", L"7575"}, {L"Access", L"rw"}});
    it.registerIn(*shell().pluginManager());
    return true;
  }();
  EXPECT_TRUE(declared);
  return *shell().docManager();
}

void put(const std::filesystem::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

// Answers as it is told.
class Answers final : public BSmartObject, public IDocQuestions {
  CORVIX_IDENTITY(Answers, 0x7DC9ECDF, 0xD4747758, 0xB395527B, 0x01581E9E, BSmartObject, IDocQuestions)

 public:
  Answers() { documents().setQuestions(this); }
  ~Answers() override { documents().setQuestions(nullptr); }
  DocAnswer ask(DocQuestion, IDocument*, const wchar_t* text) override {
    asked = narrow(text);
    return answer;
  }
  DocAnswer answer = DocAnswer::Cancel;
  std::string asked;
};

class DocManagerTest : public testing::Test {
 protected:
  void TearDown() override {
    while (IDocument* const document = manager.documentAt(0)) {
      ASSERT_TRUE(manager.closeDocument(document));
    }
  }
  std::string report() { return narrow(reportText(*manager.report()).view()); }

  OwnFolder folder;
  IDocManager& manager = documents();
};

TEST_F(DocManagerTest, AsksWhoIsLikelyBeforeOthersAndMakesNobodyElse) {
  const struct {
    const wchar_t* name;
    const char* content;
    const char* made;   // formats, "!" behind who reads
    const wchar_t* by;  // null: nobody
    const char* said = "";
  } rows[] = {
      {L"x.a", "AA", "a!", L"DocFormat.A"},
      {L"x.C", "AxBB", "b!", L"DocFormat.B"},  // a beginning before a name
      {L"x.a", "AABB", "b!", L"DocFormat.B"},  // the longer one, of those with any byte in it the known ones
      {L"x.q", "zz", "b!", L"DocFormat.B"},    // the second of two
      {L"x.c", "text", "c!", L"DocFormat.C"},  // whatever the letters' case
      {L"y.bb", "text", "b!", L"DocFormat.B"},
      {L"x.d", "\x04", "de!", L"DocFormat.E"},     // D is not sure at all
      {L"x.bb.q", "text", "ce!", L"DocFormat.E"},  // the rest: E is surer than C
      {L"x.a", "AA bad\x01", "a!ce!!", nullptr},
      {L"x.f", "f", "f!ce!", L"DocFormat.E", "\"x.f\" was opened as E.\nF: it cannot read it"},  // it throws
      {L"x.a", "AA half", "a!", L"DocFormat.A", "Half of it was left out."},
      {L"x.a", "AA mute\x01", "a!ce!!", nullptr},
      {L"x.u", "text", "made gone ce!", L"DocFormat.E", "\"x.u\" was opened as E.\nUseless: it is no IDocFormat"},
      {L"x.w", "AAAAA", "a!", L"DocFormat.A"},  // W only writes
      {L"empty.a", "", "a!", L"DocFormat.A"},
      {L"\x4E2D\xD83D\xDE00 .a", "AA", "a!", L"DocFormat.A"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(narrow(row.name) + ' ' + row.content);
    put(folder.file(row.name), row.content);
    journal().clear();
    IDocument* const document = manager.openDocument(folder.file(row.name).c_str());
    EXPECT_EQ(journal(), row.made);
    ASSERT_EQ(document != nullptr, row.by != nullptr) << report();
    if (!document) {
      for (const char* const line :
           {"x.a\" cannot be opened.\nUseless: it neither begins nor is called as such files are\n",
            "\nB: it neither begins", "\nA: it", "\nE: it", "\nPlain C: it"})
        EXPECT_NE(report().find(line), std::string::npos) << report();
      continue;
    }
    EXPECT_STREQ(document->formatName(), row.by);
    EXPECT_STREQ(document->title(), row.name);
    EXPECT_EQ(std::wstring(document->location()), folder.file(row.name).wstring());
    EXPECT_EQ(readFrom, document->location());
    EXPECT_TRUE(note(document).text == row.content && !document->isModified());
    EXPECT_EQ(document->isReadOnly(), row.by[10] != L'A' && row.by[10] != L'B');
    EXPECT_EQ(report(), row.said);
    EXPECT_TRUE(manager.closeDocument(document));
  }
}

TEST_F(DocManagerTest, SaysWhatCannotBeOpened) {
  const std::pair<std::wstring, const char*> rows[] = {
      {L"", "names no file"},
      {folder.file(L"none.a"), "File not found"},
      {folder.path(), "It is a folder."},
      {folder.file(L"no/such/x.a"), "not found"},
      {folder.file(L"CON"), "names no file"},
      {L"\\\\.\\pipe\\x", "names no file"},
      {L"scheme:x", "Nothing can be read there"},
  };
  for (const auto& [location, why] : rows) {
    EXPECT_FALSE(manager.openDocument(location.c_str()));
    EXPECT_NE(report().find(why), std::string::npos) << narrow(location) << ": " << report();
  }
  EXPECT_FALSE(manager.openDocument(nullptr) || manager.newDocument(nullptr) || manager.newDocument(L"DocFormat.B"));
  EXPECT_FALSE(manager.closeDocument(nullptr) || manager.saveDocument(nullptr) || manager.documentAt(-1));
  EXPECT_FALSE(manager.saveDocumentAs(nullptr, L"x", nullptr) || manager.documentCount() || manager.activeDocument());
}

TEST_F(DocManagerTest, OpensAFileOnceUnderAllItsNames) {
  const auto path = folder.file(L"one.a"), link = folder.file(L"two.a");
  put(path, "AA");
  ASSERT_TRUE(CreateHardLinkW(link.c_str(), path.c_str(), nullptr));
  std::wstring slashes = path.wstring(), shouted = path.wstring();
  std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
  CharUpperW(shouted.data());
  std::filesystem::current_path(folder.path());
  IDocument* const first = manager.openDocument(path.c_str());
  for (const std::wstring& name :
       {slashes, shouted, L"file:///" + slashes, std::wstring(L"one.a"), L"\\\\?\\" + path.wstring(), link.wstring(),
        path.parent_path().wstring() + L"\\x\\..\\one.a"}) {
    manager.setActiveDocument(nullptr);
    EXPECT_EQ(manager.openDocument(name.c_str()), first) << narrow(name);
    EXPECT_EQ(manager.activeDocument(), first);
  }
  EXPECT_EQ(manager.documentCount(), 1);
  std::filesystem::current_path(folder.path().parent_path());
  // Two files behind names longer than plain ones may be.
  const std::wstring longName(200, L'n');
  const std::wstring longest = L'\\' + std::wstring(253, L'n') + L".a";
  for (const wchar_t* const name : {L"\\1.a", L"\\2.a", longest.c_str()}) {
    const std::wstring deep = L"\\\\?\\" + folder.file(longName).wstring();
    CreateDirectoryW(deep.c_str(), nullptr);
    put(deep + name, "AA");
    IDocument* const one = manager.openDocument((folder.file(longName).wstring() + name).c_str());
    ASSERT_TRUE(one) << report();
    note(one).change("AA long");
    EXPECT_TRUE(manager.saveDocument(one)) << report();
    EXPECT_EQ(bytesOf(deep + name), "AA long");
    EXPECT_EQ(one->location(), folder.file(longName).wstring() + name);
  }
  EXPECT_EQ(manager.documentCount(), 4);
}

TEST_F(DocManagerTest, LeavesTheFileAsItWasWhenItCannotSave) {
  const auto path = folder.file(L"x.a"), other = folder.file(L"other.a");
  put(path, "AA old");
  put(other, "AA other");
  Note& document = note(manager.openDocument(path.c_str()));
  ASSERT_TRUE(manager.openDocument(other.c_str()));
  Note& fresh = note(manager.newDocument(L"DocFormat.A"));
  const struct {
    const char* why;
    std::function<bool()> save;
  } rows[] = {
      {"It is read-only",
       [&] { return SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY), manager.saveDocument(&document); }},
      {"It is read-only, or in use",
       [&] {
         const std::ifstream reader(path);  // others may not take its place
         return manager.saveDocument(&document);
       }},
      {"It is a folder.", [&] { return manager.saveDocumentAs(&document, folder.path().c_str(), nullptr); }},
      {"cannot hold it", [&] { return document.change("unfit"), manager.saveDocument(&document); }},
      {"is open itself", [&] { return manager.saveDocumentAs(&document, other.c_str(), nullptr); }},
      {"names no file", [&] { return manager.saveDocumentAs(&document, L"http://h/x.a", nullptr); }},
      {"No format is there", [&] { return manager.saveDocumentAs(&document, path.c_str(), L"DocFormat.C"); }},
      {"No format is there", [&] { return manager.saveDocumentAs(&document, path.c_str(), L"DocFormat.None"); }},
      {"it is no IDocFormat", [&] { return manager.saveDocumentAs(&document, path.c_str(), L"DocFormat.Useless"); }},
      {"not found", [&] { return manager.saveDocumentAs(&document, folder.file(L"no/x.a").c_str(), nullptr); }},
      {"has no name yet", [&] { return manager.saveDocument(&fresh); }},
      {"changed by another program", [&] { return put(path, "AA newer"), manager.saveDocument(&document); }},
  };
  for (const auto& row : rows) {
    document.change("AA new");
    fresh.change("AA fresh");
    EXPECT_FALSE(row.save());
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_NE(report().find(row.why), std::string::npos) << report();
    EXPECT_TRUE(document.isModified() && fresh.isModified() && bytesOf(path) != "AA new");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
  }
}

class Ear final : public BSmartObject, public IGlobalEventTarget {
  CORVIX_IDENTITY(Ear, 0x131EA82D, 0xE1C5C153, 0x26DCB2D7, 0x2F216C01, BSmartObject, IGlobalEventTarget)
 public:
  Ear() { postGlobalEvents().addListener(static_cast<IGlobalEventTarget*>(this)); }
  ~Ear() override { postGlobalEvents().removeListener(static_cast<IGlobalEventTarget*>(this)); }
  int onGlobalEvent(IGlobalEvent& event) override {
    const IDocumentEvent* const about = corvix::query<IDocumentEvent>(&event);
    if (!about) return notify::kGoOn;
    told += narrow(event.name()).substr(9) + ':' + (about->document() ? narrow(about->document()->title()) : "") + ' ';
    if (told.ends_with(closeAt)) documents().closeDocument(about->document());
    return notify::kGoOn;
  }
  std::string told, closeAt = "nowhere";
};

TEST_F(DocManagerTest, TellsWhatHappensInItsOrder) {
  Ear ear;
  const auto expect = [&](const char* told) {
    EXPECT_EQ(ear.told, told);
    ear.told.clear();
  };
  put(folder.file(L"1.a"), "AA");
  put(folder.file(L"2.a"), "AA");
  IDocument* const one = manager.openDocument(folder.file(L"1.a").c_str());
  expect("Opened:1.a Activated:1.a ");
  Note& fresh = note(manager.newDocument(L"DocFormat.A"));
  const std::string title = narrow(fresh.title());
  EXPECT_TRUE(title.starts_with("Untitled ") && !fresh.isModified() && fresh.location()[0] == 0);
  ear.told.clear();
  fresh.change("AA");
  EXPECT_TRUE(manager.saveDocumentAs(&fresh, folder.file(L"3.b").c_str(), L""));
  expect("Saved:3.b ");
  EXPECT_TRUE(std::wstring_view(fresh.formatName()) == L"DocFormat.B" && !fresh.isModified());
  EXPECT_TRUE(manager.saveDocumentAs(&fresh, folder.file(L"4.w").c_str(), nullptr));  // a copy
  expect("");
  EXPECT_TRUE(std::wstring_view(fresh.title()) == L"3.b" && bytesOf(folder.file(L"4.w")) == "AA");
  for (int again = 0; again < 2; ++again) {
    manager.openDocument(folder.file(L"1.a").c_str());
    expect("Activated:1.a ");
  }
  EXPECT_TRUE(manager.closeDocument(one));
  expect("Closing:1.a Activated:3.b Closed: ");
  for (const char* const at : {"Opened:2.a ", "Activated:2.a "}) {
    ear.closeAt = at;
    EXPECT_FALSE(manager.openDocument(folder.file(L"2.a").c_str())) << "somebody closed it at once";
  }
  ear.closeAt = "Closing:3.b ";
  manager.closeDocument(&fresh);
  EXPECT_EQ(manager.documentCount(), 0);
}

TEST_F(DocManagerTest, AsksBeforeAnythingIsLost) {
  const struct {
    DocAnswer answer;
    bool closes;
    const char* left;  // in the file
  } rows[] = {{DocAnswer::Yes, true, "AA new"},
              {DocAnswer::No, true, "AA old"},
              {DocAnswer::Cancel, false, "AA old"},
              {static_cast<DocAnswer>(77), false, "AA old"}};
  const auto path = folder.file(L"x.a");
  for (const auto& row : rows) {
    for (const bool hasChanged : {false, true}) {
      put(path, "AA old");
      Note& document = note(manager.openDocument(path.c_str()));
      const auto kept = Ref<Note>::share(&document);
      document.change("AA new");
      if (hasChanged) put(path, "AA other");
      {
        const auto answers = make<Answers>();
        answers->answer = row.answer;
        EXPECT_EQ(hasChanged ? manager.saveDocument(&document) : manager.closeDocument(&document),
                  hasChanged ? row.answer == DocAnswer::Yes : row.closes);
        EXPECT_NE(answers->asked.find(hasChanged ? "was changed by another program" : "\"x.a\" has changed"),
                  std::string::npos);
      }
      EXPECT_EQ(bytesOf(path), hasChanged && row.answer != DocAnswer::Yes ? "AA other"
                               : hasChanged                               ? "AA new"
                                                                          : row.left);
      EXPECT_TRUE(!manager.documentCount() || manager.closeDocument(manager.documentAt(0))) << "unattended";
    }
  }
  put(path, "AA old");
  Note& document = note(manager.openDocument(path.c_str()));
  std::filesystem::remove(path);
  document.change("AA new");
  EXPECT_TRUE(manager.saveDocument(&document)) << "the file that is gone is written anew: " << report();
  EXPECT_EQ(bytesOf(path), "AA new");
  document.change("AA busy");
  EXPECT_TRUE(manager.saveDocument(&document)) << "its format saves and closes it meanwhile: " << report();
}

int killsAt = 0;  // so many calls later

// A process that is ended at a call of the system leaves the file as it was before that call.
template <class Name, class Function>
struct Killing;
template <class Name, class Result, class... Arguments>
struct Killing<Name, Result(WINAPI*)(Arguments...)> {
  static Result WINAPI call(Arguments... arguments) {
    if (--killsAt == 0) TerminateProcess(GetCurrentProcess(), 77);
    return real(arguments...);
  }
  static inline Result(WINAPI* real)(Arguments...) = nullptr;
};
#define KILLS(function)                                                           \
  {                                                                               \
    struct Name;                                                                  \
    using Killer = Killing<Name, decltype(&::function)>;                          \
    void** const slot = importSlotOf(GetModuleHandleW(L"corvix.dll"), #function); \
    ASSERT_TRUE(slot) << #function;                                               \
    auto& typed = *reinterpret_cast<decltype(&::function)*>(slot);                \
    Killer::real = typed;                                                         \
    static ImportSlot<decltype(&::function)> held(typed, Killer::call);           \
  }

TEST_F(DocManagerTest, LeavesOneWholeFileWhereverItIsKilled) {
  const auto path = std::filesystem::temp_directory_path() / "corvix-killed.a";  // the ended process has another folder
  const std::string before = "AA old", after = "AA" + std::string(40000, 'n');
  int kills = 0;
  for (bool isDone = false; !isDone; ++kills) {
    put(path, before);
    const auto save = [&] {
      Note& document = note(manager.openDocument(path.c_str()));
      document.change(after.c_str());
      KILLS(WriteFile)
      KILLS(FlushFileBuffers)
      KILLS(MoveFileExW)
      killsAt = kills + 1;
      TerminateProcess(GetCurrentProcess(), manager.saveDocument(&document) ? 0 : 1);
    };
    const auto isExpected = [&](int code) {
      isDone = code == 0;
      return isDone || code == 77;
    };
    EXPECT_EXIT(save(), isExpected, "");
    EXPECT_TRUE(bytesOf(path) == before || bytesOf(path) == after) << "killed at call " << kills + 1;
    EXPECT_TRUE(bytesOf(path) == after || !isDone);
  }
  EXPECT_GT(kills, 5);
  std::filesystem::remove(path);
}

TEST_F(DocManagerTest, LeavesNothingBehindAThousandRounds) {
  const auto path = folder.file(L"x.a");
  put(path, "AA");
  std::size_t blocks = 0;
  std::uintptr_t handle = 0;
  for (int round = 0; round < 1010; ++round) {
    IDocument* const document = manager.openDocument(path.c_str());
    ASSERT_TRUE(document && document->history());
    if (round % 100 == 10) {
      note(document).change("AA");
      ASSERT_TRUE(manager.saveDocument(document));
    }
    ASSERT_TRUE(manager.closeDocument(document));
    if (round != 10 && round != 1009) continue;
    const HANDLE fresh = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(fresh);
    if (round == 10) blocks = heapBlocksInUse(), handle = reinterpret_cast<std::uintptr_t>(fresh);
    if (round == 10) continue;
    EXPECT_TRUE(heapBlocksInUse() <= blocks && reinterpret_cast<std::uintptr_t>(fresh) == handle);
  }
}

TEST_F(DocManagerTest, KeepsTheLatestInTheRegistryWhateverElseIsThere) {
  wchar_t program[MAX_PATH];
  std::wstring key(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
  std::replace(key.begin(), key.end(), L'\\', L'/');
  HKEY recent = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, (L"Software\\Marrowby\\Corvix\\" + key + L"\\Recent").c_str(), 0, nullptr, 0,
                  KEY_ALL_ACCESS, nullptr, &recent, nullptr);
  std::set<std::wstring> names;  // in the order in which the system adds them fast
  for (int i = soak(5000, 100000); i > 0; --i) names.insert(std::to_wstring(i));
  for (const std::wstring& name : names) {
    RegSetValueExW(recent, name.c_str(), 0, name == L"2" ? REG_DWORD : REG_SZ,
                   reinterpret_cast<const BYTE*>(name.c_str()), name == L"2" ? 4 : static_cast<DWORD>(2 * name.size()));
  }
  const auto list = [&] {
    std::string all;
    for (i32 i = 0; i < manager.recentCount(); ++i)
      all += narrow(manager.recentAt(i)).substr(narrow(manager.recentAt(i)).rfind('\\') + 1) + ' ';
    return all;
  };
  manager.forgetRecent(L"none");  // reads anew
  EXPECT_EQ(list(), "1 3 4 ") << "the second is no text, four are wanted";
  for (const wchar_t* const name : {L"1.a", L"2.a", L"3.a", L"4.a", L"5.a", L"2.a"}) {
    put(folder.file(name), "AA");
    manager.openDocument(folder.file(name).c_str());
  }
  EXPECT_EQ(list(), "2.a 5.a 4.a 3.a ");
  const auto wants = [&](i32 count) { shell().settings()->setValue(L"Interface", L"RecentFileNo", Variant(count)); };
  wants(2);
  EXPECT_EQ(list(), "2.a 5.a ");
  wants(-1);
  EXPECT_TRUE(list().empty() && !manager.recentAt(0) && !manager.recentAt(-1));
  wants(4);
  manager.forgetRecent(folder.file(L"5.A").c_str());
  EXPECT_EQ(list(), "2.a 4.a 3.a ");
  manager.forgetRecent(nullptr);
  EXPECT_EQ(list(), "");
  RegDeleteTreeW(recent, nullptr);
  RegCloseKey(recent);
}

TEST_F(DocManagerTest, OffersFiltersWithoutMakingAFormat) {
  journal().clear();
  // Those of the product are there, too.
  const auto all = [&](bool forWriting) {
    const auto filters = Ref<IBCollection>::adopt(manager.dialogFilters(forWriting));
    std::string text;
    for (i32 i = 0; i < filters->count(); ++i) {
      const IFileFilter& one = *query<IFileFilter>(filters->item(i));
      const std::string format = narrow(one.formatName());
      if (format.empty() || format.size() == 11 || format.ends_with("Useless"))
        text += narrow(one.description()) + '|' + narrow(one.pattern()) + '|' + format + '\n';
    }
    EXPECT_FALSE(filters->item(-1) || filters->item(filters->count()));
    return text;
  };
  EXPECT_EQ(all(true),
            "Useless|*.u|DocFormat.Useless\nA|*.a|DocFormat.A\nB|*.b; ?.bb|DocFormat.B\nW|*.w|DocFormat.W\n");
  EXPECT_TRUE(all(false).starts_with("All documents|*.u;"));
  EXPECT_NE(all(false).find("*.a;*.b; ?.bb;*.C;*.d;*.d;*.f|\nUseless|"), std::string::npos);
  EXPECT_TRUE(all(false).ends_with("\nF|*.f|DocFormat.F\nAll files|*.*|\n"));
  EXPECT_EQ(journal(), "");
}

// Stops what it is shown when it is told to.
class Stopper final : public BSmartObject, public IProgressCallback {
  CORVIX_IDENTITY(Stopper, 0x6CC0A4AC, 0xCC09CF73, 0x9C087188, 0x000666B6, BSmartObject, IProgressCallback)
 public:
  Stopper() {
    for (const auto which : kAll) shellNotifications(which).addListener(static_cast<IProgressCallback*>(this));
  }
  ~Stopper() override {
    for (const auto which : kAll) shellNotifications(which).removeListener(static_cast<IProgressCallback*>(this));
  }
  int onStartProgress(const Progress&) override { return ++open, notify::kGoOn; }
  int onChangeProgress(const Progress& now) override {
    steps.push_back(now.position);
    return now.position > stopAt ? notify::kStop : notify::kGoOn;
  }
  int onUpdateProgress(const Progress&) override { return notify::kGoOn; }
  int onStopProgress(const Progress&) override { return --open, notify::kGoOn; }
  static constexpr ShellNotification kAll[] = {ShellNotification::StartProgress, ShellNotification::ChangeProgress,
                                               ShellNotification::StopProgress};
  std::vector<i32> steps;
  i32 stopAt = 1 << 30;
  int open = 0;
};

TEST_F(DocManagerTest, ShowsHowFarItIsAndStops) {
  const auto path = folder.file(L"x.a");
  put(path, "AA" + std::string(1000000, 'x'));
  Stopper stopper;
  Note& document = note(manager.openDocument(path.c_str()));
  EXPECT_TRUE(stopper.steps.size() > 10 && std::is_sorted(stopper.steps.begin(), stopper.steps.end()));
  document.setPlace(document.location(), document.title(), document.formatName(), false);
  document.change(document.text.c_str());
  stopper.stopAt = 200000;
  EXPECT_FALSE(manager.saveDocument(&document));
  EXPECT_NE(report().find("It was stopped."), std::string::npos);
  EXPECT_TRUE(bytesOf(path) == document.text && document.isModified());
  manager.closeDocument(&document);
  EXPECT_FALSE(manager.openDocument(path.c_str()));
  EXPECT_NE(report().find("It was stopped."), std::string::npos);
  EXPECT_EQ(stopper.open, 0);
}

TEST(Report, HoldsSoManyLinesAndNoMore) {
  const auto object = Ref<IBSmartObject>::adopt(createReport());
  IBReport& report = *query<IBReport>(object.get());
  for (int i = 0; i < 10000; ++i) report.addLine(std::wstring(i < 2 ? 10000 : 1, L'x').c_str());
  EXPECT_EQ(report.lineCount(), 4096);
  EXPECT_EQ(std::wcslen(report.lineAt(1)), 4096u);
  EXPECT_FALSE(report.lineAt(-1) || report.lineAt(4096));
  report.clear();
  report.addLine(nullptr);
  report.addLine(L"b");
  EXPECT_EQ(reportText(report).view(), L"\nb");
}

}  // namespace
}  // namespace corvix
