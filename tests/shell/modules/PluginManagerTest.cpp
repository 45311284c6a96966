#include "shell/PluginManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include <windows.h>

#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlNode.h"
#include "shell/ClassFactory.h"
#include "shell/ModuleResources.h"
#include "shell/Shell.h"
#include "shell/menus/MenuManager.h"
#include "tests/support/BoxAnswer.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"

namespace corvix {
namespace {

namespace fs = std::filesystem;

fs::path programFolder() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}

using testing_support::bytesOf;
using namespace std::string_literals;

void write(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// A folder of its own with copies of modules, some of them damaged on the way.
class Folder {
 public:
  // A process cannot remove modules that it has loaded: what is left of old runs goes now.
  Folder() {
    std::error_code ignored;
    const auto old = fs::file_time_type::clock::now() - std::chrono::minutes(10);
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path())) {
      if (entry.path().filename().string().starts_with("corvix-modules-") && entry.last_write_time(ignored) < old) {
        fs::remove_all(entry.path(), ignored);
      }
    }
    int number = 0;
    do path_ = fs::temp_directory_path() / ("corvix-modules-" + std::to_string(number++));
    while (!fs::create_directory(path_));
  }
  ~Folder() {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(path_)) fs::remove(entry.path(), ignored);
    fs::remove(path_, ignored);
  }
  const fs::path& path() const { return path_; }
  void copy(const fs::path& from, const std::string& name) { fs::copy_file(from, path_ / name); }
  // The greeter with something else written over it.
  void damage(const std::string& name, std::size_t at, const std::string& bytes) {
    std::string module = bytesOf(greeter());
    module.replace(at, bytes.size(), bytes);
    write(path_ / name, module);
  }
  static fs::path greeter() { return programFolder() / "plugins" / "greeter.dll"; }

 private:
  fs::path path_;
};

IShell& shell() {
  IShell& instance = *IShell::getInstance();
  instance.setUnattended(true);
  return instance;
}

IPluginModule* moduleNamed(const std::wstring& name) {
  IPluginManager& manager = *shell().pluginManager();
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    if (fs::path(manager.moduleAt(i)->path()).filename() == name) return manager.moduleAt(i);
  }
  return nullptr;
}

// Little-endian words of a PE file.
u32 wordAt(const std::string& bytes, std::size_t at) {
  u32 word = 0;
  std::memcpy(&word, bytes.data() + at, sizeof word);
  return word;
}
std::size_t headerOf(const std::string& module) { return wordAt(module, 0x3C); }

int rowAsked = 0;

template <int number>
IBSmartObject* noteRow() {
  rowAsked = number;
  return nullptr;
}

template <std::size_t count>
void expectEachRowFound(const FactoryRow (&rows)[count]) {
  TableFactory factory(rows);
  const stype_info& any = IBSmartObject::classInfo();
  for (const auto& [name, row] : {std::pair(L"b", 1), {L"a", 2}, {L"ab", 3}, {L"", 5}, {L"A", 0}, {L"abc", 0}}) {
    rowAsked = 0;
    factory.createObject(name, any);
    EXPECT_EQ(rowAsked, row) << count << " rows, " << name;
  }
  EXPECT_EQ(factory.createObject(nullptr, any), nullptr);
}

TEST(TableFactory, TheFirstRowOfANameIsAskedAmongFewAndMany) {
  expectEachRowFound(
      {{L"b", noteRow<1>}, {L"a", noteRow<2>}, {L"ab", noteRow<3>}, {L"a", noteRow<4>}, {L"", noteRow<5>}});
  constexpr auto other = noteRow<9>;
  expectEachRowFound({{L"y", other},
                      {L"b", noteRow<1>},
                      {L"a", noteRow<2>},
                      {L"ab", noteRow<3>},
                      {L"a", noteRow<4>},
                      {L"", noteRow<5>},
                      {L"x", other},
                      {L"a", other},
                      {L"abd", other},
                      {L"B", other}});
}

constexpr auto kFailed = ModuleState::Failed;

