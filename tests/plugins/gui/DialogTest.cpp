// The dialogs as their user has them: by their controls, while the program waits in them.
#include "shell/Plugin.h"
#include "shell/documents/FileFilter.h"
#include "shell/gui/Dialog.h"
#include "shell/gui/Requests.h"
#include "tests/support/BoxAnswer.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"
#include "tests/support/Resolution.h"

#include <functional>

#include <gtest/gtest.h>

namespace corvix {

namespace {

using namespace testing_support;

// What is done in the dialog that opens next; by a timer, as the program's own code waits.
std::function<void(HWND)> inDialog;

void CALLBACK act(HWND, UINT, UINT_PTR timer, DWORD) {
  const HWND dialog = GetActiveWindow();
  wchar_t name[16] = L"";
  GetClassNameW(dialog, name, 16);
  if (std::wcscmp(name, L"#32770") != 0 || !IsWindowVisible(dialog)) return;
  KillTimer(nullptr, timer);
  inDialog(dialog);
}

i32 show(const wchar_t* name, IBTransportable* about, std::function<void(HWND)> what) {
  inDialog = std::move(what);
  IShell& program = shell();
  program.setUnattended(false);
  SetTimer(nullptr, 0, 20, &act);
  CustomDialogRequest request{name, about, -1};
  program.showCustomDialog(request);
  program.setUnattended(true);
  return request.answer;
}

// The one with this text, or behind the label with it.
HWND controlOf(HWND parent, const std::wstring& text) {
  for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    wchar_t own[256] = L"", kind[16] = L"";
    GetWindowTextW(child, own, 256);
    GetClassNameW(child, kind, 16);
    if (text == own) return child;
    if (text + L":" == own && !_wcsicmp(kind, L"Static")) return GetWindow(child, GW_HWNDNEXT);
    if (const HWND inner = controlOf(child, text)) return inner;
  }
  return nullptr;
}

void click(HWND dialog, int id) { SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

TEST(Dialogs, OptionsTakeAllOrNothing) {
  IBSettings& settings = *shell().settings();
  const auto state = [&] {
    Variant splash, steps, apply;
    settings.getValue(L"Interface", L"ShowSplash", splash);
    settings.getValue(L"Worker", L"Steps", steps);
    settings.getValue(L"General", L"ApplyOptions", apply);
    return narrow(splash.toText()) + narrow(steps.toText()) + narrow(apply.toText());
  };
  ASSERT_EQ(state(), "051");
  const auto page = [](HWND dialog, int steps) {  // of the tree, from its root
    const HWND tree = FindWindowExW(dialog, nullptr, L"SysTreeView32", nullptr);
    SendMessageW(tree, WM_KEYDOWN, VK_HOME, 1);
    for (int i = 0; i < steps; ++i) SendMessageW(tree, WM_KEYDOWN, VK_DOWN, 1);
  };
  const auto write = [&](HWND dialog, const wchar_t* text) {
    page(dialog, 2);
    SetWindowTextW(controlOf(dialog, L"Steps"), text);
  };
  const auto tick = [&](HWND dialog) {
    page(dialog, 3);
    SendMessageW(controlOf(dialog, L"Splash Screen"), BM_CLICK, 0, 0);
  };
  const struct {
    std::function<void(HWND)> act;
    const char* expected;
    const char* said;
  } rows[] = {
      {[&](HWND dialog) { tick(dialog), click(dialog, IDCANCEL); }, "051", ""},
      {[&](HWND dialog) { tick(dialog), write(dialog, L"7"), click(dialog, IDOK); }, "171", ""},
      {[&](HWND dialog) { tick(dialog), write(dialog, L"x"), click(dialog, IDOK), click(dialog, IDCANCEL); }, "171",
       "Steps takes a whole number of at most 32 bits."},
      {[&](HWND dialog) { page(dialog, 2), click(dialog, 101), click(dialog, IDOK); }, "151", ""},
      {[&](HWND dialog) {
         page(dialog, 3);
         const HWND list = controlOf(dialog, L"Apply options immediately");
         SendMessageW(list, CB_SETCURSEL, 1, 0);
         SendMessageW(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_SELCHANGE),
                      reinterpret_cast<LPARAM>(list));
         tick(dialog), click(dialog, IDOK);
       },
       "052", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    std::wstring said;
    show(L"Dialog.Options", nullptr, [&](HWND dialog) {
      const BoxAnswer box(IDOK);  // from now on
      row.act(dialog);
      said = BoxAnswer::text;
    });
    EXPECT_EQ(state(), row.expected);
    EXPECT_EQ(narrow(said), row.said);
  }
}

TEST(Dialogs, TakeTheResolutionOfAnotherScreen) {
  for (const wchar_t* const name : {L"Dialog.Options", L"Dialog.About"}) {
    const Resolution resolution(96);
    show(name, nullptr, [&](HWND dialog) {
      const HWND button = GetDlgItem(dialog, IDOK);
      const auto look = [&](int dpi) {
        resolution.change(dialog, static_cast<UINT>(dpi), {0, 0, 10 * dpi, 5 * dpi});
        RECT area = {};
        LOGFONTW font = {};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(button, WM_GETFONT, 0, 0)), sizeof font, &font);
        GetWindowRect(button, &area);
        const RECT placed = area;
        GetClientRect(dialog, &area);
        MapWindowPoints(dialog, nullptr, reinterpret_cast<POINT*>(&area), 2);
        EXPECT_TRUE(placed.right <= area.right && placed.bottom <= area.bottom) << "it stands inside";
        return std::pair(placed.right - placed.left, std::abs(font.lfHeight));
      };
      const auto once = look(96), twice = look(192);
      EXPECT_EQ(twice.first, 2 * once.first);
      EXPECT_NEAR(twice.second, 2 * once.second, 1);
      EXPECT_EQ(look(96), once);
      click(dialog, IDCANCEL);
    });
  }
}

