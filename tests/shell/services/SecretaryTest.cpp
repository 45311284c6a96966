// What acts for the user: the keys of documents, and what the program enters with the system. A document of a few bytes
// stands for one that is locked.
#include "shell/services/KSecretary_p.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/settings/BSettings_p.h"
#include "shell/gui/Requests.h"
#include "shell/instance/KShell_p.h"
#include "shell/services/KSelfReg_p.h"
#include "tests/support/OwnRegistry.h"

#include <gtest/gtest.h>

namespace corvix {
namespace {

// Stands for the dialog: types one text after the other; null is Cancel.
class Typist final : public IDialogListener {
  CORVIX_IDENTITY(Typist, 0x91C7E503, 0x2A6D48FB, 0x07E43B96, 0xDC18F5A2, IDialogListener)

 public:
  int onSysMsgBox(MessageBoxRequest&) override { return notify::kGoOn; }
  int onShowConfirmation(ConfirmationRequest&) override { return notify::kGoOn; }
  int onShowCustomDialog(CustomDialogRequest& request) override {
    IPasswordRequest& asked = *query<IPasswordRequest>(request.argument);
    said += std::to_string(asked.attempt());
    const wchar_t* const text = next < texts.size() ? texts[next++] : nullptr;
    request.answer = text ? IDOK : IDCANCEL;
    if (text) asked.takePassword(text);
    return notify::kTaken;
  }

  std::vector<const wchar_t*> texts;
  std::size_t next = 0;
  std::string said;
};

// As a format opens what is locked with "open": its bytes, or why there are none.
std::string read(IBSecretary& secretary, const wchar_t* location) {
  for (i32 attempt = 1;; ++attempt) {
    const auto key = Ref<IBSmartObject>::adopt(secretary.keyFor(location, attempt)).as<IBEncryptionKey>();
    if (!key) return "given up at " + std::to_string(attempt);
    if (std::string(reinterpret_cast<const char*>(key->bytes()), key->sizeBytes()) ==
        "\xC3\xB6"
        "pen")
      return "opened";
  }
}

class Secretary : public testing::Test {
 protected:
  // Other dialogs than this one are not asked.
  static KShell& shellWithoutPlugins() {
    IShell::startDescribing();
    return static_cast<KShell&>(*IShell::getInstance());
  }
  Secretary() { shell_.sender(ShellNotification::ShowCustomDialog).addListener(&typist_); }
  ~Secretary() override { shell_.sender(ShellNotification::ShowCustomDialog).removeListener(&typist_); }

  KShell& shell_ = shellWithoutPlugins();
  Ref<KSecretary> secretary_ = make<KSecretary>(shell_);
  Typist typist_;
};

TEST_F(Secretary, AsksUntilTheKeyIsRightOrTheUserGivesUp) {
  const struct {
    std::vector<const wchar_t*> typed;
    const char *result, *asked;
  } rows[] = {
      {{L"öpen"}, "opened", "1"},
      {{L"a", L"", L"öpen"}, "opened", "123"},
      {{L"a", L"b", L"c", L"öpen"}, "given up at 4", "123"},
      {{L"a", nullptr, L"öpen"}, "given up at 2", "12"},
      {{nullptr}, "given up at 1", "1"},
  };
  for (const auto& row : rows) {
    secretary_->forget(nullptr);
    typist_.texts = row.typed;
    typist_.next = 0;
    typist_.said.clear();
    EXPECT_EQ(read(*secretary_, L"file:x"), row.result);
    EXPECT_EQ(typist_.said, row.asked);
  }
}

TEST_F(Secretary, KeepsTheKeysOfAFewLocations) {
  typist_.texts = {L"öpen"};
  EXPECT_EQ(read(*secretary_, L"one"), "opened");
  EXPECT_EQ(read(*secretary_, L"one"), "opened") << "and nobody was asked";
  EXPECT_EQ(read(*secretary_, L"two"), "given up at 1");
  secretary_->forget(L"one");
  EXPECT_EQ(read(*secretary_, L"one"), "given up at 1");
  typist_.texts.assign(1000, L"öpen");
  for (std::size_t i = 0; i < 2 * KSecretary::kMostKeys; ++i) read(*secretary_, std::to_wstring(i).c_str());
  typist_.texts.clear();
  EXPECT_EQ(read(*secretary_, L"0"), "given up at 1");
  EXPECT_EQ(read(*secretary_, L"127"), "opened");
  for (const i32 attempt : {0, -1, 4}) EXPECT_EQ(secretary_->keyFor(L"127", attempt), nullptr);
  EXPECT_EQ(secretary_->keyFor(nullptr, 1), nullptr);
  // None of these opened it: nothing is known of them the next time.
  typist_.texts = {L"a", L"b", L"c", L"öpen"};
  typist_.next = 0;
  typist_.said.clear();
  EXPECT_EQ(read(*secretary_, L"wrong"), "given up at 4");
  EXPECT_EQ(read(*secretary_, L"wrong"), "opened");
  EXPECT_EQ(typist_.said, "1231");
}

TEST_F(Secretary, WithoutAUserOrADialogNobodyWaits) {
  typist_.texts = {L"öpen"};
  shell_.setUnattended(true);
  EXPECT_EQ(read(*secretary_, L"one"), "given up at 1");
  EXPECT_EQ(typist_.said, "");
  shell_.setUnattended(false);
  shell_.sender(ShellNotification::ShowCustomDialog).removeListener(&typist_);
  EXPECT_EQ(read(*secretary_, L"two"), "given up at 1");
  EXPECT_EQ(secretary_->report()->lineCount(), 2);
}

TEST(EncryptionKey, IsOverwrittenWhenItGoes) {
  auto key = make<KEncryptionKey>(L"a secret that is long enough to be found again");
  const u8* const bytes = key->bytes();
  const u32 size = key->sizeBytes();
  ASSERT_GT(size, 16u);
  key.reset();
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes) + 16, 8).find("ong"), std::string::npos);
}