// Where a module has what tells of its word size, and what another's says.
constexpr bool kIs64 = sizeof(void*) == 8;
constexpr std::size_t kDirectories = offsetof(IMAGE_NT_HEADERS, OptionalHeader.DataDirectory);
const char* const kOtherMachine = kIs64 ? "\x4C\x01" : "\x64\x86";

struct ModuleRow {
  const wchar_t* name;
  const wchar_t* reason;     // part of it
  bool isDescribed = false;  // fails only when it is asked for "Faulty." and its name
  ModuleState asked = kFailed;
  std::wstring file() const { return name + std::wstring(L".dll"); }
};

const ModuleRow kRows[] = {
    {L"a_text", L"not a Windows module"},
    {L"an_elf", L"not a Windows module"},
    {L"damaged_magic", L"malformed"},
    {L"damaged_type", L"malformed"},
    {L"damaged_version", L"malformed"},
    {L"empty", L"not a Windows module"},
    {L"empty_descriptor", L"descriptor"},
    {L"header_only", L"cut short"},
    {L"no_descriptor", L"no descriptor", false, ModuleState::NoPlugin},
    {L"no_plugin", L"no Plugin element"},
    {L"other_machine", kIs64 ? L"is made for 32-bit x86, this program runs modules for 64-bit x86."
                             : L"is made for 64-bit x86, this program runs modules for 32-bit x86."},
    {L"resources_outside", L"descriptor"},
    {L"truncated", L"cut short"},
    {L"another_sdk", L"It is built for SDK 0.2.0, this is 0.1.0."},
    {L"crashes_on_load", L"crashed while it was starting", true},
    {L"crashes_when_asked", L"crashed: an access violation (0xC0000005)", true},
    {L"makes_nothing", L"made no such object", true, ModuleState::Loaded},
    {L"missing_import", L"absent_helper.dll, which missing_import.dll needs, was not found", true},
    {L"needs_absent", L"It needs \"Nobody.has.this\" of version 1.2 or newer, which no module declares.", true,
     ModuleState::Described},
    {L"no_factory", L"does not export queryClassFactoryLocal", true},
    {L"null_factory", L"no class factory", true},
    {L"refuses_to_start", L"refused to start", true},
    {L"throws", L"no paper left", true, ModuleState::Loaded},
};

void fill(Folder& folder) {
  const std::string greeter = bytesOf(Folder::greeter());
  const std::size_t block = greeter.find("xmlbin");
  write(folder.path() / "a_text.dll", "I am no module.\n");
  write(folder.path() / "an_elf.dll", "\177ELF\1\1\1" + std::string(200, '\0'));
  write(folder.path() / "empty.dll", "");
  write(folder.path() / "truncated.dll", greeter.substr(0, 2000));
  write(folder.path() / "header_only.dll", greeter.substr(0, headerOf(greeter) + 10));
  folder.damage("damaged_magic.dll", block, "xmlbiN");
  folder.damage("damaged_version.dll", block + 6, "\1");
  folder.damage("damaged_type.dll", block + 10, "\4");
  std::string renamed = greeter;
  for (std::size_t at; (at = renamed.find(std::string("P\0l\0u\0g\0i\0n\0", 12), block)) != std::string::npos;) {
    renamed[at] = 'p';
  }
  write(folder.path() / "no_plugin.dll", renamed);
  folder.damage("other_machine.dll", headerOf(greeter) + 4, kOtherMachine);
  // The third data directory is that of the resources.
  folder.damage("resources_outside.dll", headerOf(greeter) + kDirectories + 2 * 8, std::string("\0\0\xF0\0", 4));
  for (const ModuleRow& row : kRows) {
    const fs::path built = programFolder() / "faulty" / row.file();
    if (fs::exists(built)) folder.copy(built, built.filename().string());
  }
}

