#include "shell/GlobalEvent.h"

#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace corvix {

namespace {

using testing_support::Descriptor;
using testing_support::journal;
using testing_support::narrow;
using testing_support::OwnObject;
using testing_support::shell;

IPluginManager& manager() { return *shell().pluginManager(); }

i32 targetsMade = 0;

// A target notes which of them it is: they are made one after the other.
class Target final : public BSmartObject, public IGlobalEventTarget {
  CORVIX_IDENTITY(Target, 0x674AB60E, 0xD4AB8164, 0x3698A1A7, 0x5251373C, BSmartObject, IGlobalEventTarget)

 public:
  int onGlobalEvent(IGlobalEvent& event) override {
    journal() += "target" + std::to_string(++targetsMade) + narrow(event.name()) + " ";
    if (targetsMade == 1 && std::wstring_view(event.name()) == L"Growing")
      Descriptor()
          .interface_(L"GlobalEvent.Growing", L"Low")
          .interface_(L"GlobalEvent.Growing", L"1")
          .registerIn(manager());
    if (targetsMade == 3) throw std::runtime_error("no time for events");  // the others are told nevertheless
    return notify::kStop;                                                  // of no consequence
  }
};

class Event final : public IGlobalEvent {
  CORVIX_IDENTITY(Event, 0xEC8B08C1, 0xB4B2518F, 0xDB391F53, 0xAFE9A65F, IGlobalEvent)
 public:
  explicit Event(const wchar_t* name) : name_(name) {}
  const wchar_t* name() const noexcept override { return name_; }

 private:
  const wchar_t* name_;
};

class EventListener final : public IGlobalEventTarget {
  CORVIX_IDENTITY(EventListener, 0x4CA6D9DE, 0x480B8FB4, 0xA1EC6A87, 0x2B43780D, IGlobalEventTarget)
 public:
  explicit EventListener(const char* name) : name_(name) {}
  int onGlobalEvent(IGlobalEvent&) override {
    journal() += name_ + std::string(" ");
    if (throws) throw std::runtime_error("no ear for it");
    return notify::kStop;
  }
  bool throws = false;

 private:
  const char* name_;
};

TEST(Events, ReachListsAndTargetsInTheirOrder) {
  Descriptor descriptor;
  for (const wchar_t* order : std::initializer_list<const wchar_t*>{L"25", nullptr, L"hight", L"DEFAULT", L"0x10",
                                                                    L"Low", L"-101", L"Highest"})
    descriptor.interface_(L"GlobalEvent.Ordered", order);
  descriptor.interface_(L"GlobalEvent.Odd").registerIn(manager());
  const auto found = Ref<IBCollection>::adopt(manager().findByName(L"GlobalEvent.Ordered"));
  std::string orders;
  for (i32 i = 0; i < found->count(); ++i) {
    const wchar_t* const order = query<IPluginInterface>(found->item(i))->attribute(L"Order");
    orders += narrow(order ? order : L"none") + " ";
  }
  EXPECT_EQ(orders, "-101 hight Low none DEFAULT Highest 0x10 25 ");

  EventListener before("before"), everybodyBefore("all-before"), after("after"), everybodyAfter("all-after");
  const auto listOf = [](const char* name) {
    return static_cast<BNotifySender*>(BGlobalData::getItem(IPluginManager::classInfo(), name));
  };
  Event nobodys(L"Nobodys"), ordered(L"Ordered"), odd(L"Odd");
  manager().raiseEvent(nobodys);  // makes the lists
  const std::pair<BNotifySender*, EventListener*> lists[] = {{&manager().preEventSender(), &before},
                                                             {&manager().postEventSender(), &after},
                                                             {listOf("preGlobalEvent"), &everybodyBefore},
                                                             {listOf("postGlobalEvent"), &everybodyAfter}};
  for (const auto& [list, listener] : lists) list->addListener(listener);
  before.throws = everybodyBefore.throws = after.throws = true;
  const auto raised = [](Event& event) {
    journal().clear();
    manager().raiseEvent(event);
    return journal();
  };
  EXPECT_EQ(raised(nobodys), "before all-before after all-after ");
  EXPECT_EQ(raised(odd), "before all-before made gone after all-after ");
  for (const auto& [list, listener] : lists) list->removeListener(listener);
  targetsMade = 0;
  Event growing(L"Growing");
  Descriptor().interface_(L"GlobalEvent.Growing").registerIn(manager());
  EXPECT_EQ(raised(growing), "target1Growing target2Growing ") << "itself once, and who came behind it";
  targetsMade = 0;
  EXPECT_EQ(raised(ordered),
            "target1Ordered target2Ordered target3Ordered target4Ordered target5Ordered target6Ordered target7Ordered "
            "target8Ordered ");
}

const OwnObject ownObjects[] = {{L"GlobalEvent.Ordered", create<Target>},
                                {L"GlobalEvent.Growing", create<Target>},
                                {L"GlobalEvent.Odd", create<testing_support::OfNoUse>}};

}  // namespace

}  // namespace corvix
