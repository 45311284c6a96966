// IMenuManager: the menus and toolbars of a program, one tree each, put together from what all modules have in their
// resource MENUTEMPL. That is read as data: no plug-in's code is loaded for it. docs/menus.md says what templates say.
// [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "shell/gui/MenuItem.h"

namespace corvix {

// Found under the name "IMenuManager.Instance"; a plug-in that declares the name takes the library's place.
class IMenuManager : public BSmartObject {
  CORVIX_IDENTITY(IMenuManager, 0xDD9F836B, 0x80EF4DBD, 0xBEF68121, 0x8086E8C7, BSmartObject)

 public:
  // The menu or toolbar of this name as an IMenuItem, with a reference that the caller owns; null when no template has
  // it. What is asked for after more modules were registered, or one has failed, is put together anew; a tree that was
  // handed out stays as it was.
  virtual IBSmartObject* menu(const wchar_t* name) = 0;

  // Likewise, in the order in which the modules name them.
  virtual i32 menuCount() = 0;
  virtual IBSmartObject* menuAt(i32 index) = 0;  // null outside the list
};

// Whether a condition, words with "and" between and each with "!" before it or not, holds where those words are so,
// with blanks between: "document.paged and !busy" holds for "document.paged printer". An empty one always does. [any
// thread]
CORVIX_API bool whenHolds(const wchar_t* condition, const wchar_t* words) noexcept;

}  // namespace corvix
