// BDocument: base of a format's documents. It keeps the place, and the history is the list of the shell's own
// IStateHistory: what is done through that needs no more to be modified, saved and taken back. [shell thread]
//
//   class Drawing final : public BDocument, public IPagedDocument {
//     CORVIX_IDENTITY(Drawing, ..., BDocument, IPagedDocument)
//     ...
//   };
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/WideString.h"
#include "shell/documents/Document.h"

namespace corvix {

class CORVIX_API BDocument : public BSmartObject, public IDocument, public IDocumentPlace {
  CORVIX_IDENTITY(BDocument, 0x2C33F2B5, 0x2362AF0E, 0xA6C5B006, 0x48A4DFF3, BSmartObject, IDocument, IDocumentPlace)

 public:
  BDocument() noexcept;
  ~BDocument() override;

  const wchar_t* location() const noexcept override { return location_.c_str(); }
  const wchar_t* title() const noexcept override { return title_.c_str(); }
  bool isModified() const noexcept override;
  const wchar_t* formatName() const noexcept override { return formatName_.c_str(); }
  bool isReadOnly() const noexcept override { return isReadOnly_; }
  IStateList* history() override;  // null without a shell
  void setPlace(const wchar_t* location, const wchar_t* title, const wchar_t* formatName, bool isReadOnly) override;

 protected:
  // After a change that is no step of the history, and cannot be taken back.
  void setModified() noexcept { isModified_ = true; }

 private:
  WideString location_;
  WideString title_;
  WideString formatName_;
  bool isReadOnly_ = false;
  bool isModified_ = false;
  Ref<IBSmartObject> history_;  // once it was asked for
};

}  // namespace corvix
