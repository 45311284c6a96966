#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "shell/language/Translator.h"
#include "shell/menus/MenuManager.h"

namespace host {

using namespace corvix;

namespace {

// The rows of a menu, separators where groups meet; in a view of `words`, or all when there are none.
class MenuPage {
 public:
  MenuPage(const std::wstring* words, IBTranslator* translator) : words_(words), translator_(translator) {}

  void print(const IMenuItem& menu) {
    menu_ = menu.id();
    std::printf("%s\n", shown(menu.id()).c_str());
    printInside(menu, 1);
  }

 private:
  void printInside(const IMenuItem& parent, std::size_t depth) {
    const IMenuItem* before = nullptr;
    for (i32 i = 0; i < parent.childCount(); ++i) {
      const IMenuItem& item = *parent.childAt(i);
      if (words_ && !whenHolds(item.when(), words_->c_str())) continue;
      const std::string indent(2 * depth, ' ');
      if (before && before->group() != item.group()) std::printf("%s---\n", indent.c_str());
      before = &item;
      std::printf("%s%s", indent.c_str(), shown(translated(item.text())).c_str());
      if (*item.key()) std::printf("  [%s]", shown(item.key()).c_str());
      if (*item.actionName()) std::printf("  %s", shown(item.actionName()).c_str());
      if (!words_ && *item.when()) std::printf("  when %s", shown(item.when()).c_str());
      std::printf("  (%s)\n", fileName(item.module()->path()).c_str());
      printInside(item, depth + 1);
    }
  }

  const wchar_t* translated(const wchar_t* text) const {
    return translator_ ? translator_->translateIn(menu_.c_str(), text) : text;
  }

  const std::wstring* words_;
  IBTranslator* translator_;
  std::wstring menu_;
};

int printMenus(IPluginManager& manager, const std::string& name, const std::string& words) {
  const auto menus = createObject<IMenuManager>(manager, L"IMenuManager.Instance");
  if (!menus) {
    explainNoObject(manager, L"IMenuManager.Instance");
    return 1;
  }
  const std::wstring wanted = wide(name), shownFor = wide(words);
  const auto translator = createObject<IBTranslator>(manager, L"IBTranslator.Instance");
  bool isFound = false;
  std::string known;
  for (i32 i = 0; i < menus->menuCount(); ++i) {
    const auto menu = Ref<IBSmartObject>::adopt(menus->menuAt(i)).as<IMenuItem>();
    known += (known.empty() ? "" : ", ") + shown(menu->id());
    if (!name.empty() && menu->id() != wanted) continue;
    isFound = true;
    MenuPage(words.empty() ? nullptr : &shownFor, translator.get()).print(*menu);
  }
  if (isFound) return 0;
  std::fprintf(stderr, "corvix-host: no plug-in has a menu%s%s. There are: %s\n", name.empty() ? "" : " ", name.c_str(),
               known.empty() ? "none" : known.c_str());
  return 1;
}

}  // namespace

const Command menuCommand(
    "menu", "Print the menus and toolbars that the plug-ins have together; none of their code runs",
    {{"NAME", "One of them, such as Menu.Main", Argument::Optional},
     {"--for", "Only what a view of these words shows, such as \"document.paged\"", Argument::Optional}},
    [](Host& host, const Texts& given) { return printMenus(host.describedOnly(), given[0], given[1]); });

}  // namespace host
