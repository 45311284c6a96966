// "Dialog.OpenSave": the system's dialogs for files.
#include "plugins/dialogs/Dialogs.h"
#include "plugins/dialogs/ModalDialog.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/documents/FileFilter.h"
#include "shell/gui/Dialog.h"
#include "shell/gui/Requests.h"

#include <cstring>

#include <commdlg.h>

namespace corvix::dialogs {

using namespace windows;

namespace {

constexpr std::size_t kMostUnits = 65536;  // of the names of all files that are opened at once

class FileDialog final : public BSmartObject, public IDialog {
  CORVIX_IDENTITY(FileDialog, 0x27AF3A36, 0x0D3037D5, 0x653713CE, 0x33690AFF, BSmartObject, IDialog)

 public:
  int show(CustomDialogRequest& request) override {
    auto* const about = corvix::query<IFileRequest>(request.argument);
    if (!about) return notify::kGoOn;
    if (IShell::getInstance()->isUnattended()) return notify::kStop;
    readFilters(*about);
    std::vector<wchar_t> names(kMostUnits);
    const std::wstring proposed = orEmpty(about->fileName());
    proposed.copy(names.data(), names.size() - 1);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = ownerOfDialogs();
    dialog.lpstrFilter = rows_.c_str();
    dialog.nFilterIndex = first_;
    dialog.lpstrFile = names.data();
    dialog.nMaxFile = static_cast<DWORD>(names.size());
    dialog.lpstrDefExt = about->isSaving() ? extension_.c_str() : nullptr;
    dialog.Flags =
        OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY |
        (about->isSaving() ? OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST : OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST);
    const bool isChosen = about->isSaving() ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
    request.answer = isChosen ? IDOK : IDCANCEL;
    if (isChosen) choose(*about, names.data(), dialog.nFileOffset, dialog.nFilterIndex);
    return notify::kTaken;
  }

 private:
  void readFilters(const IFileRequest& about) {
    IBCollection* const filters = about.filters();
    bool hasAll = about.isSaving();
    for (i32 i = 0; filters && i < filters->count(); ++i) {
      const auto* const filter = corvix::query<IFileFilter>(filters->item(i));
      if (!filter || !*filter->pattern()) continue;
      addRow(translated(filter->description()), filter->pattern(), filter->formatName());
      hasAll = hasAll || filter->pattern() == std::wstring_view(L"*.*");
      if (*about.formatName() && formats_.back() == about.formatName()) {
        first_ = static_cast<DWORD>(formats_.size());
        extension_ = firstExtension(filter->pattern());
      }
    }
    if (!hasAll || formats_.empty()) addRow(translated(L"All files"), L"*.*", L"");
  }

  void addRow(const std::wstring& text, const std::wstring& pattern, const wchar_t* formatName) {
    rows_ += text + L" (" + pattern + L")" + L'\0' + pattern + L'\0';
    formats_.push_back(formatName);
  }

  static std::wstring firstExtension(const std::wstring& pattern) {
    const std::wstring first = pattern.substr(0, pattern.find(L';'));
    const std::size_t dot = first.rfind(L'.');
    const std::wstring extension = dot == first.npos ? L"" : first.substr(dot + 1);
    return extension.find_first_of(L"*?") == extension.npos ? extension : L"";
  }

  // Several files come as their folder and then each name.
  void choose(IFileRequest& about, const wchar_t* names, WORD offset, DWORD filter) {
    const std::wstring format = filter >= 1 && filter <= formats_.size() ? formats_[filter - 1] : L"";
    const std::wstring first = names;
    if (first.size() >= offset) return about.choose(names, format.c_str());
    const std::wstring folder = first.back() == L'\\' ? first : first + L'\\';
    for (const wchar_t* name = names + offset; *name; name += std::wcslen(name) + 1)
      about.choose((folder + name).c_str(), format.c_str());
  }

  std::wstring rows_, extension_;
  std::vector<std::wstring> formats_;
  DWORD first_ = 1;
};

}  // namespace

IBSmartObject* makeFileDialog() { return new FileDialog; }

}  // namespace corvix::dialogs