std::wstring valueOf(const std::wstring& path, const wchar_t* name = nullptr) {
  const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, path, KEY_READ);
  return key ? std::wstring(key.text(name).view()) : L"no key";
}

class SelfReg : public testing::Test {
 protected:
  static constexpr wchar_t kExtension[] = L"Software\\Classes\\.pdf";
  const std::wstring own_ = L"corvix-core-tests.exe.pdf";
  const std::wstring command_ = L"Software\\Classes\\" + own_ + L"\\shell\\open\\command";

  static void put(const wchar_t* path, const wchar_t* name, const wchar_t* text) {
    RegistryKey::create(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS).setText(name, text);
  }
  void follow(bool isWanted) { settings_->setValue(L"General", L"AssociatePDFWithEditor", isWanted); }

  testing_support::OwnRegistry world_;
  Ref<BSettings> settings_ = make<BSettings>();
  Ref<KSelfReg> self_ = make<KSelfReg>(*settings_);
};

TEST_F(SelfReg, FollowsTheSettingAndPutsBackWhatWasThere) {
  for (const wchar_t* before : {L"", L"Other.Program"}) {
    if (*before) put(kExtension, nullptr, before);
    follow(true);
    EXPECT_TRUE(self_->registerSelf()) << "again";
    EXPECT_EQ(valueOf(kExtension), own_);
    EXPECT_NE(valueOf(command_).find(L"corvix-core-tests.exe\" \"%1\""), std::wstring::npos);
    EXPECT_EQ(valueOf(applicationKeyPath(), L"ApplicationBind"), std::wstring(L".pdf=") + before);
    follow(false);
    EXPECT_EQ(valueOf(kExtension), *before ? before : L"no key");
    EXPECT_EQ(valueOf(command_), L"no key");
    EXPECT_EQ(valueOf(applicationKeyPath(), L"ApplicationBind"), L"");
    EXPECT_TRUE(self_->unregisterSelf()) << "again";
  }
}

TEST_F(SelfReg, LeavesWhatAnotherHasEnteredSince) {
  put(kExtension, nullptr, L"First");
  EXPECT_TRUE(self_->registerSelf());
  put(kExtension, nullptr, L"Later");
  EXPECT_TRUE(self_->unregisterSelf());
  EXPECT_EQ(valueOf(kExtension), L"Later");
}

TEST_F(SelfReg, TakesNothingOfItsNoteOnTrust) {
  const std::wstring key = applicationKeyPath();
  for (const wchar_t* note : {L"", L".pdf", L"=", L".html=x", L".pdf="}) {
    EXPECT_TRUE(self_->registerSelf());
    put(key.c_str(), L"ApplicationBind", note);
    EXPECT_TRUE(self_->unregisterSelf());
    EXPECT_EQ(valueOf(kExtension), L"no key") << note;
  }
}

}  // namespace
}  // namespace corvix
