#include "graphics/fonts/FMFontMachine.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <string>

#include <windows.h>

namespace corvix {
namespace {

int CALLBACK takeFirst(const LOGFONTW* found, const TEXTMETRICW*, DWORD, LPARAM result) {
  *reinterpret_cast<std::wstring*>(result) = found->lfFaceName;
  return 0;
}

// Some family that this machine has, and the same in another letter case.
std::wstring installedFamily() {
  std::wstring family;
  LOGFONTW any{};
  any.lfCharSet = ANSI_CHARSET;
  HDC__* const screen = CreateCompatibleDC(nullptr);
  EnumFontFamiliesExW(screen, &any, takeFirst, reinterpret_cast<LPARAM>(&family), 0);
  DeleteDC(screen);
  return family;
}
std::wstring swappedCase(std::wstring text) {
  for (wchar_t& c : text) c = std::iswupper(c) ? std::towlower(c) : std::towupper(c);
  return text;
}

constexpr wchar_t kSubstitutes[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes";

// An entry of the system's table of substitutes, for as long as the test runs.
class Alias {
 public:
  Alias(const wchar_t* name, const std::wstring& family) : name_(name) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSubstitutes, name, REG_SZ, family.c_str(),
                    static_cast<DWORD>((family.size() + 1) * sizeof(wchar_t)));
  }
  ~Alias() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSubstitutes, name_); }

 private:
  const wchar_t* name_;
};

struct FontRow {
  const char* why;
  std::wstring asked;
  std::wstring family;  // empty: whatever the system's dialogs have
  bool isSubstitute;
};

TEST(FMFontMachine, GivesAFontForEveryName) {
  const std::wstring family = installedFamily();
  ASSERT_FALSE(family.empty());
  const Alias alive(L"Corvix Test Alias", family + L",0");
  const Alias dead(L"Corvix Test Dead Alias", L"No Such Font Either");
  const FontRow rows[] = {
      {"installed", family, family, false},
      {"installed, in another letter case", swappedCase(family), family, false},
      {"only in the system's table", L"Corvix Test Alias", family, true},
      {"its substitute is not installed either", L"Corvix Test Dead Alias", L"", true},
      {"unknown", L"No Such Font At All", L"", true},
      {"empty", L"", L"", true},
      {"longer than any family", std::wstring(5000, L'x'), L"", true},
  };
  FMFontMachine machine;
  for (const FontRow& row : rows) {
    SCOPED_TRACE(row.why);
    const auto font = Ref<IFMFont>::adopt(machine.createFont(row.asked.c_str()));
    ASSERT_TRUE(font);
    EXPECT_TRUE(row.family.empty() || font->family() == row.family);
    EXPECT_NE(*font->family(), 0);
    EXPECT_EQ(font->isSubstitute(), row.isSubstitute);
  }
  EXPECT_TRUE(Ref<IFMFont>::adopt(machine.createFont(nullptr)));
}

class Stubborn final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(Stubborn, 0xF0, 2, 3, 4, BSmartObject, IFMFontCreator)

 public:
  explicit Stubborn(std::wstring only) : only_(std::move(only)) {}
  IFMFont* createFont(const wchar_t* family) override {
    return family == only_ ? FMFontMachine().createFont(installedFamily().c_str()) : nullptr;
  }

 private:
  std::wstring only_;
};

TEST(FMFontMachine, AsksLaterCreatorsFirstAndKeepsThem) {
  auto creator = make<Stubborn>(L"Secret");
  {
    FMFontMachine machine;
    machine.addCreator(creator.get());
    machine.addCreator(nullptr);
    EXPECT_EQ(creator->refCount(), 1u);
    EXPECT_FALSE(Ref<IFMFont>::adopt(machine.createFont(L"Secret"))->isSubstitute());
    EXPECT_TRUE(Ref<IFMFont>::adopt(machine.createFont(L"No Such Font At All"))->isSubstitute());
  }
  EXPECT_EQ(creator->refCount(), 0u);
}

}  // namespace
}  // namespace corvix
