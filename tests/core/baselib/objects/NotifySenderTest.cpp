#include "core/baselib/objects/NotifySender.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/system/CriticalSection.h"
#include "tests/support/HeapFaults.h"

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
      EXPECT_EQ(dataCSProc().heldCount(), 0u) << "handlers run outside the lock";
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
  add('e', 2147483647);
  add('d', 5);
  add('b');
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

// A listener's entry that is first in the order is the one that counts, and the one that goes.
TEST_F(NotifySenderTest, EnteredTimeAndAgainUnderAnyPriorities) {
  struct One {
    i32 priority;
    Listener* listener;
  };
  std::vector<Listener*> listeners;
  std::vector<One> expected;  // in the order of telling
  const auto toldNext = [&] {
    std::string marks;
    for (const One& one : expected) {
      if (marks.find(one.listener->mark) == std::string::npos) marks += one.listener->mark;
    }
    return marks;
  };
  const auto addTo = [&](Listener* listener, i32 priority) {
    sender->addListener(listener, priority);
    const auto place =
        std::find_if(expected.begin(), expected.end(), [=](const One& one) { return one.priority > priority; });
    expected.insert(place, {priority, listener});
  };
  const auto removeFrom = [&](Listener* listener) {
    sender->removeListener(listener);
    const auto place =
        std::find_if(expected.begin(), expected.end(), [=](const One& one) { return one.listener == listener; });
    if (place != expected.end()) expected.erase(place);
  };
  for (const char mark : {'a', 'b', 'c'}) {
    listeners.push_back(&add(mark));
    removeFrom(listeners.back());
  }
  std::mt19937 random(21);
  for (int step = 0; step < 600; ++step) {
    Listener* const one = listeners[random() % 3];
    // Longer and longer, then shorter and shorter.
    if (random() % 600 >= static_cast<u32>(step)) {
      addTo(one, static_cast<i32>(random() % 9));
    } else {
      removeFrom(one);
    }
    ASSERT_EQ(told(), toldNext()) << step;
    ASSERT_EQ(sender->listenerCount(), expected.size());
  }
  // Within a delivery: told once, whichever of its entries goes.
  addTo(listeners[0], -1);
  addTo(listeners[0], 4);
  listeners[0]->act = [&] { sender->removeListener(listeners[0]); };
  const std::string marks = told();
  EXPECT_EQ(std::count(marks.begin(), marks.end(), 'a'), 1);
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

TEST_F(NotifySenderTest, AThrowingHandlerCountsAsGoOnAndTheOthersAreTold) {
  static int notFreed;
  const std::function<void()> rows[] = {[] { throw std::runtime_error("no"); }, [] { throw 7; },
                                        [] { throw &notFreed; },
                                        [this] {
                                          sender.reset();
                                          throw 7;
                                        }};
  for (const auto& row : rows) {
    sender.emplace();
    add('1', 0, row).answer = notify::kStop;
    add('2').answer = notify::kTaken;
    const bool isReleased = &row == std::end(rows) - 1;
    EXPECT_EQ(told(), isReleased ? "1" : "12");
    EXPECT_EQ(answer, isReleased ? notify::kGoOn : notify::kTaken);
  }
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

// The rule itself: before every step the first of the list that this delivery has not told yet.
class Rule {
 public:
  using Served = std::set<int>;

  void add(int listener, i32 priority) {
    const auto above = std::find_if(list_.begin(), list_.end(), [=](const auto& one) { return one.first > priority; });
    list_.insert(above, {priority, listener});
  }
  void remove(int listener) {
    const auto held = std::find_if(list_.begin(), list_.end(), [=](const auto& one) { return one.second == listener; });
    if (held != list_.end()) list_.erase(held);
  }
  int next(const Served& served) const {
    for (const auto& [priority, listener] : list_) {
      if (!served.count(listener)) return listener;
    }
    return -1;
  }
  std::size_t size() const { return list_.size(); }

 private:
  std::vector<std::pair<i32, int>> list_;
};

// Listeners that add, remove, deliver and throw at random, the rule beside them.
class RandomPlay {
 public:
  RandomPlay(unsigned seed, int nested) : random_(seed), nested_(nested) {
    for (int i = 0; i < 12; ++i) change();
  }

  void deliver() {
    Rule::Served served;
    Rule::Served* const outer = std::exchange(served_, &served);
    bool wasEnded = true;
    try {
      wasEnded = sender_.broadcast(this, nullptr, tell) == notify::kStop;
    } catch (int) {
    }
    if (!wasEnded) {
      EXPECT_EQ(rule_.next(served), -1);
    }
    served_ = outer;
  }

  std::size_t steps() const { return steps_; }

 private:
  u32 pick(u32 below) { return static_cast<u32>(random_() % below); }

  void change() {
    const int one = static_cast<int>(pick(kListeners));
    if (pick(2)) {
      const i32 priority = static_cast<i32>(pick(5));
      sender_.addListener(&listeners_[one], priority);
      rule_.add(one, priority);
    } else {
      sender_.removeListener(&listeners_[one]);
      rule_.remove(one);
    }
    ASSERT_EQ(sender_.listenerCount(), rule_.size());
  }

  int told(int listener) {
    ++steps_;
    EXPECT_EQ(listener, rule_.next(*served_));
    served_->insert(listener);
    if (::testing::Test::HasFailure()) return notify::kStop;
    for (u32 changes = pick(4); changes > 0; --changes) change();
    if (nested_ > 0 && pick(3) == 0) {
      --nested_;
      deliver();
    }
    for (u32 changes = pick(3); changes > 0; --changes) change();
    if (pick(40) == 0) throw 1;
    return pick(30) == 0 ? notify::kStop : notify::kGoOn;
  }

  static int tell(void* play, void*, IBTransportable* listener) {
    auto& self = *static_cast<RandomPlay*>(play);
    return self.told(static_cast<int>(static_cast<Listener*>(listener) - self.listeners_));
  }

  static constexpr u32 kListeners = 10;
  Listener listeners_[kListeners];
  Sender sender_;
  Rule rule_;
  std::mt19937 random_;
  int nested_;  // deliveries that are left to be made
  Rule::Served* served_ = nullptr;
  std::size_t steps_ = 0;
};

TEST(NotifySenderRule, HoldsWhateverHandlersDo) {
  std::size_t steps = 0;
  for (unsigned seed = 0; seed < 150 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomPlay play(seed, seed % 2 ? 20 : 150);
    for (int i = 0; i < 20; ++i) play.deliver();
    steps += play.steps();
  }
  RecordProperty("steps", static_cast<int>(steps));
  EXPECT_GT(steps, 20000u);
}

// More deliveries at once than there are marks for, each of which has seen the list change.
TEST_F(NotifySenderTest, DeliveriesUnderEachOther) {
  constexpr int kDepth = 200;
  int depth = 0;
  Listener& guest = add('g', 3);
  add('a', 0, [&] {
    sender->removeListener(&guest);
    sender->addListener(&guest, -1);
  });
  int told = 0;
  Listener& diver = add('d', 1, [&] {
    if (++depth < kDepth)
      sender->broadcast(&told, nullptr, [](void* count, void*, IBTransportable* one) {
        ++*static_cast<int*>(count);
        if (auto& act = static_cast<Listener*>(one)->act) act();
        return notify::kGoOn;
      });
  });
  add('z', 2);
  diver.act();
  EXPECT_EQ(told, 4 * (kDepth - 1));
}

// What deliveries and changes leave behind goes with the last delivery that needs it.
TEST_F(NotifySenderTest, NothingPilesUp) {
  add('1');
  Listener& guest = add('g');
  bool isBusy = false;
  int most = 0;
  std::optional<testing_support::HeapFaults> heap;
  add('b', 0, [&] {
    if (std::exchange(isBusy, true)) return;
    for (int i = 0; i < 5000; ++i) {
      sender->removeListener(&guest);
      sender->broadcast(nullptr, nullptr, [](void*, void*, IBTransportable*) { return notify::kGoOn; });
      sender->addListener(&guest, i % 3);
      most = std::max(most, heap->liveBlocks());
    }
  });
  heap.emplace();
  told();
  EXPECT_LE(most, 20);
  EXPECT_LE(heap->liveBlocks(), 5);
}

// One delivery goes on until the next has begun, on another thread: at no time is there none.
TEST_F(NotifySenderTest, NothingPilesUpUnderThreads) {
  add('1');
  Listener& guest = add('g');
  testing_support::HeapFaults heap;
  std::atomic<bool> stop{false};
  std::atomic<int> begun{0};
  const auto tell = [&] {
    const auto untilTheNext = [&] {
      for (const int mine = ++begun; begun == mine && !stop;) std::this_thread::yield();
    };
    while (!stop) {
      sender->broadcast(const_cast<void*>(static_cast<const void*>(&untilTheNext)), nullptr,
                        [](void* wait, void*, IBTransportable*) {
                          (*static_cast<decltype(untilTheNext)*>(wait))();
                          return notify::kGoOn;
                        });
    }
  };
  std::thread first(tell), second(tell), third(tell);
  const int before = heap.liveBlocks();
  int most = 0;
  for (int i = 0; i < 1000; ++i) {
    const int seen = begun;
    sender->removeListener(&guest);
    sender->addListener(&guest);
    most = std::max(most, heap.liveBlocks() - before);
    while (begun < seen + 2) std::this_thread::yield();
  }
  stop = true;
  for (std::thread* teller : {&first, &second, &third}) teller->join();
  EXPECT_LE(most, 100);
}

}  // namespace
}  // namespace corvix