TEST(PluginManager, GoesOnPastEveryKindOfBadModule) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  fill(folder);
  EXPECT_EQ(manager.scanFolder(folder.path().c_str()), static_cast<i32>(std::size(kRows)));
  EXPECT_EQ(manager.scanFolder(folder.path().c_str()), 0) << "known already";
  for (const ModuleRow& row : kRows) {
    SCOPED_TRACE(fs::path(row.name).string());
    const IPluginModule* const module = moduleNamed(row.file());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(GetModuleHandleW(module->path()), nullptr) << "its code is not loaded yet";
    EXPECT_EQ(module->state(), row.isDescribed ? ModuleState::Described : row.asked);
    if (row.isDescribed) {
      EXPECT_STREQ(module->reason(), L"");
      const std::wstring wanted = std::wstring(L"Faulty.") + row.name;
      EXPECT_EQ(manager.createObject(wanted.c_str()), nullptr);
      EXPECT_EQ(manager.createObject(wanted.c_str()), nullptr) << "nor the second time";
      EXPECT_EQ(module->state(), row.asked);
    }
    EXPECT_NE(std::wstring_view(module->reason()).find(row.reason), std::wstring_view::npos)
        << fs::path(module->reason()).string();
  }
  EXPECT_TRUE(createObject<IBSmartObject>(manager, L"Example.Greeter")) << "the good ones still work";
  for (const ModuleRow& row : kRows) {
    if (row.isDescribed) continue;
    EXPECT_TRUE(DeleteFileW((folder.path() / row.file()).c_str()))
        << fs::path(row.name).string() << " is still held open";
  }
}

TEST(PluginManager, AModuleOfAnotherContractStaysListedAndNeverRuns) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  folder.copy(programFolder() / "faulty" / "another_sdk.dll", "copied_sdk.dll");
  const fs::path path = folder.path() / "copied_sdk.dll";
  EXPECT_EQ(manager.loadModule(path.c_str()), nullptr);
  EXPECT_TRUE(Ref<IBCollection>::adopt(manager.findByName(L"Faulty.another_sdk")));
  EXPECT_EQ(manager.createObject(L"Faulty.another_sdk"), nullptr);
  EXPECT_EQ(GetModuleHandleW(path.c_str()), nullptr);
  EXPECT_STREQ(moduleNamed(L"copied_sdk.dll")->reason(), L"It is built for SDK 0.2.0, this is 0.1.0.");
}

TEST(PluginManager, AStampDecidesByWhatTheContractIs) {
  IPluginManager& manager = *shell().pluginManager();
  const struct {
    testing_support::AttributeRows stamp;
    const wchar_t* reason;
  } rows[] = {{{}, L""},
              {{{L"SdkVersion", L"0.1.0"}, {L"SdkCompiler", L"gnu"}, {L"SdkBits", kIs64 ? L"64" : L"32"}}, L""},
              {{{L"SdkVersion", L"0.1"}}, L""},
              {{{L"SdkVersion", L"0.1.77"}}, L""},
              {{{L"SdkVersion", L"0.10.0"}}, L"It is built for SDK 0.10.0, this is 0.1.0."},
              {{{L"SdkVersion", L"1.1.0"}}, L"It is built for SDK 1.1.0, this is 0.1.0."},
              {{{L"SdkVersion", L"soon"}}, L"It is built for SDK soon, this is 0.1.0."},
              {{{L"SdkCompiler", L"msvc"}}, L"It is built by a compiler of the family msvc, this is gnu."},
              {{{L"SdkBits", L""}}, L""},
              {{{L"SdkBits", L"16"}},
               kIs64 ? L"It is built for 16 bits, this is 64." : L"It is built for 16 bits, this is 32."}};
  for (const auto& row : rows) {
    testing_support::Descriptor().plugin(row.stamp).registerIn(manager);
    EXPECT_STREQ(manager.moduleAt(manager.moduleCount() - 1)->reason(), row.reason);
  }
}

