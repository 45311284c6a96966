// IMenuItem: one row of a menu or toolbar, put together from the templates of all modules (shell/menus/MenuManager.h).
// Texts, and rows inside it, are good as long as the menu that it was reached from. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IPluginModule;

class IMenuItem : public IBTransportable {
  CORVIX_IDENTITY(IMenuItem, 0xC447A503, 0xA7DF3A99, 0xD2EF20E6, 0x6027B32D, IBTransportable)

 public:
  // For the user, "&" before the letter that is underlined and "&&" for one; never empty: if need be, its other name.
  virtual const wchar_t* text() const noexcept = 0;
  virtual const wchar_t* actionName() const noexcept = 0;  // "Actions." and words; empty for a sub-menu

  // By which templates name it: the "Id" of a sub-menu, the "Name" of a menu; empty for other rows.
  virtual const wchar_t* id() const noexcept = 0;
  virtual const wchar_t* icon() const noexcept = 0;  // a name; empty for none

  // "Ctrl+Alt+Shift+PgUp", what there is of it in this order; empty for none, also when another action has the key.
  virtual const wchar_t* key() const noexcept = 0;

  // When it is to be shown: a condition for `whenHolds`.
  virtual const wchar_t* when() const noexcept = 0;

  // Rows stand by their order. A separator belongs between two neighbours that are shown and differ in their group.
  virtual i32 order() const noexcept = 0;
  virtual i32 group() const noexcept = 0;

  // Whose template has it, of those that say the same the first. Adds no reference.
  virtual IPluginModule* module() const noexcept = 0;

  virtual i32 childCount() const noexcept = 0;
  virtual IMenuItem* childAt(i32 index) const noexcept = 0;  // null outside the list; adds no reference
};

}  // namespace corvix
