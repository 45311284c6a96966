#include "shell/menus/KMenuManager_p.h"

#include "core/settings/BSettings_p.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/modules/KPluginManager_p.h"
#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

namespace corvix {
namespace {

using testing_support::addAttributes;
using testing_support::AttributeRows;

// A template; `end` closes a sub-menu.
class Template {
 public:
  explicit Template(const wchar_t* menu = L"Menu.Main") { open(L"Menu", {{L"Name", menu}}); }
  Template& open(const wchar_t* element, AttributeRows attributes) {
    const auto made = make<XMLNodeNode>(at_, XmlNodeType::Element, element);
    addAttributes(*made, attributes);
    at_->appendChild(made.get());
    at_ = made.get();
    return *this;
  }
  Template& item(AttributeRows attributes) { return open(L"Item", attributes).end(); }
  Template& popup(AttributeRows attributes) { return open(L"Popup", attributes); }
  Template& end() { return at_ = at_->parent(), *this; }
  const XMLNode* root() const { return root_.get(); }

 private:
  Ref<XMLNodeNode> root_ = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  XMLNodeNode* at_ = root_.get();
};

struct Mute final : IUserAlert {
  void show(const std::wstring&, const wchar_t*) override {}
};

// Modules "a", "b", ... of one test.
class Program {
 public:
  Menus merged(std::initializer_list<const Template*> templates) {
    MenuTemplates all;
    wchar_t name[] = L"a";
    for (const Template* one : templates) {
      modules_.push_back(make<KPluginModule>(name, factory_, alert_));
      all.add(one->root(), modules_.back().get());
      ++*name;
    }
    return all.finish();
  }