// What is needed, the version that there is, what is said.
TEST(PluginManager, NeedsAreCountedInTheVersionsOfWhoDeclares) {
  IPluginManager& manager = *shell().pluginManager();
  const struct {
    const wchar_t* wanted;
    const wchar_t* has;  // null: nothing
    bool isEnough;
  } rows[] = {{L"", nullptr, true},
              {L"0.0", nullptr, true},
              {L"0.1", nullptr, false},
              {L"1.9", L"1.10", true},
              {L"1.10", L"1.9", false},
              {L"1.2", L"1.2.0", true},
              {L"1.2.0.1", L"1.2", false},
              {L"01.2", L"1.02", true},
              {L"2", L"1.99999999999999999999", false},
              {L"1", L"99999999999999999999", true},
              {L"1.0", L"soon", false},
              {L"1.2", L"1.2beta", true}};
  int number = 0;
  for (const auto& row : rows) {
    const std::wstring needed = L"Needed." + std::to_wstring(++number), needing = L"Needing." + std::to_wstring(number);
    testing_support::Descriptor second;
    second.interface_(needing.c_str()).requires_(needed.c_str(), row.wanted).registerIn(manager);
    const IPluginModule& module = *manager.moduleAt(manager.moduleCount() - 1);
    manager.createObject(needing.c_str());
    EXPECT_TRUE(std::wstring_view(module.reason()).ends_with(L"which no module declares.")) << number;
    testing_support::Descriptor first;
    if (row.has) first.plugin({{L"Version", row.has}});
    first.interface_(needed.c_str()).registerIn(manager);
    manager.createObject(needing.c_str());
    EXPECT_EQ(std::wstring_view(module.reason()).starts_with(L"It needs "), !row.isEnough)
        << number << fs::path(module.reason()).string();
  }
}

TEST(PluginManager, NeedsBeyondTheLimitAreLeftOutAndSaid) {
  IPluginManager& manager = *shell().pluginManager();
  testing_support::Descriptor descriptor;
  for (int i = 0; i < 65; ++i) descriptor.requires_(L"AGDC.Screen", L"");
  descriptor.registerIn(manager);
  EXPECT_STREQ(manager.moduleAt(manager.moduleCount() - 1)->reason(),
               L"Requirements left out: 1 (a module has at most 64).");
}

TEST(PluginManager, ACircleOfNeedsIsNamed) {
  IPluginManager& manager = *shell().pluginManager();
  using testing_support::Descriptor;
  Descriptor().interface_(L"Circle.a").requires_(L"Circle.b", L"").registerIn(manager);
  Descriptor().interface_(L"Circle.b").requires_(L"Circle.c", L"").registerIn(manager);
  Descriptor().interface_(L"Circle.c").requires_(L"Circle.a", L"").registerIn(manager);
  const IPluginModule& last = *manager.moduleAt(manager.moduleCount() - 1);
  const std::wstring of = L" of " + fs::path(last.path()).filename().wstring();
  EXPECT_EQ(manager.createObject(L"Circle.c"), nullptr);
  EXPECT_EQ(last.reason(), L"It needs \"Circle.a\"" + of + L", which needs \"Circle.b\"" + of +
                               L", which needs \"Circle.c\"" + of + L": they need each other in a circle.");
}

TEST(PluginManager, AThreeNumberIdentifierKeepsTheModuleUnregisteredButNotItsInterfaces) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  folder.copy(programFolder() / "faulty" / "three_number_guid.dll", "three_number_guid.dll");
  manager.scanFolder(folder.path().c_str());
  const IPluginModule* const module = moduleNamed(L"three_number_guid.dll");
  EXPECT_EQ(module->identifier(), nullptr);
  EXPECT_EQ(manager.findModule(PlainIdentifier({0xFA017E01, 1, 2, 0})), nullptr);
  EXPECT_TRUE(createObject<IBSmartObject>(manager, L"Faulty.three_number_guid"));
  EXPECT_EQ(manager.findByName(L"Faulty.twoNumbers"), nullptr);
  EXPECT_TRUE(Ref<IBCollection>::adopt(manager.findByName(L"Faulty.decimal")));
}

