// What the library throws, caught in the program, in a plug-in, and again in the library behind a plug-in.
#include <gtest/gtest.h>

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/Exception.h"
#include "shell/Shell.h"
#include "shell/guard/ForeignGuard.h"
#include "tests/support/CloseBehind.h"

#include <malloc.h>

namespace corvix {
namespace {

TEST(ExceptionCrossing, ReachesTheProgram) {
  BTempStorage storage;
  ASSERT_TRUE(storage.open());
  testing_support::closeBehindItsBack(storage);
  EXPECT_THROW(storage.close(), SException*);
}

TEST(ExceptionCrossing, ReachesAPluginAndTheLibraryBehindIt) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring program(path);
  IShell::getInstance()->setUnattended(true);
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  IPluginModule* const module =
      manager.loadModule((program.substr(0, program.rfind(L'\\')) + L"\\faulty\\throws_exception.dll").c_str());
  ASSERT_TRUE(module);
  i32 found = 0;
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    IPluginInterface* const entry = manager.interfaceAt(i);
    if (entry->module() != module || !std::wstring_view(entry->name()).starts_with(L"Faulty.")) continue;
    const auto object = Ref<IBSmartObject>::adopt(entry->createObject());
    const bool catches = std::wstring_view(entry->name()) == L"Faulty.decimal";
    EXPECT_EQ(static_cast<bool>(object), catches);
    EXPECT_TRUE(catches ||
                std::wstring_view(module->reason()).find(L"CloseHandle(m_hFile)") != std::wstring_view::npos);
    ++found;
  }
  EXPECT_EQ(found, 2);
}

int overflows = 0;

void goDeeper(void*) { overflows += !callGuarded(nullptr, L"a test", goDeeper, nullptr, nullptr); }

// What calls itself through the guard runs out of stack anywhere in it, just below one of many frames too.
TEST(StackOverflow, IsSurvivedWhereverItHappensAndMoreThanOnce) {
  int rounds = 0;
  for (std::size_t below = 16; below < 1024; below += 48) {
    volatile char* const room = static_cast<char*>(_alloca(below));
    room[0] = 0;
    EXPECT_TRUE(callGuarded(nullptr, L"a test", goDeeper, nullptr, nullptr));
    EXPECT_EQ(overflows, ++rounds);
  }
}

}  // namespace
}  // namespace corvix
