#include "core/settings/BSettings_p.h"

#include "core/baselib/objects/Ref.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace corvix {

namespace {

class Watcher final : public ISettingListener, public ISettingsListener {
  CORVIX_IDENTITY(Watcher, 0x897C753F, 0xA568FEEC, 0x2C067AE4, 0x3F03971C, ISettingListener, ISettingsListener)

 public:
  explicit Watcher(std::string& journal, std::string name = "") : journal_(journal), name_(std::move(name)) {}

  int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) override {
    journal_ += name_ + std::string(item, item + std::wcslen(item)) + "=" +
                std::to_string(integerSetting(settings, group, item, -1)) + " ";
    if (then) std::exchange(then, nullptr)(settings);
    return notify::kGoOn;
  }
  int onStartChanges(IBSettings& settings) override {
    journal_ += name_ + "( ";
    if (then) std::exchange(then, nullptr)(settings);
    return notify::kGoOn;
  }
  int onFinishChanges(IBSettings&) override {
    journal_ += name_ + ") ";
    return notify::kGoOn;
  }
  ISettingListener* one() { return this; }
  ISettingsListener* all() { return this; }

  std::function<void(IBSettings&)> then;  // once, at the next change or start

 private:
  std::string& journal_;
  std::string name_;
};

class BSettingsTest : public testing::Test {
 protected:
  Ref<BSettings> settings_ = make<BSettings>();
  std::string journal_;
  Watcher own_{journal_};
  Watcher other_{journal_, "other "};
};

TEST_F(BSettingsTest, KeepsValuesApartAndInOrder) {
  BSettings& s = *settings_;
  Variant value(7);
  EXPECT_FALSE(s.getValue(L"A", L"x", value));
  EXPECT_EQ(value, Variant(7));
  s.watch(L"Watched", L"only", &own_, 0);
  s.setDefault(L"B", L"x", 1);
  s.setValue(L"A", L"x", L"text");
  s.setValue(L"a", L"x", true);
  s.setValue(L"A", L"y", Variant());
  EXPECT_FALSE(s.getValue(L"B", L"x", value));
  EXPECT_TRUE(s.getDefault(L"B", L"x", value));
  EXPECT_FALSE(s.getDefault(L"A", L"x", value));
  EXPECT_TRUE(s.getValue(L"A", L"y", value));
  EXPECT_TRUE(value.isEmpty());
  s.unwatch(L"Watched", L"only", &own_);

  std::wstring listed;
  for (i32 g = 0; g < s.groupCount(); ++g) {
    listed += s.groupAt(g);
    for (i32 i = 0; i < s.itemCount(s.groupAt(g)); ++i) listed += s.itemAt(s.groupAt(g), i);
  }
  EXPECT_EQ(listed, L"BxAxyax");
  EXPECT_EQ(s.groupAt(3), nullptr);
  EXPECT_EQ(s.groupAt(-1), nullptr);
  EXPECT_EQ(s.itemAt(L"A", 2), nullptr);
  EXPECT_EQ(s.itemCount(L"none"), 0);
}

TEST_F(BSettingsTest, NestedBracketsTellOnceEachWay) {
  Watcher everybody(journal_, "all");
  settings_->startSender().addListener(own_.all());
  settings_->finishSender().addListener(own_.all());
  settingsStartChanges().addListener(everybody.all());
  settingsFinishChanges().addListener(everybody.all());
  own_.then = [](IBSettings& s) {  // a change within, in brackets of its own
    s.onStartChanges();
    s.setValue(L"G", L"i", 1);
    s.onFinishChanges();
  };
  settings_->onFinishChanges();  // one too many is ignored
  settings_->onStartChanges();
  settings_->onStartChanges();
  settings_->onFinishChanges();
  journal_ += "- ";
  settings_->onFinishChanges();
  settings_->onFinishChanges();
  EXPECT_EQ(journal_, "( all( - ) all) ");
  settings_->onStartChanges();
  EXPECT_EQ(journal_, "( all( - ) all) ( all( ");
  settingsStartChanges().removeListener(everybody.all());
  settingsFinishChanges().removeListener(everybody.all());
}

TEST_F(BSettingsTest, AWatcherThatThrowsKeepsNobodyFromBeingTold) {
  const auto throws = [](IBSettings&) { throw 7; };
  settings_->watch(L"G", L"i", &own_, 0);
  settings_->watch(L"G", L"i", &other_, 1);
  settings_->startSender().addListener(own_.all());
  settings_->startSender().addListener(other_.all());
  own_.then = throws;
  settings_->onStartChanges();
  own_.then = throws;
  settings_->setValue(L"G", L"i", 1);
  settings_->onFinishChanges();
  EXPECT_EQ(journal_, "( other ( i=1 other i=1 ");
  settings_->startSender().removeListener(own_.all());
  settings_->startSender().removeListener(other_.all());
}

TEST_F(BSettingsTest, WatchersSeeChangesOfTheirItemOnly) {
  settings_->watch(L"G", L"i", &own_, 0);
  settings_->watch(L"G", L"i", &other_, 1);
  settings_->setValue(L"G", L"j", 1);
  settings_->setDefault(L"G", L"i", 1);
  settings_->setValue(L"G", L"i", 2);
  settings_->setValue(L"G", L"i", 2);
  EXPECT_EQ(journal_, "i=2 other i=2 ");

  journal_.clear();
  own_.then = [this](IBSettings& s) {
    s.unwatch(L"G", L"i", &other_);  // as one does that is released meanwhile
    s.setValue(L"G", L"i", 4);
  };
  settings_->setValue(L"G", L"i", 3);
  EXPECT_EQ(journal_, "i=3 i=4 ");
  auto gone = std::make_unique<Watcher>(journal_, "gone ");
  settings_->watch(L"G", L"i", gone.get(), -1);
  gone->then = [&](IBSettings& s) {  // goes while it is told
    s.unwatch(L"G", L"i", gone.get());
    gone.reset();
  };
  journal_.clear();
  settings_->setValue(L"G", L"i", 5);
  EXPECT_EQ(journal_, "gone i=5 i=5 ");
  settings_->unwatch(L"G", L"i", &own_);
  settings_->unwatch(L"G", L"never", &own_);
  settings_->setValue(L"G", L"i", 6);
  EXPECT_EQ(journal_, "gone i=5 i=5 ");
}

}  // namespace

}  // namespace corvix