TEST(PluginManager, ExceptionsOfAnyKindAreReported) {
  IPluginManager& manager = *shell().pluginManager();
  const fs::path path = programFolder() / "faulty" / "throws.dll";
  IPluginModule* const module = manager.loadModule(path.c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(manager.createObject(L"Faulty.decimal"), nullptr);
  EXPECT_NE(std::wstring_view(module->reason()).find(L"unknown kind"), std::wstring_view::npos);
}

// What stands at the end is the newest failure; what is wrong with the descriptor is always said.
TEST(PluginManager, ReasonsComeAndGoAndStayReadable) {
  IPluginManager& manager = *shell().pluginManager();
  const IPluginModule* const module = manager.loadModule((programFolder() / "faulty" / "fickle.dll").c_str());
  ASSERT_NE(module, nullptr);
  const struct {
    bool isMade;
    const wchar_t* reason;
  } turns[] = {{false, L"Asked for \"Faulty.fickle\", its class factory made no such object. "},
               {true, L""},
               {false, L"Asked for \"Faulty.fickle\", its class factory threw: turn 3. "}};
  const std::wstring flaw = L"Its identifier does not have four numbers; the module cannot be found by identifier.";
  std::vector<std::pair<const wchar_t*, std::wstring>> said{{module->reason(), flaw}};
  for (const auto& turn : turns) {
    EXPECT_EQ(createObject<IBSmartObject>(manager, L"Faulty.fickle").get() != nullptr, turn.isMade);
    said.emplace_back(module->reason(), turn.reason + flaw);
  }
  for (int i = 0; i < 1000; ++i) manager.createObject(L"Faulty.fickle");
  for (const auto& [pointer, text] : said) EXPECT_EQ(pointer, text);
}

// A copy for each, as most of them end their module. Behind each, the program counts as before and its threads start.
TEST(PluginManager, NoFactoryHandsOutWhatIsNoObjectOrChangesTheProgram) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  const struct {
    const wchar_t* what;
    const wchar_t* reason;  // part of it; null: an object is made
    ModuleState state = kFailed;
  } rows[] = {{L"a number", L"made what is no object: an access violation"},
              {L"a text", L"made what is no object: "},
              {L"no info", L"crashed when it was asked for its identity: an access violation"},
              {L"no name", L"crashed when it was asked for its identity: an access violation"},
              {L"crashing query", L"crashed when it was asked for its identity: an access violation"},
              {L"raising query", L"crashed when it was asked for its identity: exception (0x00000000)"},
              {L"throwing query", L"threw when it was asked for its identity: no answer.", ModuleState::Loaded},
              {L"raise", L"crashed: exception (0x00000001)"},
              {L"raise nothing", L"crashed: exception (0x00000000)"},
              {L"silent", L"threw: an exception that says nothing.", ModuleState::Loaded},
              {L"itself", L"crashed: a stack overflow"},
              {L"full", L"crashed: an illegal instruction"},
              {L"mode", nullptr, ModuleState::Loaded}};
  for (const auto& row : rows) {
    SCOPED_TRACE(fs::path(row.what).string());
    const std::string name = fs::path(row.what).string() + ".dll";
    folder.copy(programFolder() / "faulty" / "careless.dll", name);
    const i32 before = manager.interfaceCount();
    ASSERT_NE(manager.loadModule((folder.path() / name).c_str()), nullptr);
    SetEnvironmentVariableW(L"CORVIX_CARELESS", row.what);
    IPluginInterface& entry = *manager.interfaceAt(before);
    ASSERT_STREQ(entry.name(), L"Faulty.careless");
    const auto made = Ref<IBSmartObject>::adopt(entry.createObject());
    EXPECT_EQ(made.get() != nullptr, row.reason == nullptr);
    EXPECT_EQ(entry.module()->state(), row.state);
    const std::wstring_view said = query<ICreationReport>(&entry)->reason();
    EXPECT_TRUE(row.reason ? said.find(row.reason) != said.npos : said.empty()) << fs::path(said).string();
    volatile double three = 3, seven = 7;
    EXPECT_EQ(three / seven * seven, 3);
    unsigned short mode = 0;
    asm volatile("fnstcw %0" : "=m"(mode));
    EXPECT_EQ(mode & 0x3F, 0x3F) << "no exceptions from numbers";
  }
  SetEnvironmentVariableW(L"CORVIX_CARELESS", nullptr);
}

TEST(PluginManager, AModuleMayAskForItselfWhileItIsLoaded) {
  IPluginManager& manager = *shell().pluginManager();
  ASSERT_NE(manager.loadModule((programFolder() / "faulty" / "asks_for_itself.dll").c_str()), nullptr);
  EXPECT_TRUE(createObject<IBSmartObject>(manager, L"Faulty.asks_for_itself"));
}

