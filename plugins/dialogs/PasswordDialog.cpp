// "Dialog.Password". What was written is wiped when it was handed on.
#include "plugins/dialogs/Dialogs.h"
#include "plugins/dialogs/ModalDialog.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/gui/Dialog.h"
#include "shell/gui/Requests.h"
#include "tools/xmlbinc/Harmless.h"

namespace corvix::dialogs {

using namespace windows;

namespace {

constexpr int kText = 100, kVisible = 101, kMostUnits = 1024;
constexpr wchar_t kBullet = 0x2022;

class PasswordDialog final : public BSmartObject, public IDialog, private ModalDialog {
  CORVIX_IDENTITY(PasswordDialog, 0xFAA27075, 0x0CC20183, 0x0D1C28E6, 0x6F771F6B, BSmartObject, IDialog)

 public:
  int show(CustomDialogRequest& request) override {
    about_ = corvix::query<IPasswordRequest>(request.argument);
    if (!about_) return notify::kGoOn;
    if (IShell::getInstance()->isUnattended()) return notify::kStop;
    request.answer = run(translated(L"Password"), 380, 132, false) == IDOK ? IDOK : IDCANCEL;
    return notify::kTaken;
  }

 private:
  void make() override {
    const std::wstring title = withoutMnemonic(xmlbinc::harmless(orEmpty(about_->title()), 80));
    const std::wstring text =
        about_->attempt() > 1 ? sentence(L"That was not the password. Try again, or cancel. &Password for %1:", {title})
                              : sentence(L"&Password for %1:", {title});
    label_ = add(L"STATIC", text.c_str(), SS_LEFT);
    text_ = add(L"EDIT", L"", WS_TABSTOP | ES_PASSWORD | ES_AUTOHSCROLL, kText, WS_EX_CLIENTEDGE);
    SendMessageW(text_, EM_SETPASSWORDCHAR, kBullet, 0);
    SendMessageW(text_, EM_SETLIMITTEXT, kMostUnits - 1, 0);
    visible_ = add(L"BUTTON", translated(L"&Show it"), WS_TABSTOP | BS_AUTOCHECKBOX, kVisible);
    addButton(L"OK", IDOK);
    addButton(L"Cancel", IDCANCEL);
  }

  void place(RECT area) override {
    const int line = look().lineHeight(), width = widthOf(area);
    MoveWindow(label_, area.left, area.top, width, line + look().scaled(4), TRUE);
    MoveWindow(text_, area.left, area.top + line + look().scaled(6), width, line, TRUE);
    MoveWindow(visible_, area.left, area.bottom + look().scaled(12), look().scaled(100), line, TRUE);
  }

  bool command(int id, int code) override {
    if (id == kVisible) {
      const bool isShown = IsDlgButtonChecked(window(), kVisible) == BST_CHECKED;
      SendMessageW(text_, EM_SETPASSWORDCHAR, isShown ? 0 : kBullet, 0);
      InvalidateRect(text_, nullptr, TRUE);
      return true;
    }
    if (id == IDOK) {
      wchar_t password[kMostUnits] = L"";
      GetWindowTextW(text_, password, kMostUnits);
      about_->takePassword(password);
      SecureZeroMemory(password, sizeof password);
      SetWindowTextW(text_, L"");
    }
    return ModalDialog::command(id, code);
  }

  IPasswordRequest* about_ = nullptr;
  HWND label_ = nullptr, text_ = nullptr, visible_ = nullptr;
};

}  // namespace

IBSmartObject* makePasswordDialog() { return new PasswordDialog; }

}  // namespace corvix::dialogs
