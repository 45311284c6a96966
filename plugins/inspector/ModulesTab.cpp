// Every module, its state and why.
#include "plugins/inspector/Tab.h"

#include <commctrl.h>

namespace corvix::inspector {

namespace {

const wchar_t* stateName(ModuleState state) {
  switch (state) {
    case ModuleState::Described:
      return L"described";
    case ModuleState::Loaded:
      return L"loaded";
    case ModuleState::Failed:
      return L"FAILED";
    case ModuleState::NoPlugin:
      return L"no plug-in";
  }
  return L"";
}

class ModulesTab : public Tab {
 public:
  void refresh() override {
    IPluginManager& manager = *IShell::getInstance()->pluginManager();
    std::vector<Row> rows;
    for (i32 i = 0; i < manager.moduleCount(); ++i) {
      const IPluginModule& module = *manager.moduleAt(i);
      rows.push_back({fileName(module.path()), stateName(module.state()), module.name(), module.version(),
                      orEmpty(module.attribute(L"Manufacturer")), module.reason(), module.path()});
    }
    list_.show(rows);
    const IPluginModule* const chosen = manager.moduleAt(list_.selected());
    const auto* const record = query<IStartRecord>(chosen);
    EnableWindow(again_, record && record->isLeftOut());
    if (chosen != said_) say(chosen ? chosen->reason() : L"");
    said_ = chosen;
  }

  void changed(const NMHDR& notification) override {
    if (notification.code == LVN_ITEMCHANGED) refresh();
  }

  void command(int id, int) override {
    const IPluginModule* const chosen = IShell::getInstance()->pluginManager()->moduleAt(list_.selected());
    auto* const record = query<IStartRecord>(const_cast<IPluginModule*>(chosen));
    if (id != kAgain || !record) return;
    say(record->tryAgain() ? L"It is tried again at the next start." : L"The record could not be taken away.");
  }

 private:
  static constexpr int kAgain = 1;

  void make() override {
    list_.make(page(), kList,
               {{L"Module", 110},
                {L"State", 75},
                {L"Name", 130},
                {L"Version", 60},
                {L"Manufacturer", 120},
                {L"Reason", 220},
                {L"Path", 400}});
    again_ = addButton(L"Try it &again", kAgain, 110);
    addToRow(L"STATIC", L"", SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, kSaid, 0);
  }

  HWND again_ = nullptr;
  const IPluginModule* said_ = nullptr;
};

}  // namespace

std::unique_ptr<Tab> makeModulesTab() { return std::make_unique<ModulesTab>(); }

}  // namespace corvix::inspector
