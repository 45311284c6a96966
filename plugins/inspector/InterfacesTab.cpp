// Every declared interface; one can be made, to see whether that goes well.
#include "plugins/inspector/Tab.h"

namespace corvix::inspector {

namespace {

class InterfacesTab : public Tab {
 public:
  void refresh() override {
    IPluginManager& manager = *IShell::getInstance()->pluginManager();
    std::vector<Row> rows;
    for (i32 i = 0; i < manager.interfaceCount(); ++i) {
      const IPluginInterface& entry = *manager.interfaceAt(i);
      const std::string words = entry.identifier().text();
      const auto* const report = query<ICreationReport>(&entry);
      rows.push_back({entry.name(), fileName(entry.module()->path()), orEmpty(entry.attribute(L"Order")),
                      orEmpty(entry.attribute(L"sHumanName")), report ? report->reason() : L"",
                      std::wstring(words.begin(), words.end())});
    }
    list_.show(rows);
  }

  void command(int id, int) override {
    IPluginInterface* const entry = IShell::getInstance()->pluginManager()->interfaceAt(list_.selected());
    if (id != kMake) return;
    if (!entry) return say(L"Choose an interface first.");
    Ref<IBSmartObject> object;
    if (!staysOpen(page(), [&] { object = Ref<IBSmartObject>::adopt(entry->createObject()); })) return;
    const auto* const report = query<ICreationReport>(entry);
    say(object   ? std::wstring(L"Made a ") + object->typeInfo().classNameW() + L", and released it."
        : report ? std::wstring(L"Not made: ") + report->reason()
                 : L"Not made.");
    refresh();
  }

 private:
  static constexpr int kMake = 1;

  void make() override {
    list_.make(page(), kList,
               {{L"Interface", 190},
                {L"Module", 100},
                {L"Order", 50},
                {L"Human name", 240},
                {L"Why not made", 160},
                {L"Identifier", 330}});
    addButton(L"&Make one", kMake, 110);
    addToRow(L"STATIC", L"", SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, kSaid, 0);
  }
};

}  // namespace

std::unique_ptr<Tab> makeInterfacesTab() { return std::make_unique<InterfacesTab>(); }

}  // namespace corvix::inspector
