#include "plugins/gui/Files.h"

#include "plugins/windows/Translated.h"
#include "plugins/windows/Windows.h"
#include "shell/Shell.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/gui/GUIManager.h"
#include "shell/gui/Requests.h"
#include "shell/services/Report.h"

#include <vector>

namespace corvix::gui {

using namespace windows;

namespace {

IDocManager* documents() { return IShell::getInstance()->docManager(); }

// What the document manager has to say of the last operation; nothing, when the user has cancelled it.
void tell() {
  IShell& shell = *IShell::getInstance();
  IBReport* const report = documents()->report();
  IGUIManager* const manager = shell.guiManager();
  if (!report || report->lineCount() == 0) return;
  for (i32 i = 0; manager && i < report->lineCount(); ++i) manager->report()->addLine(report->lineAt(i));
  shell.messageBox(reportText(*report).c_str(), programName().c_str(), MB_OK | MB_ICONWARNING, IDOK);
}

class FileRequest final : public IFileRequest {
  CORVIX_IDENTITY(FileRequest, 0x21D6ED6C, 0xE70E9FC4, 0xB537A057, 0xDF64284A, IFileRequest)

 public:
  FileRequest(bool isSaving, std::wstring fileName, std::wstring formatName)
      : isSaving_(isSaving),
        fileName_(std::move(fileName)),
        formatName_(std::move(formatName)),
        filters_(Ref<IBCollection>::adopt(documents()->dialogFilters(isSaving))) {}

  bool isSaving() const noexcept override { return isSaving_; }
  const wchar_t* fileName() const noexcept override { return fileName_.c_str(); }
  IBCollection* filters() const noexcept override { return filters_.get(); }
  const wchar_t* formatName() const noexcept override { return formatName_.c_str(); }
  void choose(const wchar_t* path, const wchar_t* formatName) override {
    chosen.push_back({orEmpty(path), orEmpty(formatName)});
  }

  bool show() {
    CustomDialogRequest request{L"Dialog.OpenSave", this, IDCANCEL};
    const int answer = IShell::getInstance()->showCustomDialog(request);
    if (answer == notify::kGoOn)
      IShell::getInstance()->messageBox(
          translated(L"This program has no dialog for files: the plug-in dialogs is missing."), programName().c_str(),
          MB_OK | MB_ICONWARNING, IDOK);
    return answer == notify::kTaken && request.answer == IDOK;
  }

  struct Chosen {
    std::wstring path, formatName;
  };
  std::vector<Chosen> chosen;

 private:
  const bool isSaving_;
  const std::wstring fileName_, formatName_;
  const Ref<IBCollection> filters_;
};

std::wstring findProgramName() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  DWORD ignored = 0;
  std::vector<char> block(GetFileVersionInfoSizeW(path, &ignored));
  void* text = nullptr;
  UINT length = 0;
  if (!block.empty() && GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()) &&
      VerQueryValueW(block.data(), L"\\StringFileInfo\\040904b0\\FileDescription", &text, &length) && length > 1)
    return static_cast<const wchar_t*>(text);
  const std::wstring name = fileName(path);
  return name.substr(0, name.rfind(L'.'));
}

}  // namespace

const std::wstring& programName() {
  static const std::wstring name = findProgramName();
  return name;
}

std::wstring numbered(std::size_t index, const std::wstring& text) {
  return (index < 9 ? L"&" : L"") + std::to_wstring(index + 1) + L" " + withoutMnemonic(text);
}

std::wstring shortened(const std::wstring& path) {
  constexpr std::size_t kMost = 60;
  if (path.size() <= kMost) return path;
  const std::size_t cut = path.rfind(L'\\', path.size() - kMost / 2);
  const std::size_t from = cut == path.npos || path.size() - cut > kMost ? path.size() - kMost : cut;
  return path.substr(0, kMost / 6) + L"..." + path.substr(from);
}

bool openLocation(const std::wstring& location) {
  if (!documents()) return false;
  if (documents()->openDocument(location.c_str())) return true;
  tell();
  return false;
}

void openByDialog() {
  FileRequest request(false, L"", L"");
  if (!request.show()) return;
  for (const FileRequest::Chosen& one : request.chosen) openLocation(one.path);
}

bool save(IDocument& document) {
  if (!*document.location() || document.isReadOnly()) return saveByDialog(document);
  if (documents()->saveDocument(&document)) return true;
  tell();
  return false;
}

bool saveByDialog(IDocument& document) {
  FileRequest request(true, *document.location() ? document.location() : document.title(), document.formatName());
  if (!request.show() || request.chosen.empty()) return false;
  const FileRequest::Chosen& to = request.chosen.front();
  if (documents()->saveDocumentAs(&document, to.path.c_str(), to.formatName.c_str())) return true;
  tell();
  return false;
}

}  // namespace corvix::gui
