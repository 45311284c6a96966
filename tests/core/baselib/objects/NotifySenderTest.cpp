#include "core/baselib/objects/NotifySender.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
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
  Listener& add(char mark, i32 priority = 0, std::function<void()> act = nullptr) {
    Listener& listener = listeners_.emplace_back();
    listener.mark = mark;
    listener.act = std::move(act);
    sender->addListener(&listener, priority);
    return listener;
  }
  // The marks of those that a broadcast tells, in their order.
  std::string told() {
    log_.clear();
    answer = sender->broadcast(&log_, nullptr, [](void* to, void*, IBTransportable* listener) {
      auto& one = *static_cast<Listener*>(listener);
      *static_cast<std::string*>(to) += one.mark;
      if (one.act) one.act();
      return one.answer;
    });
    return log_;
  }

  std::optional<Sender> sender{std::in_place};
  int answer = notify::kGoOn;  // of the last broadcast

 private:
  std::string log_;
  std::deque<Listener> listeners_;
};

TEST_F(NotifySenderTest, TellsInAscendingPriorityAndOrderOfAddition) {
  add('c', 5);
  add('a', -1);
  add('d', 5);
  add('b');
  add('e', 2147483647);
  add('A', -2147483647 - 1);
  EXPECT_EQ(told(), "Aabcde");
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
    EXPECT_EQ(told(), row.told) << row.first << row.second;
    EXPECT_EQ(answer, row.expected) << row.first << row.second;
  }
}

TEST_F(NotifySenderTest, AddedTwiceIsToldOnceAndRemovedTwice) {
  EXPECT_EQ(told(), "");
  EXPECT_EQ(answer, notify::kGoOn);
  Listener& twice = add('2');
  Listener& other = add('1');
  sender->addListener(&twice, 9);
  EXPECT_EQ(told(), "21");
  sender->removeListener(&twice);
  EXPECT_EQ(sender->listenerCount(), 2u);
  EXPECT_EQ(told(), "12");
  for (Listener* one : {&twice, &twice, &other}) sender->removeListener(one);
  EXPECT_FALSE(sender->hasListeners());
  EXPECT_EQ(told(), "");
}

struct ChangeRow {
  const char* why;
  std::function<void()> change;  // while the second of three is told
  const char* told;
  const char* then;  // by the next broadcast
};

TEST_F(NotifySenderTest, TheListMayChangeMeanwhile) {
  Listener &first = add('1'), &second = add('2'), &third = add('3'), &guest = add('g');
  const ChangeRow rows[] = {
      {"removes itself", [&] { sender->removeListener(&second); }, "123", "13"},
      {"removes one whose turn is yet to come", [&] { sender->removeListener(&third); }, "12", "12"},
      {"adds one behind", [&] { sender->addListener(&guest, 5); }, "123g", "123g"},
      {"adds one before its own place: still reached", [&] { sender->addListener(&guest, -5); }, "12g3", "g123"},
      {"removes and adds one that was told",
       [&] {
         sender->removeListener(&first);
         sender->addListener(&first, 5);
       },
       "123", "231"},
  };
  for (const ChangeRow& row : rows) {
    sender.emplace();
    for (Listener* one : {&first, &second, &third}) sender->addListener(one);
    second.act = row.change;
    EXPECT_EQ(told(), row.told) << row.why;
    second.act = nullptr;
    EXPECT_EQ(told(), row.then) << row.why;
  }
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
  const std::string log = told();
  ASSERT_EQ(log.size(), static_cast<std::size_t>(kCount));
  for (int i = 0; i < kCount; ++i) ASSERT_EQ(log[static_cast<std::size_t>(i)], '0' + i % 10);
}

TEST_F(NotifySenderTest, DeliversInsideADeliveryAndMayLoseTheSenderThere) {
  bool nested = false, releases = false;
  add('1', 0, [&] {
    if (!std::exchange(nested, true)) {
      told();
    } else if (releases) {
      sender.reset();
    }
  });
  add('2');
  EXPECT_EQ(told(), "122");
  nested = false;
  releases = true;
  EXPECT_EQ(told(), "1");
}

TEST_F(NotifySenderTest, ReleasesTheSender) {
  add('1', 0, [&] { sender.reset(); }).answer = notify::kTaken;
  add('2');
  EXPECT_EQ(told(), "1");
  EXPECT_EQ(answer, notify::kTaken);
}

TEST_F(NotifySenderTest, ThrowingHandlerLeavesTheSenderUsable) {
  Listener& thrower = add('1', 0, [] { throw std::runtime_error("no"); });
  EXPECT_THROW(told(), std::runtime_error);
  sender->removeListener(&thrower);
  add('2');
  EXPECT_EQ(told(), "2");
}

TEST_F(NotifySenderTest, ListsMayChangeOnAnotherThreadMeanwhile) {
  add('1');
  std::atomic<bool> stop{false};
  Listener& guest = add('g');
  std::thread changer([&] {
    while (!stop) {
      sender->addListener(&guest, -1);
      sender->removeListener(&guest);
    }
  });
  for (int i = 0; i < 3000; ++i) {
    const std::string log = told();
    ASSERT_TRUE(log == "1" || log == "g1" || log == "1g") << log;
  }
  stop = true;
  changer.join();
}

}  // namespace
}  // namespace corvix