TEST(PluginManager, SaysWhyAFileCannotBeRead) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  folder.copy(Folder::greeter(), "held.dll");
  fs::create_directory(folder.path() / "folder.dll");
  const fs::path held = folder.path() / "held.dll";
  HANDLE const holder = CreateFileW(held.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const struct {
    const wchar_t* file;
    const wchar_t* reason;
  } rows[] = {{L"held.dll", L"The file is used by another process."},
              {L"absent.dll", L"There is no such file."},
              {L"absent\\absent.dll", L"There is no such folder."},
              {L"folder.dll", L"The file must not be read by this user, or it is a folder."}};
  for (const auto& row : rows) {
    const i32 at = manager.moduleCount();
    EXPECT_EQ(manager.loadModule((folder.path() / row.file).c_str()), nullptr) << row.reason;
    ASSERT_EQ(manager.moduleCount(), at + 1) << row.reason;
    EXPECT_STREQ(manager.moduleAt(at)->reason(), row.reason);
  }
  CloseHandle(holder);
}

TEST(PluginManager, OneFileInManySpellingsIsOneModule) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  folder.copy(programFolder() / "faulty" / "makes_nothing.dll", "a module.dll");
  const std::wstring path = folder.path().wstring();
  std::wstring forward = path;
  std::replace(forward.begin(), forward.end(), L'\\', L'/');
  wchar_t shortName[MAX_PATH];
  GetShortPathNameW((path + L"\\a module.dll").c_str(), shortName, MAX_PATH);
  const std::wstring spellings[] = {path + L"\\a module.dll",
                                    path + L"\\\\a module.dll",
                                    path + L"\\.\\A MODULE.DLL",
                                    forward + L"/a module.dll",
                                    L"\\\\?\\" + path + L"\\a module.dll",
                                    shortName};
  const i32 before = manager.moduleCount();
  const IPluginModule* const module = manager.loadModule(spellings[0].c_str());
  for (const std::wstring& spelling : spellings)
    EXPECT_EQ(manager.loadModule(spelling.c_str()), module) << fs::path(spelling).string();
  folder.copy(programFolder() / "faulty" / "makes_nothing.dll",
              "switched off.dll_old");  // whose short name ends in .DLL
  for (const wchar_t* const ending : {L"", L"\\", L"\\\\", L"/", L"\\."})
    EXPECT_EQ(manager.scanFolder((path + ending).c_str()), 0) << fs::path(ending).string();
  EXPECT_EQ(manager.moduleCount(), before + 1);
}

TEST(PluginManager, TwoModulesMayDeclareOneName) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  folder.copy(Folder::greeter(), "another.dll");
  manager.scanFolder(folder.path().c_str());
  const auto found = Ref<IBCollection>::adopt(manager.findByName(L"Example.Greeter"));
  ASSERT_EQ(found->count(), 2);
  std::set<std::wstring> modules;
  for (i32 i = 0; i < found->count(); ++i) {
    auto* const entry = query<IPluginInterface>(found->item(i));
    EXPECT_TRUE(Ref<IBSmartObject>::adopt(entry->createObject()));
    modules.insert(fs::path(entry->module()->path()).filename());
  }
  EXPECT_EQ(modules, (std::set<std::wstring>{L"greeter.dll", L"another.dll"}));
  auto* const report = query<ICreationReport>(found->item(0));
  report->reject(L"too polite");
  EXPECT_STREQ(report->reason(), L"The object made for \"Example.Greeter\" is of no use: too polite.");
  Ref<IBSmartObject>::adopt(query<IPluginInterface>(found->item(0))->createObject()).reset();
  EXPECT_STREQ(report->reason(), L"");
  EXPECT_EQ(found->item(2), nullptr);
  EXPECT_EQ(found->item(-1), nullptr);
}