 private:
  KClassFactoryLocal factory_;
  Mute alert_;
  std::vector<Ref<KPluginModule>> modules_;
};

std::string narrow(const wchar_t* text) { return {text, text + std::wcslen(text)}; }

// "Menu{text[key]/module ... Popup{...}}"
std::string shown(const IMenuItem& item) {
  std::string all = narrow(item.text());
  if (*item.key()) all += "[" + narrow(item.key()) + "]";
  if (*item.actionName()) return all + "/" + narrow(item.module()->path());
  all += "{";
  for (i32 i = 0; i < item.childCount(); ++i) all += (i ? " " : "") + shown(*item.childAt(i));
  return all + "}";
}

std::string shown(const Menus& menus) {
  std::string all;
  for (const Ref<KMenuItem>& menu : menus) all += (all.empty() ? "" : " ") + shown(*menu);
  return all;
}

TEST(Menus, PopupsOfOneIdBecomeOneAndRowsStandByOrderGroupModuleAndPosition) {
  const auto first = Template()
                         .popup({{L"Id", L"View"}, {L"Order", L"300"}})
                         .item({{L"Action", L"Actions.z"}, {L"Text", L"z"}, {L"Group", L"20"}})
                         .item({{L"Action", L"Actions.y"}, {L"Text", L"y"}, {L"Group", L"10"}})
                         .popup({{L"Id", L"More"}});  // nothing in it
  const auto second = Template()
                          .popup({{L"Id", L"File"}, {L"Text", L"&File"}, {L"Order", L"0x64"}})
                          .item({{L"Action", L"Actions.q"}, {L"Order", L"9"}})
                          .item({{L"Action", L"Actions.p"}, {L"Text", L"p"}, {L"Order", L"-9"}})
                          .end()
                          .popup({{L"Id", L"View"}, {L"Text", L"&View"}, {L"Order", L"1"}})
                          .item({{L"Action", L"Actions.x"}, {L"Text", L"x"}, {L"Group", L"10"}})
                          .popup({{L"Id", L"View"}})  // another one: it stands elsewhere
                          .item({{L"Action", L"Actions.w"}, {L"Text", L"w"}});
  const auto toolbar = Template(L"Toolbar.Main").item({{L"Action", L"Actions.t"}, {L"Text", L"t"}});
  EXPECT_EQ(shown(Program().merged({&first, &second, &toolbar})),
            "Menu.Main{&File{p/b Actions.q/b} &View{View{w/b} y/a x/b z/a}} Toolbar.Main{t/c}");
}

TEST(Menus, AKeyBelongsToTheActionThatClaimedItFirst) {
  struct Row {
    const wchar_t *key, *shown;
  };
  for (const auto& [key, expected] :
       {Row{L"Ctrl+A", L"Ctrl+A"}, Row{L"shift+ALT+ctrl+pgup", L"Ctrl+Alt+Shift+PgUp"}, Row{L"f24", L"F24"},
        Row{L"Ctrl+Ctrl+9", L"Ctrl+9"}, Row{L"Plus", L"Plus"}, Row{L"F25", L""}, Row{L"F01", L""}, Row{L"Ctrl+", L""},
        Row{L"", L""}, Row{L"Strg+A", L""}, Row{L"A+Ctrl", L""}})
    EXPECT_EQ(normalizedKey(key).value_or(L""), expected) << narrow(key);
  const auto claims = [](const wchar_t* action, const wchar_t* key) {
    return Template().item({{L"Action", action}, {L"Text", action + 8}, {L"Key", key}});
  };
  const auto a = claims(L"Actions.a", L"Ctrl+F9"), b = claims(L"Actions.b", L"CTRL+f9"),
             again = claims(L"Actions.a", L"ctrl+F9"), none = claims(L"Actions.c", L"Hyper+X");
  EXPECT_EQ(shown(Program().merged({&a, &b, &again, &none})), "Menu.Main{a[Ctrl+F9]/a b/b a[Ctrl+F9]/c c/d}");
  // All keys claimed by all: the first module has them.
  Template all[3];
  for (std::size_t i = 0; i < std::size(all); ++i) {
    for (wchar_t key = L'A'; key <= L'Z'; ++key)
      all[i].item(
          {{L"Action", (L"Actions." + std::to_wstring(i)).c_str()}, {L"Key", (std::wstring(L"Ctrl+") + key).c_str()}});
  }
  Program program;
  const Menus menus = program.merged({&all[0], &all[1], &all[2]});
  for (i32 i = 0; i < menus[0]->childCount(); ++i) EXPECT_EQ(*menus[0]->childAt(i)->key() != 0, i < 26) << i;
}

TEST(Menus, WhatIsBeyondTheLimitsIsLeftOutAndTheRestStands) {
  const std::wstring longText(MenuTemplates::kLongestText + 1, L'x');
  Template hostile;
  hostile.item({{L"Text", L"no action"}})
      .item({{L"Action", L""}})
      .item({{L"Action", L"Actions.l"}, {L"Text", longText.c_str()}});
  hostile.open(L"Popup", {})
      .item({{L"Action", L"Actions.unreachable"}})
      .end()
      .item({{L"Action", L"Actions.good"}, {L"Text", L"good"}});
  for (int depth = 0; depth < 1'000'000; ++depth) {
    hostile.popup({{L"Id", L"d"}});
    if (depth < 2 * MenuTemplates::kDeepest) hostile.item({{L"Action", L"Actions.i"}, {L"Text", L"i"}});
  }
  std::string deep = "{i/a}";
  for (int depth = 1; depth < MenuTemplates::kDeepest; ++depth) deep = "{i/a d" + deep + "}";
  EXPECT_EQ(shown(Program().merged({&hostile})), "Menu.Main{good/a d" + deep + "}");

  Template many;
  for (std::size_t i = 0; i < 2 * MenuTemplates::kMostElements; ++i)
    many.item({{L"Action", (L"Actions." + std::to_wstring(i)).c_str()}, {L"Key", L"Ctrl+A"}});
  Program program;
  const Menus menus = program.merged({&many, &many});
  EXPECT_EQ(menus[0]->childCount(), static_cast<i32>(2 * (MenuTemplates::kMostElements - 1)));  // the menu is one
}

TEST(Menus, ConditionsAreWordsThatAreSoOrNot) {
  struct Row {
    const wchar_t *condition, *words;
    bool holds;
  };
  const Row rows[] = {
      {L"", L"", true},
      {nullptr, nullptr, true},
      {L"a", nullptr, false},
      {L"document.paged and !busy", L"printer document.paged", true},
      {L"document.paged and !busy", L"busy document.paged", false},
      {L"  a  and b ", L"b  a", true},
      {L"a", L"ab", false},
      {L"!a", L"ab", true},
      {L"!", L"a", true},
      {L"a or b", L"a b", false},  // no word of it
  };
  for (const Row& row : rows)
    EXPECT_EQ(whenHolds(row.condition, row.words), row.holds) << narrow(row.condition ? row.condition : L"null");
}

}  // namespace
}  // namespace corvix
