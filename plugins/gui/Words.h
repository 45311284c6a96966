// What can be said of a document, for conditions of views, panels and menus: see shell/gui/DocumentView.h.
#pragma once

#include <string>

namespace corvix {

class IDocument;

namespace gui {

std::wstring wordsOf(IDocument* document);  // null: empty

}  // namespace gui

}  // namespace corvix