// What comes while somebody looks is sorted in.
TEST(PluginManager, InterfacesOfOneNameStandInTheirOrderAtEveryTime) {
  IPluginManager& manager = *shell().pluginManager();
  const wchar_t* const rounds[][3] = {{L"3", L"1", L"3"}, {L"2", L"1", L"Low"}, {L"0x10", L"Hight", L"4"}};
  std::wstring seen;
  Ref<IBCollection> held;
  for (const auto& round : rounds) {
    testing_support::Descriptor descriptor;
    for (const wchar_t* order : round) descriptor.interface_(L"Test.ordered", order);
    descriptor.registerIn(manager);
    if (!held) held = Ref<IBCollection>::adopt(manager.findByName(L"Test.ordered"));
    for (i32 i = 0; i < held->count(); ++i)
      seen += query<IPluginInterface>(held->item(i))->attribute(L"Order") + std::wstring(L" ");
    seen += L"| ";
  }
  EXPECT_EQ(seen, L"1 3 3 | Low 1 1 2 3 3 | Low Hight 1 1 2 3 3 4 0x10 | ");
}

TEST(PluginManager, NamesAreExactAndAttributesAreNot) {
  IPluginManager& manager = *shell().pluginManager();
  EXPECT_EQ(manager.findByName(L"example.Greeter"), nullptr);
  EXPECT_EQ(manager.findByName(L""), nullptr);
  EXPECT_EQ(manager.createObject(L"Nobody.has.this"), nullptr);
  EXPECT_STREQ(manager.moduleAt(0)->attribute(L"manufacturer"), L"Teldane");
  EXPECT_EQ(manager.moduleAt(0)->attribute(L"No such"), nullptr);
}

// What other people's descriptors and programs count on.
TEST(PluginManager, MenusAreReadAsDataAndOnlyWhatIsWhole) {
  Folder folder;
  folder.copy(programFolder() / "plugins" / "worker.dll", "menu.dll");
  std::string spoilt = bytesOf(folder.path() / "menu.dll");
  for (std::size_t at = 0; (at = spoilt.find("xmlbin", at)) != spoilt.npos; ++at) {
    if (spoilt.find("M\0e\0n\0u\0"s, at) - at < 200) spoilt[at] = 'y';
  }
  write(folder.path() / "spoilt.dll", spoilt);
  EXPECT_EQ(shell().pluginManager()->scanFolder(folder.path().c_str()), 2);
  struct Row {
    const wchar_t *module, *resource;
    bool isThere;
  };
  const std::wstring tooLong(33, L'A');
  const Row rows[] = {{L"menu.dll", L"MENUTEMPL", true},     {L"menu.dll", L"PLUGININFO", true},
                      {L"menu.dll", L"menutempl", false},    {L"menu.dll", L"VIEWTEMPLATES", false},
                      {L"menu.dll", nullptr, false},         {L"menu.dll", L"#1", false},
                      {L"menu.dll", tooLong.c_str(), false}, {L"spoilt.dll", L"MENUTEMPL", false},
                      {L"spoilt.dll", L"PLUGININFO", true},  {L"corvix.dll", L"PLUGININFO", true},
                      {L"corvix.dll", L"MENUTEMPL", false}};
  for (const Row& row : rows) {
    IModuleResources* const resources = query<IModuleResources>(moduleNamed(row.module));
    EXPECT_EQ(static_cast<bool>(Ref<XMLNode>::adopt(resources->readResource(row.resource))), row.isThere) << row.module;
  }
  const auto menus = createObject<IMenuManager>(*shell().pluginManager(), L"IMenuManager.Instance");
  const auto menu = Ref<IBSmartObject>::adopt(menus->menu(L"Menu.Main")).as<IMenuItem>();
  ASSERT_TRUE(menu);
  EXPECT_GE(menu->childAt(0)->childCount(), 1);
  EXPECT_EQ(moduleNamed(L"menu.dll")->state(), ModuleState::Described);
}

