#include "shell/services/KSelfReg_p.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/baselib/system/KernelFile_p.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/RegistryKey_p.h"

namespace corvix {

namespace {

constexpr wchar_t kGroup[] = L"General";
constexpr wchar_t kItem[] = L"AssociatePDFWithEditor";
constexpr wchar_t kBind[] = L"ApplicationBind";
constexpr wchar_t kExtension[] = L".pdf";
const std::wstring kClasses = L"Software\\Classes\\";

// Of the program: its file's name and the extension, "corvix-host.exe.pdf".
std::wstring classOfFiles(const std::wstring& program) {
  return program.substr(folderOf(program).size() + 1) + kExtension;
}

RegistryKey ownKey() { return RegistryKey::create(HKEY_CURRENT_USER, applicationKeyPath(), KEY_READ | KEY_WRITE); }

RegistryKey extensionKey() {
  return RegistryKey::create(HKEY_CURRENT_USER, kClasses + kExtension, KEY_READ | KEY_WRITE);
}

bool setText(const std::wstring& path, const std::wstring& text) {
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, kClasses + path, KEY_READ | KEY_WRITE);
  return key && key.setText(nullptr, text);
}

bool removeTree(const std::wstring& path) {
  const LSTATUS status = RegDeleteTreeW(HKEY_CURRENT_USER, (kClasses + path).c_str());
  return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

// A key in which nothing else stands.
void removeEmpty(const std::wstring& path) {
  DWORD keys = 1, values = 1;
  RegQueryInfoKeyW(RegistryKey::open(HKEY_CURRENT_USER, kClasses + path, KEY_READ).get(), nullptr, nullptr, nullptr,
                   &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr, nullptr);
  if (keys == 0 && values == 0) RegDeleteKeyW(HKEY_CURRENT_USER, (kClasses + path).c_str());
}

bool removeValue(const RegistryKey& key, const wchar_t* name) {
  const LSTATUS status = RegDeleteValueW(key.get(), name);
  return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

}  // namespace

KSelfReg::KSelfReg(IBSettings& settings) : settings_(settings) { settings_.watch(kGroup, kItem, this, 0); }

KSelfReg::~KSelfReg() { settings_.unwatch(kGroup, kItem, this); }

int KSelfReg::onSettingChanged(IBSettings& settings, const wchar_t*, const wchar_t*) {
  Variant wanted;
  const bool isWanted = settings.getValue(kGroup, kItem, wanted) && wanted.truth();
  if (!(isWanted ? registerSelf() : unregisterSelf()))
    sWriteLog(L"What opens files that end in %s could not be changed: the registry does not take it.\n", kExtension);
  return notify::kGoOn;
}

// What was there is noted before anything is changed, so that it is known whatever ends in between.
bool KSelfReg::registerSelf() {
  const std::wstring program = modulePath(nullptr);
  const RegistryKey key = ownKey(), extension = extensionKey();
  if (program.empty() || !key || !extension) return false;
  const std::wstring own = classOfFiles(program);
  const std::wstring before(extension.text(nullptr).view());
  if (before != own && !key.setText(kBind, std::wstring(kExtension) + L"=" + before)) return false;
  const bool isDone =
      setText(own + L"\\shell\\open\\command", L"\"" + program + L"\" \"%1\"") && extension.setText(nullptr, own);
  if (!isDone) unregisterSelf();
  return isDone;
}

bool KSelfReg::unregisterSelf() {
  const std::wstring program = modulePath(nullptr);
  const RegistryKey key = ownKey(), extension = extensionKey();
  if (program.empty() || !key || !extension) return false;
  const WideString bound = key.text(kBind);
  const std::wstring prefix = std::wstring(kExtension) + L"=";
  const std::wstring own = classOfFiles(program);
  if (extension.text(nullptr) == own) {
    const std::wstring_view before = bound.view().starts_with(prefix) ? bound.view().substr(prefix.size()) : L"";
    const bool isBack =
        before.empty() || before == own ? removeValue(extension, nullptr) : extension.setText(nullptr, before);
    if (!isBack) return false;
    removeEmpty(kExtension);
  }
  return removeTree(own) && removeValue(key, kBind);
}

}  // namespace corvix
