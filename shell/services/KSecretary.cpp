#include "shell/services/KSecretary_p.h"

#include "shell/gui/Requests.h"

#include <algorithm>
#include <cwchar>

#include <windows.h>

namespace corvix {

namespace {

class PasswordRequest final : public BSmartObject, public IPasswordRequest {
  CORVIX_IDENTITY(PasswordRequest, 0x1B8E04D7, 0xD5F2639A, 0x46C70E8F, 0xE9A1B35C, BSmartObject, IPasswordRequest)

 public:
  PasswordRequest(const wchar_t* title, i32 attempt) noexcept : title_(title), attempt_(attempt) {}

  const wchar_t* title() const noexcept override { return title_; }
  i32 attempt() const noexcept override { return attempt_; }
  void takePassword(const wchar_t* password) override { key = make<KEncryptionKey>(password ? password : L""); }

  Ref<KEncryptionKey> key;

 private:
  const wchar_t* title_;
  i32 attempt_;
};

}  // namespace

KEncryptionKey::KEncryptionKey(const wchar_t* text) {
  const int units = static_cast<int>(std::wcslen(text));
  const int size = units ? WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr) : 0;
  bytes_.resize(static_cast<std::size_t>(size));
  if (size)
    WideCharToMultiByte(CP_UTF8, 0, text, units, reinterpret_cast<char*>(bytes_.data()), size, nullptr, nullptr);
}

KEncryptionKey::~KEncryptionKey() { SecureZeroMemory(bytes_.data(), bytes_.size()); }

IBSmartObject* KSecretary::keyFor(const wchar_t* location, i32 attempt) {
  if (!location || attempt < 1) return nullptr;
  if (attempt > kMostAttempts) return forget(location), nullptr;  // the last one was wrong, too
  const auto known =
      std::find_if(known_.begin(), known_.end(), [&](const Known& one) { return one.location == location; });
  if (known != known_.end() && attempt == 1) return Ref<KEncryptionKey>(known->key).detach();
  forget(location);
  Ref<KEncryptionKey> key = ask(location, attempt);
  if (!key) return nullptr;
  if (known_.size() >= kMostKeys) known_.erase(known_.begin());
  known_.push_back({location, key});
  return key.detach();
}

Ref<KEncryptionKey> KSecretary::ask(const wchar_t* location, i32 attempt) {
  if (shell_.isUnattended()) {
    report_->addLine((std::wstring(L"Nobody is there to give the password of ") + location + L".").c_str());
    return {};
  }
  const auto asked = make<PasswordRequest>(location, attempt);
  CustomDialogRequest request{L"Dialog.Password", static_cast<IPasswordRequest*>(asked.get()), IDCANCEL};
  const bool isAnswered = shell_.showCustomDialog(request) != notify::kGoOn;
  if (!isAnswered)
    report_->addLine((std::wstring(L"There is no dialog to ask for the password of ") + location + L".").c_str());
  return isAnswered && request.answer == IDOK ? asked->key : Ref<KEncryptionKey>();
}

void KSecretary::forget(const wchar_t* location) noexcept {
  std::erase_if(known_, [&](const Known& one) { return !location || one.location == location; });
}

}  // namespace corvix