TEST(PluginManager, TheLibrarysOwnDescriptor) {
  const struct {
    const wchar_t* name;
    ClassWords identifier;
    const wchar_t* humanName;
  } rows[] = {
      {L"AGDC.Screen", {0x292B8F67, 0x823045BA, 0xA24C5822, 0x447D802E}, L"Abstract graphics device context screen."},
      {L"AGDC.Memory", {0xAF5AA148, 0x38C34DC6, 0xBBC99F0D, 0xD75709BC}, L"Abstract graphics device context Memory."},
      {L"Supplier.file", {0x433EE9FE, 0x4D43DDCA, 0xB437B6A9, 0x3226F338}, nullptr},
      {L"Supplier.http", {0x1C603B15, 0x450A378B, 0xE08ACBAE, 0x85095F68}, nullptr},
      {L"Supplier.ftp", {0x1C603B15, 0x450A378B, 0xE08ACBAE, 0x85095F68}, nullptr},
      {L"Supplier.istream", {0x658F6969, 0x4F903933, 0xBF9EA5A2, 0xC295E14C}, nullptr},
      {L"IFMFontMachine.Instance", {0xAA61BA96, 0x4886DDDE, 0xE83B9587, 0x283689BF}, nullptr},
  };
  IPluginManager& manager = *shell().pluginManager();
  const IPluginModule* const own =
      manager.findModule(PlainIdentifier({0xD922852A, 0x279643B9, 0xBC23DC2F, 0x788DEB1D}));
  ASSERT_EQ(own, manager.moduleAt(0));
  EXPECT_EQ(own->settingCount(), 17);
  EXPECT_STREQ(own->settingAttribute(0, L"ITEM"), L"AssociatePDFWithEditor");
  EXPECT_EQ(own->settingAttribute(0, L"Items"), nullptr);
  i32 at = 0;
  for (const auto& row : rows) {
    const IPluginInterface* const entry = manager.interfaceAt(at++);
    EXPECT_STREQ(entry->name(), row.name);
    EXPECT_EQ(entry->identifier().words(), row.identifier);
    const auto object = createObject<IBSmartObject>(manager, row.name);
    EXPECT_NE(object->query(PlainIdentifier(row.identifier)), nullptr) << "answers to its identifier";
    EXPECT_STREQ(entry->attribute(L"sHumanName"), row.humanName);
    EXPECT_EQ(entry->module(), own);
  }
  EXPECT_NE(manager.interfaceAt(at)->module(), own) << "and no more";
}

// The system's loader keeps its lock after the first fault, so the case has a process of its own, ended hard.
[[noreturn]] void crashInLoaderAndFactory() {
  Folder folder;
  const std::string greeter = bytesOf(Folder::greeter());
  folder.damage("imports_outside.dll", headerOf(greeter) + kDirectories + 1 * 8, std::string("\0\0\xF0\0", 4));
  IShell& instance = *IShell::getInstance();
  const testing_support::BoxAnswer box(IDOK);
  const fs::path path = folder.path() / "imports_outside.dll";
  IPluginModule* const loaded = instance.pluginManager()->loadModule(path.c_str());
  const IPluginModule* const module = moduleNamed(L"imports_outside.dll");
  const bool right = !loaded && module && module->state() == ModuleState::Failed &&
                     std::wstring_view(module->reason()).find(L"0xC0000005") != std::wstring_view::npos &&
                     box.text == L"Can't load module" + path.wstring() + L". Module may be corrupt!" &&
                     box.caption == L"Teldane Quill" && box.buttons == L"O";
  if (!right) fprintf(stderr, "box [%ls] [%ls] %ls\n", box.caption.c_str(), box.text.c_str(), box.buttons.c_str());
  folder.copy(programFolder() / "faulty" / "crashes_when_asked.dll", "crashes_when_asked.dll");
  instance.setUnattended(false);
  instance.pluginManager()->scanFolder(folder.path().c_str());
  instance.pluginManager()->createObject(L"Faulty.crashes_when_asked");
  const bool advises = box.text.find(L"crashed: an access violation") != std::wstring::npos &&
                       box.text.ends_with(L"Save your work and start the program again.");
  if (!advises) fprintf(stderr, "box [%ls]\n", box.text.c_str());
  TerminateProcess(GetCurrentProcess(), right && advises ? 42 : 43);
  for (;;) Sleep(1000);
}

TEST(PluginManagerDeathTest, CrashesInTheSystemsLoaderAndInAFactoryAreSurvivedAndShown) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(crashInLoaderAndFactory(), testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace corvix
