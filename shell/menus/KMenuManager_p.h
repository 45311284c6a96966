#pragma once

#include "shell/PluginManager.h"
#include "shell/menus/MenuManager.h"
#include "shell/menus/MenuTemplates_p.h"

namespace corvix {

class KMenuManager final : public IMenuManager {
  CORVIX_IDENTITY(KMenuManager, 0x37A6F827, 0xFB0E2E67, 0x818D66FA, 0xE632F3F7, IMenuManager)

 public:
  // The modules' manager outlives this one.
  explicit KMenuManager(IPluginManager& modules) noexcept : modules_(modules) {}

  IBSmartObject* menu(const wchar_t* name) override;
  i32 menuCount() override;
  IBSmartObject* menuAt(i32 index) override;

 private:
  // What the menus are put together from: modules that work, of so many.
  struct Stand {
    i32 known = -1;
    i32 failed = 0;
    friend bool operator==(const Stand&, const Stand&) = default;
  };
  void update();

  IPluginManager& modules_;
  Stand stand_;
  Menus menus_;
};

}  // namespace corvix
