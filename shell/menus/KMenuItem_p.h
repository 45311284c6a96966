#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/xml/Attributes_p.h"
#include "shell/PluginManager.h"
#include "shell/gui/MenuItem.h"

#include <forward_list>
#include <memory>
#include <string>
#include <vector>

namespace corvix {

// The texts of all templates that a menu came of; its items keep them.
using MenuTexts = std::forward_list<AttributeTable>;

class KMenuItem final : public BSmartObject, public IMenuItem {
  CORVIX_IDENTITY(KMenuItem, 0x13CA0760, 0x3B68CB6A, 0xC78D48C1, 0xAC63193F, BSmartObject, IMenuItem)

 public:
  // `id` and `action` are of the texts, one of them is empty.
  KMenuItem(std::shared_ptr<const MenuTexts> texts, const wchar_t* id, const wchar_t* action, IPluginModule* module)
      : texts_(std::move(texts)), id_(id), action_(action), module_(Ref<IPluginModule>::share(module)) {}

  const wchar_t* text() const noexcept override;
  const wchar_t* actionName() const noexcept override { return action_; }
  const wchar_t* id() const noexcept override { return id_; }
  const wchar_t* icon() const noexcept override { return orEmpty(icon_); }
  const wchar_t* key() const noexcept override { return key_.c_str(); }
  const wchar_t* when() const noexcept override { return orEmpty(when_); }
  i32 order() const noexcept override { return order_; }
  i32 group() const noexcept override { return group_; }
  IPluginModule* module() const noexcept override { return module_.get(); }
  i32 childCount() const noexcept override { return static_cast<i32>(children_.size()); }
  IMenuItem* childAt(i32 index) const noexcept override;

  // What it does not know yet.
  void take(const Attributes& attributes);
  void setKey(std::wstring key) noexcept { key_ = std::move(key); }
  KMenuItem& add(Ref<KMenuItem> child) { return *children_.emplace_back(std::move(child)); }

  // With all inside it, sub-menus in which nothing is left out.
  void arrange();

 private:
  static const wchar_t* orEmpty(const wchar_t* text) noexcept { return text ? text : L""; }

  std::shared_ptr<const MenuTexts> texts_;
  const wchar_t* id_;
  const wchar_t* action_;
  const wchar_t* text_ = nullptr;  // these three null as long as nobody says
  const wchar_t* icon_ = nullptr;
  const wchar_t* when_ = nullptr;
  std::wstring key_;
  i32 order_ = 0;
  i32 group_ = 0;
  bool hasOrder_ = false;
  bool hasGroup_ = false;
  Ref<IPluginModule> module_;
  std::vector<Ref<KMenuItem>, HeapAllocator<Ref<KMenuItem>>> children_;
};

}  // namespace corvix
