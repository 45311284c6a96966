#pragma once

#include "core/baselib/objects/Ref.h"
#include "shell/Shell.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/manager/DocumentPlace_p.h"
#include "shell/documents/manager/RecentList_p.h"
#include "shell/services/KReport_p.h"

namespace corvix {

struct DeclaredFormat;

class KDocManager final : public BSmartObject, public IDocManager {
  CORVIX_IDENTITY(KDocManager, 0xC48848D7, 0x47A0CE2B, 0xA9E378D6, 0xEE52669A, BSmartObject, IDocManager)

 public:
  // The shell outlives the manager.
  explicit KDocManager(IShell& shell);
  ~KDocManager() override;

  IDocument* openDocument(const wchar_t* location) override;
  bool closeDocument(IDocument* document) override;
  i32 documentCount() const noexcept override { return static_cast<i32>(rows_.size()); }
  IDocument* documentAt(i32 index) const noexcept override;
  IDocument* newDocument(const wchar_t* formatName) override;
  bool saveDocument(IDocument* document) override;
  bool saveDocumentAs(IDocument* document, const wchar_t* location, const wchar_t* formatName) override;
  IDocument* activeDocument() const noexcept override { return active_; }
  bool setActiveDocument(IDocument* document) override;
  IBCollection* dialogFilters(bool forWriting) override;
  i32 recentCount() override { return recent_.count(); }
  const wchar_t* recentAt(i32 index) override { return recent_.at(index); }
  void forgetRecent(const wchar_t* location) override { recent_.forget(location); }
  IBReport* report() noexcept override { return report_.get(); }
  void setQuestions(IDocQuestions* questions) noexcept override { questions_ = questions; }

 private:
  struct Row {
    Ref<IDocument> document;
    DocumentPlace place;
    FileState state;  // when it was read or written last
    bool isClosing = false;
    bool isBeingWritten = false;  // what it is asked meanwhile, by its format or a user who sees progress, must wait
  };
  using Rows = std::vector<Row, HeapAllocator<Row>>;
  class Operation;

  Row* find(const IDocument* document) noexcept;
  Row* findFile(const DocumentPlace& place) noexcept;
  IDocument* list(Ref<IDocument> document, const DocumentPlace& place, const FileState& state);
  void activate(IDocument* document);
  void tell(const wchar_t* event, IDocument* document, const std::wstring& location);
  DocAnswer ask(DocQuestion question, IDocument& document, const std::wstring& text);
  std::wstring sentence(const wchar_t* text, std::wstring_view part) const;  // in the user's language

  bool save(IDocument& document, const DocumentPlace& place, const DeclaredFormat& format, KReport& report);
  bool write(IDocument& document, const DocumentPlace& place, const DeclaredFormat& format, KReport& report);

  IShell& shell_;
  Rows rows_;
  IDocument* active_ = nullptr;
  IDocQuestions* questions_ = nullptr;
  Ref<KReport> report_;
  RecentList recent_;
  u32 untitled_ = 0;  // so many new ones had a number
};

}  // namespace corvix
