#include <gtest/gtest.h>

#include <string>

#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/SmartObject.h"

namespace corvix {
namespace {

class Subject : public BSmartObject {
  CORVIX_IDENTITY(Subject, 0xB1, 2, 3, 4, BSmartObject)

 public:
  explicit Subject(std::string& log) : log_(log) {}
  ~Subject() override { log_ += "~"; }

 private:
  std::string& log_;
};

class Listener : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listener, 0xB2, 2, 3, 4, BSmartObject, IDestroyListener)

 public:
  Listener(std::string& log, char mark, int answer = notify::kGoOn) : log_(log), mark_(mark), answer_(answer) {}
  int onDestroy(IBRTTISupport* sender) override {
    log_ += mark_;
    EXPECT_STREQ(sender->typeInfo().className(), "Subject") << "still whole";
    return answer_;
  }

 private:
  std::string& log_;
  char mark_;
  int answer_;
};

TEST(SmartObject, TellsItsOwnListenersThenEverybodysThenGoes) {
  std::string log;
  Listener own(log, 'o', notify::kStop), everybodys(log, 'e');
  destroyNotifications().addListener(static_cast<IDestroyListener*>(&everybodys));
  auto* object = new Subject(log);
  object->addListener(static_cast<IDestroyListener*>(&own));
  object->addRef();
  EXPECT_FALSE(object->release());
  EXPECT_EQ(log, "");
  EXPECT_TRUE(object->release());
  EXPECT_EQ(log, "oe~") << "the first list's stop does not stop the second";
  destroyNotifications().removeListener(static_cast<IDestroyListener*>(&everybodys));
}

TEST(SmartObject, NotifyDestroyReturnsTheLastListsAnswer) {
  std::string log;
  Listener own(log, 'o', notify::kTaken), everybodys(log, 'e', notify::kStop);
  auto* object = new Subject(log);
  EXPECT_EQ(object->notifyDestroy(), notify::kGoOn);
  object->addListener(static_cast<IDestroyListener*>(&own));
  EXPECT_EQ(object->notifyDestroy(), notify::kTaken);
  destroyNotifications().addListener(static_cast<IDestroyListener*>(&everybodys));
  EXPECT_EQ(object->notifyDestroy(), notify::kStop);
  destroyNotifications().removeListener(static_cast<IDestroyListener*>(&everybodys));
  object->release();
}

// Whatever the global data holds under the name is the list, from the moment on that it is set.
TEST(SmartObject, FindsEverybodysListInTheGlobalDataEachTime) {
  std::string log;
  Listener first(log, '1'), second(log, '2');
  destroyNotifications().addListener(static_cast<IDestroyListener*>(&first));
  BNotifySender* const usual = &destroyNotifications();
  BNotifySender other;
  other.addListener(static_cast<IDestroyListener*>(&second));
  BGlobalData::setItem(IBRemoteRemovable::classInfo(), "OnDestroy", &other, nullptr);
  (new Subject(log))->release();
  BGlobalData::setItem(IBRemoteRemovable::classInfo(), "OnDestroy", usual, nullptr);
  (new Subject(log))->release();
  EXPECT_EQ(log, "2~1~");
  usual->removeListener(static_cast<IDestroyListener*>(&first));
}

}  // namespace
}  // namespace corvix
