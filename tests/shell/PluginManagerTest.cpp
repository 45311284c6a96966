#include "shell/PluginManager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <windows.h>

#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlNode.h"
#include "shell/Shell.h"

namespace corvix {
namespace {

namespace fs = std::filesystem;

fs::path programFolder() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return fs::path(path).parent_path();
}

std::string bytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

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

struct ModuleRow {
  const wchar_t* file;
  ModuleState scanned;
  const wchar_t* reason;         // part of it, after the scan
  const wchar_t* interfaceName;  // to be created; null: nothing is registered
  ModuleState asked;
  const wchar_t* askedReason;  // part of it, after that
};

constexpr auto kDescribed = ModuleState::Described;
constexpr auto kFailed = ModuleState::Failed;
constexpr auto kLoaded = ModuleState::Loaded;

const ModuleRow kRows[] = {
    {L"a_text.dll", kFailed, L"not a Windows module", nullptr, kFailed, L""},
    {L"an_elf.dll", kFailed, L"not a Windows module", nullptr, kFailed, L""},
    {L"damaged_magic.dll", kFailed, L"malformed", nullptr, kFailed, L""},
    {L"damaged_type.dll", kFailed, L"malformed", nullptr, kFailed, L""},
    {L"damaged_version.dll", kFailed, L"malformed", nullptr, kFailed, L""},
    {L"empty.dll", kFailed, L"not a Windows module", nullptr, kFailed, L""},
    {L"empty_descriptor.dll", kFailed, L"descriptor", nullptr, kFailed, L""},
    {L"header_only.dll", kFailed, L"cut short", nullptr, kFailed, L""},
    {L"no_descriptor.dll", kFailed, L"no descriptor", nullptr, kFailed, L""},
    {L"no_plugin.dll", kFailed, L"no Plugin element", nullptr, kFailed, L""},
    {L"other_machine.dll", kFailed, L"64-bit x86", nullptr, kFailed, L""},
    {L"resources_outside.dll", kFailed, L"descriptor", nullptr, kFailed, L""},
    {L"truncated.dll", kFailed, L"cut short", nullptr, kFailed, L""},
    {L"crashes_on_load.dll", kDescribed, L"", L"Faulty.crashes_on_load", kFailed, L"crashed while it was starting"},
    {L"makes_nothing.dll", kDescribed, L"", L"Faulty.makes_nothing", kLoaded, L"made no such object"},
    {L"missing_import.dll", kDescribed, L"", L"Faulty.missing_import", kFailed,
     L"absent_helper.dll, which missing_import.dll needs, was not found"},
    {L"no_factory.dll", kDescribed, L"", L"Faulty.no_factory", kFailed, L"does not export queryClassFactoryLocal"},
    {L"null_factory.dll", kDescribed, L"", L"Faulty.null_factory", kFailed, L"no class factory"},
    {L"refuses_to_start.dll", kDescribed, L"", L"Faulty.refuses_to_start", kFailed, L"refused to start"},
    {L"throws.dll", kDescribed, L"", L"Faulty.throws", kLoaded, L"no paper left"},
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
  folder.damage("other_machine.dll", headerOf(greeter) + 4, "\x64\x86");
  // The third data directory is that of the resources.
  folder.damage("resources_outside.dll", headerOf(greeter) + 24 + 96 + 2 * 8, std::string("\0\0\xF0\0", 4));
  for (const ModuleRow& row : kRows) {
    const fs::path built = programFolder() / "faulty" / row.file;
    if (fs::exists(built)) folder.copy(built, fs::path(row.file).string());
  }
}

TEST(PluginManager, GoesOnPastEveryKindOfBadModule) {
  IPluginManager& manager = *shell().pluginManager();
  Folder folder;
  fill(folder);
  EXPECT_EQ(manager.scanFolder(folder.path().c_str()), static_cast<i32>(std::size(kRows)));
  EXPECT_EQ(manager.scanFolder(folder.path().c_str()), 0) << "known already";
  for (const ModuleRow& row : kRows) {
    SCOPED_TRACE(fs::path(row.file).string());
    const IPluginModule* const module = moduleNamed(row.file);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->state(), row.scanned);
    EXPECT_NE(std::wstring_view(module->reason()).find(row.reason), std::wstring_view::npos)
        << fs::path(module->reason()).string();
    EXPECT_EQ(*module->reason() == 0, *row.reason == 0);
    EXPECT_EQ(GetModuleHandleW(module->path()), nullptr) << "its code is not loaded yet";
    if (!row.interfaceName) continue;
    EXPECT_EQ(manager.createObject(row.interfaceName), nullptr);
    EXPECT_EQ(manager.createObject(row.interfaceName), nullptr) << "nor the second time";
    EXPECT_EQ(module->state(), row.asked);
    EXPECT_NE(std::wstring_view(module->reason()).find(row.askedReason), std::wstring_view::npos)
        << fs::path(module->reason()).string();
  }
  EXPECT_TRUE(createObject<IBSmartObject>(manager, L"Example.Greeter")) << "the good ones still work";
  for (const ModuleRow& row : kRows) {
    if (row.scanned != kFailed) continue;
    EXPECT_TRUE(DeleteFileW((folder.path() / row.file).c_str()))
        << fs::path(row.file).string() << " is still held open";
  }
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
  EXPECT_EQ(found->item(2), nullptr);
  EXPECT_EQ(found->item(-1), nullptr);
}