class Password final : public IPasswordRequest {
  CORVIX_IDENTITY(Password, 0x2F045241, 0x34EE618D, 0x56259320, 0x06384B7A, IPasswordRequest)

 public:
  explicit Password(i32 attempt) : attempt_(attempt) {}
  const wchar_t* title() const noexcept override { return L"secret.pdf"; }
  i32 attempt() const noexcept override { return attempt_; }
  void takePassword(const wchar_t* password) override { taken = password; }
  std::wstring taken = L"nothing";

 private:
  i32 attempt_;
};

TEST(Dialogs, PasswordIsHandedOnOrNot) {
  for (const i32 attempt : {1, 2}) {
    for (const int button : {IDOK, IDCANCEL}) {
      Password request(attempt);
      const i32 answer = show(L"Dialog.Password", &request, [&](HWND dialog) {
        const HWND edit = FindWindowExW(dialog, nullptr, L"EDIT", nullptr);
        EXPECT_NE(SendMessageW(edit, EM_GETPASSWORDCHAR, 0, 0), 0);
        wchar_t label[200] = L"";
        GetWindowTextW(FindWindowExW(dialog, nullptr, L"STATIC", nullptr), label, 200);
        EXPECT_NE(std::wstring(label).find(L"secret.pdf"), std::wstring::npos);
        EXPECT_EQ(std::wstring(label).find(L"That was not") == 0, attempt > 1);
        SetWindowTextW(edit, L"p\xE4ss");
        click(dialog, button);
      });
      EXPECT_EQ(answer, button);
      EXPECT_EQ(request.taken, button == IDOK ? L"p\xE4ss" : L"nothing");
    }
  }
  EXPECT_EQ(show(L"Dialog.Password", nullptr, [](HWND) {}), -1) << "it is about nothing";
}

class Filter final : public BSmartObject, public IFileFilter {
  CORVIX_IDENTITY(Filter, 0xDCF11089, 0x5F37BAB3, 0x71E20FCB, 0xBBA2EF4A, BSmartObject, IFileFilter)

 public:
  const wchar_t* description() const noexcept override { return L"Pages"; }
  const wchar_t* pattern() const noexcept override { return L"*.pages;*.page"; }
  const wchar_t* formatName() const noexcept override { return L"DocFormat.TestPages"; }
};

class Filters final : public IBCollection {
  CORVIX_IDENTITY(Filters, 0x4C09AFBA, 0xA3681B3F, 0x51D202E9, 0xE95E5692, IBCollection)

 public:
  i32 count() const noexcept override { return 1; }
  IBTransportable* item(i32 index) const noexcept override {
    return index == 0 ? static_cast<IFileFilter*>(filter_.get()) : nullptr;
  }

 private:
  Ref<Filter> filter_ = make<Filter>();
};

class FileRequest final : public IFileRequest {
  CORVIX_IDENTITY(FileRequest, 0x5A600B81, 0xF5F5AF56, 0x4E019943, 0x3EBEB103, IFileRequest)

 public:
  explicit FileRequest(bool isSaving) : isSaving_(isSaving) {}
  bool isSaving() const noexcept override { return isSaving_; }
  const wchar_t* fileName() const noexcept override { return L""; }
  IBCollection* filters() const noexcept override { return filters_.get(); }
  const wchar_t* formatName() const noexcept override { return L"DocFormat.TestPages"; }
  void choose(const wchar_t* path, const wchar_t* formatName) override {
    chosen += std::filesystem::path(path).filename().wstring() + L" as " + formatName + L"; ";
  }
  std::wstring chosen;

 private:
  bool isSaving_;
  Ref<Filters> filters_ = make<Filters>();
};

TEST(Dialogs, FilesAreChosenInTheSystemsDialog) {
  const OwnFolder folder;
  for (const wchar_t* const name : {L"a.pages", L"\xD834\xDD1E b.pages"}) std::ofstream(folder.file(name)) << "x";
  const std::wstring base = folder.path().wstring() + L"\\";
  const struct {
    bool isSaving;
    std::wstring written;
    int button;
    const wchar_t* chosen;
  } rows[] = {{false, base + L"a.pages", IDOK, L"a.pages as DocFormat.TestPages; "},
              {false, base + L"\xD834\xDD1E b.pages", IDOK, L"\xD834\xDD1E b.pages as DocFormat.TestPages; "},
              {false, base + L"a.pages", IDCANCEL, L""},
              {true, base + L"new", IDOK, L"new.pages as DocFormat.TestPages; "}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    FileRequest request(row.isSaving);
    const i32 answer = show(L"OpenSave", &request, [&](HWND dialog) {
      constexpr int kName = 0x47C;  // a box with an edit control in it, or that alone
      const HWND box = GetDlgItem(dialog, kName), edit = box ? box : GetDlgItem(dialog, 0x480);
      SetWindowTextW(edit, row.written.c_str());
      SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(row.button),
                   reinterpret_cast<LPARAM>(GetDlgItem(dialog, row.button)));
    });
    EXPECT_EQ(answer, row.button);
    EXPECT_EQ(request.chosen, row.chosen);
  }
}

}  // namespace

}  // namespace corvix
