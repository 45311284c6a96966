#include "core/baselib/objects/NotifySender.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "core/baselib/objects/SmartObject.h"

namespace corvix {
namespace {

// Notes its mark, does something, answers.
class Listener : public BSmartObject {
  CORVIX_IDENTITY(Listener, 0xC1, 2, 3, 4, BSmartObject)

 public:
  char mark = '?';
  int answer = notify::kGoOn;
  std::function<void()> act;
};

class Sender final : public BNotifySender {};

class NotifySenderTest : public testing::Test {
 protected:
  Listener& make(char mark, int answer = notify::kGoOn, std::function<void()> act = nullptr) {
    listeners_.push_back(std::make_unique<Listener>());
    Listener& listener = *listeners_.back();
    listener.mark = mark;
    listener.answer = answer;
    listener.act = std::move(act);
    return listener;
  }
  Listener& add(char mark, i32 priority = 0, int answer = notify::kGoOn, std::function<void()> act = nullptr) {
    Listener& listener = make(mark, answer, std::move(act));
    sender->addListener(&listener, priority);
    return listener;
  }
  int broadcast() {
    log.clear();
    return sender->broadcast(&log, nullptr, [](void* to, void*, IBTransportable* listener) {
      auto& told = *static_cast<Listener*>(listener);
      *static_cast<std::string*>(to) += told.mark;
      if (told.act) told.act();
      return told.answer;
    });
  }

  std::optional<Sender> sender{std::in_place};
  std::string log;

 private:
  std::vector<std::unique_ptr<Listener>> listeners_;
};

TEST_F(NotifySenderTest, TellsInAscendingPriorityAndOrderOfAddition) {
  add('c', 5);
  add('a', -1);
  add('d', 5);
  add('b');
  add('e', 2147483647);
  add('A', -2147483647 - 1);
  EXPECT_EQ(broadcast(), notify::kGoOn);
  EXPECT_EQ(log, "Aabcde");
}

struct AnswerRow {
  int first;
  int second;
  int expected;
  const char* told;
};

TEST_F(NotifySenderTest, Answers) {
  Listener& first = add('1');
  Listener& second = add('2');
  const AnswerRow rows[] = {
      {0, 0, 0, "12"}, {1, 0, 1, "1"},   {2, 0, 2, "12"}, {0, 2, 2, "12"},
      {2, 1, 1, "12"}, {3, -1, 0, "12"}, {2, 7, 2, "12"},
  };
  for (const AnswerRow& row : rows) {
    first.answer = row.first;
    second.answer = row.second;
    EXPECT_EQ(broadcast(), row.expected) << row.first << row.second;
    EXPECT_EQ(log, row.told) << row.first << row.second;
  }
}

TEST_F(NotifySenderTest, EmptyAndEmptiedListsTellNobody) {
  EXPECT_EQ(broadcast(), notify::kGoOn);
  Listener& only = add('1');
  sender->removeListener(&only);
  sender->removeListener(&only);
  EXPECT_FALSE(sender->hasListeners());
  EXPECT_EQ(broadcast(), notify::kGoOn);
  EXPECT_EQ(log, "");
}

TEST_F(NotifySenderTest, AddedTwiceIsToldOnceAndRemovedTwice) {
  Listener& twice = add('2');
  add('1');
  sender->addListener(&twice, 9);
  broadcast();
  EXPECT_EQ(log, "21");
  sender->removeListener(&twice);
  EXPECT_EQ(sender->listenerCount(), 2u);
  broadcast();
  EXPECT_EQ(log, "12");
}

TEST_F(NotifySenderTest, RemovesItself) {
  Listener& self = add('1');
  self.act = [&] { sender->removeListener(&self); };
  add('2');
  broadcast();
  EXPECT_EQ(log, "12");
  broadcast();
  EXPECT_EQ(log, "2");
}

TEST_F(NotifySenderTest, RemovesOneWhoseTurnIsYetToCome) {
  Listener& victim = make('2');
  add('1', 0, notify::kGoOn, [&] { sender->removeListener(&victim); });
  sender->addListener(&victim);
  add('3');
  broadcast();
  EXPECT_EQ(log, "13");
}

TEST_F(NotifySenderTest, AddsAnother) {
  Listener& late = make('l');
  Listener& early = make('e');
  add('1', 0, notify::kGoOn, [&] {
    sender->addListener(&late, 5);
    sender->addListener(&early, -5);  // before its own place: still reached
  });
  add('2');
  broadcast();
  EXPECT_EQ(log, "1e2l");
}

TEST_F(NotifySenderTest, RemovedAndAddedAgainIsNotToldTwice) {
  Listener& first = add('1');
  add('2', 0, notify::kGoOn, [&] {
    sender->removeListener(&first);
    sender->addListener(&first, 5);
  });
  broadcast();
  EXPECT_EQ(log, "12");
}

TEST_F(NotifySenderTest, ManyThatAllChangeTheList) {
  constexpr int kCount = 200;  // more than fits in place
  for (int i = 0; i < kCount; ++i) {
    Listener& self = add(static_cast<char>('0' + i % 10));
    self.act = [this, &self] {
      sender->removeListener(&self);
      sender->addListener(&self, 1);
    };
  }
  broadcast();
  ASSERT_EQ(log.size(), static_cast<std::size_t>(kCount));
  for (int i = 0; i < kCount; ++i) ASSERT_EQ(log[static_cast<std::size_t>(i)], '0' + i % 10);
}

TEST_F(NotifySenderTest, DeliversInsideADelivery) {
  std::string inner;
  bool nested = false;
  add('1', 0, notify::kGoOn, [&] {
    if (nested) return;
    nested = true;
    broadcast();
    inner = log;
    log.clear();
  });
  add('2');
  broadcast();
  EXPECT_EQ(inner, "12");
  EXPECT_EQ(log, "2");
}

TEST_F(NotifySenderTest, ReleasesTheSender) {
  add('1', 0, notify::kTaken, [&] { sender.reset(); });
  add('2');
  EXPECT_EQ(broadcast(), notify::kTaken);
  EXPECT_EQ(log, "1");
}

TEST_F(NotifySenderTest, ReleasesTheSenderInsideANestedDelivery) {
  bool nested = false;
  add('1', 0, notify::kGoOn, [&] {
    if (nested) {
      sender.reset();
    } else {
      nested = true;
      broadcast();
    }
  });
  add('2');
  broadcast();
  EXPECT_EQ(log, "1");
}

TEST_F(NotifySenderTest, ThrowingHandlerLeavesTheSenderUsable) {
  Listener& thrower = add('1', 0, notify::kGoOn, [] { throw std::runtime_error("no"); });
  EXPECT_THROW(broadcast(), std::runtime_error);
  sender->removeListener(&thrower);
  add('2');
  broadcast();
  EXPECT_EQ(log, "2");
}

TEST_F(NotifySenderTest, ListsMayChangeOnAnotherThreadMeanwhile) {
  add('1');
  std::atomic<bool> stop{false};
  Listener& guest = make('g');
  std::thread changer([&] {
    while (!stop) {
      sender->addListener(&guest, -1);
      sender->removeListener(&guest);
    }
  });
  for (int i = 0; i < 3000; ++i) {
    broadcast();
    ASSERT_TRUE(log == "1" || log == "g1" || log == "1g") << log;
  }
  stop = true;
  changer.join();
}

}  // namespace
}  // namespace corvix