TEST(PluginManager, NamesAreExactAndAttributesAreNot) {
  IPluginManager& manager = *shell().pluginManager();
  EXPECT_EQ(manager.findByName(L"example.Greeter"), nullptr);
  EXPECT_EQ(manager.findByName(L""), nullptr);
  EXPECT_EQ(manager.createObject(L"Nobody.has.this"), nullptr);
  EXPECT_STREQ(manager.moduleAt(0)->attribute(L"manufacturer"), L"Teldane");
  EXPECT_EQ(manager.moduleAt(0)->attribute(L"No such"), nullptr);
}

struct OwnRow {
  const wchar_t* name;
  ClassWords identifier;
  const wchar_t* humanName;
};

// What other people's descriptors and programs count on.
TEST(PluginManager, TheLibrarysOwnDescriptor) {
  const OwnRow rows[] = {
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
  i32 at = 0;
  for (const OwnRow& row : rows) {
    const IPluginInterface* const entry = manager.interfaceAt(at++);
    EXPECT_STREQ(entry->name(), row.name);
    EXPECT_EQ(entry->identifier().words(), row.identifier);
    EXPECT_STREQ(entry->attribute(L"sHumanName"), row.humanName);
    EXPECT_EQ(entry->module(), own);
  }
  EXPECT_NE(manager.interfaceAt(at)->module(), own) << "and no more";
}

// Reads the box that the loader shows and answers it.
std::wstring boxText, boxCaption;
int boxButtons = 0;

LRESULT CALLBACK answerBox(int code, WPARAM wParam, LPARAM lParam) {
  const auto* const message = reinterpret_cast<const CWPRETSTRUCT*>(lParam);
  if (code >= 0 && message->message == WM_INITDIALOG) {
    wchar_t text[1024];
    GetDlgItemTextW(message->hwnd, 65535, text, 1024);
    boxText = text;
    GetWindowTextW(message->hwnd, text, 1024);
    boxCaption = text;
    for (int button : {IDOK, IDCANCEL, IDYES, IDRETRY}) boxButtons += GetDlgItem(message->hwnd, button) != nullptr;
    EndDialog(message->hwnd, IDOK);
  }
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

// The system's loader keeps its lock after this fault, so the case has a process of its own, ended hard.
[[noreturn]] void loadModuleWithImportsOutside() {
  Folder folder;
  const std::string greeter = bytesOf(Folder::greeter());
  folder.damage("imports_outside.dll", headerOf(greeter) + 24 + 96 + 1 * 8, std::string("\0\0\xF0\0", 4));
  IShell& instance = *IShell::getInstance();
  SetWindowsHookExW(WH_CALLWNDPROCRET, answerBox, nullptr, GetCurrentThreadId());
  const fs::path path = folder.path() / "imports_outside.dll";
  IPluginModule* const loaded = instance.pluginManager()->loadModule(path.c_str());
  const IPluginModule* const module = moduleNamed(L"imports_outside.dll");
  const bool right = !loaded && module && module->state() == ModuleState::Failed &&
                     std::wstring_view(module->reason()).find(L"0xC0000005") != std::wstring_view::npos &&
                     boxText == L"Can't load module" + path.wstring() + L". Module may be corrupt!" &&
                     boxCaption == L"Teldane Quill" && boxButtons == 1;
  if (!right) fprintf(stderr, "box [%ls] [%ls] %d\n", boxCaption.c_str(), boxText.c_str(), boxButtons);
  TerminateProcess(GetCurrentProcess(), right ? 42 : 43);
  for (;;) Sleep(1000);
}

TEST(PluginManagerDeathTest, ACrashInTheSystemsLoaderIsSurvivedAndShown) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(loadModuleWithImportsOutside(), testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace corvix
