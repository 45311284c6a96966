#include "plugins/gui/Words.h"

#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/documents/TextSource.h"

namespace corvix::gui {

std::wstring wordsOf(IDocument* document) {
  if (!document) return {};
  std::wstring words = std::wstring(L"document ") + document->formatName();
  const struct {
    const wchar_t* word;
    bool holds;
  } rows[] = {{L" document.paged", query<IPagedDocument>(document) != nullptr},
              {L" document.text", query<ITextSource>(document) != nullptr},
              {L" document.editable", query<ITextEditor>(document) != nullptr},
              {L" document.outline", query<IOutline>(document) != nullptr},
              {L" document.readonly", document->isReadOnly()},
              {L" document.modified", document->isModified()}};
  for (const auto& row : rows) {
    if (row.holds) words += row.word;
  }
  return words;
}

}  // namespace corvix::gui
