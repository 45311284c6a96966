// A view and a panel, each in as few lines as it takes: what is known of a document, in a control of the system's.
#include "descriptor.h"
#include "shell/Plugin.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/documents/TextSource.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/DocumentView.h"

#include <string>

#include <windows.h>

namespace example {

using namespace corvix;

std::wstring factsOf(IDocument* document) {
  if (!document) return L"No document is open.";
  std::wstring facts = std::wstring(document->title()) + L"\n" + document->location() + L"\n" + document->formatName();
  if (const auto* const pages = query<IPagedDocument>(document))
    facts += L"\nPages: " + std::to_wstring(pages->pageCount());
  if (const auto* const text = query<ITextSource>(document))
    facts += L"\nLines: " + std::to_wstring(text->lineCount()) + L", units: " + std::to_wstring(text->textLength());
  return facts;
}

HWND makeLabel(void* parent) {
  return CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_NOPREFIX, 0, 0, 0, 0, static_cast<HWND>(parent),
                         nullptr, nullptr, nullptr);
}

// For documents that no other view is for.
class FactsView final : public BSmartObject, public IDocumentView {
  CORVIX_IDENTITY(FactsView, 0x7524689E, 0x0500BCEF, 0x97061748, 0x56221540, BSmartObject, IDocumentView)

 public:
  IDocument* document() const noexcept override { return document_; }
  bool setDocument(IDocument* document) override { return (document_ = document) != nullptr; }
  bool attach(IFrameWindow*, void* parent) override {
    label_ = makeLabel(parent);
    update();
    return label_ != nullptr;
  }
  void detach() override { DestroyWindow(label_); }
  void update() override { SetWindowTextW(label_, factsOf(document_).c_str()); }
  const wchar_t* contextWords() const noexcept override { return L""; }

 private:
  IDocument* document_ = nullptr;
  HWND label_ = nullptr;
};

class FactsPanel final : public BSmartObject, public IDocumentPanel {
  CORVIX_IDENTITY(FactsPanel, 0x58EC4655, 0xC798D640, 0x1DB32BD7, 0xD242C79F, BSmartObject, IDocumentPanel)

 public:
  bool attach(IFrameWindow*, void* parent) override { return (label_ = makeLabel(parent)) != nullptr; }
  void detach() override { DestroyWindow(label_); }
  void setDocument(IDocument* document) override { SetWindowTextW(label_, factsOf(document).c_str()); }
  void update() override {}
  const wchar_t* title() const noexcept override { return L""; }
  const wchar_t* contextWords() const noexcept override { return L""; }

 private:
  HWND label_ = nullptr;
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::DocumentView_Facts, example::FactsView>(),
              corvix::rowFor<descriptor::Panel_Facts, example::FactsPanel>())
