#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/ManagerState_p.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/objects/Ref.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace corvix {
namespace {

// Writes its letter when it is asked, then does what the test wants.
class Member : public BHibernatable {
  CORVIX_IDENTITY(Member, 0x4F92A7C3, 0x4B5D01E8, 0xA36C9F72, 0x80E4D51B, BHibernatable)

 public:
  using Action = std::function<bool(Member&)>;
  Member(std::string& told, char letter, Action action = {})
      : told_(told), letter_(letter), action_(std::move(action)) {}
  bool hibernate(bool) override {
    told_ += letter_;
    return action_ ? action_(*this) : letter_ == 'T';
  }

  std::string& told() { return told_; }

 private:
  std::string& told_;
  char letter_;
  Action action_;
};

TEST(Hibernation, AsksTheNewestFirstAndEveryOne) {
  std::string told;
  EXPECT_FALSE(BMemoryManager::drainMemory(5));  // nothing registered
  EXPECT_NE(memory::liveState->reserve, nullptr);
  const auto a = make<Member>(told, 'a');
  const auto t = make<Member>(told, 'T');
  const auto b = make<Member>(told, 'b', [](Member&) { return memory::liveState->reserve != nullptr; });
  EXPECT_TRUE(BMemoryManager::drainMemory(0));
  const auto ask = [](BHibernatable* one, void* to) {
    static_cast<std::string*>(to)->push_back(allocCSProc().heldCount() == 1 ? '|' : '?');
    one->hibernate(true);
  };
  BMemoryManager::visitHibernatables(ask, &told);
  EXPECT_EQ(told, "bTa|b|T|a");
  EXPECT_NE(memory::liveState->reserve, nullptr);
  EXPECT_TRUE(BMemoryManager::unregisterHibernatable(t.get()));
  EXPECT_FALSE(BMemoryManager::unregisterHibernatable(t.get()));
  EXPECT_FALSE(BMemoryManager::hibernateHibers(true));
  EXPECT_EQ(told, "bTa|b|T|aba");
}

TEST(Hibernation, WhoIsGoneIsAskedNoMore) {
  std::string told;
  const u32 before = memory::liveState->hibernatables.count();
  make<Member>(told, 'a').reset();
  ASSERT_EQ(memory::liveState->hibernatables.count(), before);
  EXPECT_FALSE(BMemoryManager::hibernateHibers(true));
  EXPECT_EQ(told, "");
}

TEST(Hibernation, OnlyWhatIsScheduledIsPerformedAndOnce) {
  std::string told;
  const auto a = make<Member>(told, 'a');
  BMemoryManager::performScheduled();
  EXPECT_EQ(told, "");
  BMemoryManager::scheduleHibernation();
  BMemoryManager::performScheduled();
  BMemoryManager::performScheduled();
  EXPECT_EQ(told, "a");
  _sfree(std::exchange(memory::liveState->reserve, nullptr));
  BMemoryManager::performScheduled();
  EXPECT_NE(memory::liveState->reserve, nullptr) << "set aside anew";
}

// Asks for memory when it hears of an end.
class Asking : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Asking, 0x9B1E47D5, 0x4D62C80A, 0x8175F3BE, 0x2CA90D68, BSmartObject, IDestroyListener)

 public:
  int onDestroy(IBRTTISupport*) override {
    BMemoryManager::drainMemory(1);
    return notify::kGoOn;
  }
};

// Its own part is gone when the destructor of its base asks for memory.
class AsksWhileItGoes : public Member {
  CORVIX_IDENTITY(AsksWhileItGoes, 0x3D8F61A2, 0x4E07B5C9, 0xA64C13F8, 0x70D92EB5, Member)

 public:
  using Member::Member;
  ~AsksWhileItGoes() override {
    told() += '~';
    BMemoryManager::drainMemory(1);
  }
};

TEST(Hibernation, IsRegisteredWhileItsEndIsToldAndNotWhileItGoes) {
  std::string told;
  Asking asking;
  const auto other = make<Member>(told, 'o');
  auto member = make<AsksWhileItGoes>(told, 'm');
  member->addListener(static_cast<IDestroyListener*>(&asking));
  member->addRef();
  member->release();
  EXPECT_EQ(told, "");
  member.reset();
  EXPECT_EQ(told, "mo~o");
}

struct ChangeRow {
  const char* name;
  std::function<bool(Member&, Member& older, Ref<Member>& fresh)> action;  // of the middle one of three
  const char* told;
};

const ChangeRow kChangeRows[] = {
    {"UnregistersItself",
     [](Member& self, Member&, Ref<Member>&) { return BMemoryManager::unregisterHibernatable(&self); }, "cba"},
    {"UnregistersTheNext",
     [](Member&, Member& older, Ref<Member>&) { return BMemoryManager::unregisterHibernatable(&older); }, "cb"},
    {"RegistersAnother",
     [](Member& self, Member&, Ref<Member>& fresh) {
       fresh = make<Member>(self.told(), 'x');  // not asked in this round
       return true;
     },
     "cba"},
    {"Allocates",
     [](Member&, Member&, Ref<Member>&) {
       BMemoryPool& system = *BMemoryManager::getSystemPool();
       for (int i = 0; i < 20; ++i) system.free(system.alloc(200000));
       return true;
     },
     "cba"},
    {"AsksForAnotherRound",
     [](Member& self, Member&, Ref<Member>&) { return self.told().size() > 20 || !BMemoryManager::drainMemory(1); },
     "cba"},
    {"ReleasesItself", [](Member& self, Member&, Ref<Member>&) { return self.release(); }, "cba"},
    {"Throws", [](Member&, Member&, Ref<Member>&) -> bool { throw 1; }, "cba"},
};

TEST(Hibernation, MembersThatChangeTheList) {
  for (const ChangeRow& row : kChangeRows) {
    SCOPED_TRACE(row.name);
    std::string told;
    Ref<Member> fresh;
    const auto a = make<Member>(told, 'a');
    auto b = make<Member>(told, 'b', [&](Member& self) {
      const auto action = row.action;  // the object may go
      return action(self, *a, fresh);
    });
    const auto c = make<Member>(told, 'c');
    const u32 before = memory::liveState->hibernatables.count();
    if (std::string_view(row.name) == "ReleasesItself") static_cast<void>(b.detach());
    EXPECT_EQ(BMemoryManager::hibernateHibers(true), std::string_view(row.name) != "Throws");
    EXPECT_EQ(told, row.told);
    EXPECT_LE(memory::liveState->hibernatables.count(), before + 1);
    EXPECT_NE(memory::liveState->reserve, nullptr);
    EXPECT_EQ(allocCSProc().heldCount(), 0u);
    EXPECT_FALSE(memory::liveState->isHibernating);
  }
}

// Each thread fills its blocks with what they alone have, and looks before it frees them.
TEST(Hibernation, EightThreadsShareThePools) {
  const auto classes = make<BSizeClassMemoryPool>();
  const auto fixed = make<BFixedMemoryPool>(48u);
  std::string told;
  const auto member = make<Member>(told, 'a', [](Member&) { return BMemoryManager::hibernatePools(true); });
  std::atomic<int> damaged{0};
  const auto work = [&](unsigned seed) {
    struct Block {
      u32* words;
      u32 count;
      u32 mark;
      BMemoryPool* from;
    };
    std::mt19937 random(seed);
    std::vector<Block> held;
    const auto isWhole = [](const Block& block) {
      return std::count(block.words, block.words + block.count, block.mark) == static_cast<std::ptrdiff_t>(block.count);
    };
    const auto end = GetTickCount() + 2000;
    for (u32 i = 0; GetTickCount() < end; ++i) {
      if (held.size() < 300 && random() % 100 < 52) {
        const bool isFixed = random() % 3 == 0;
        const u32 size = isFixed ? 48 : 4 + 4 * (random() % 300);
        BMemoryPool* const from = isFixed ? static_cast<BMemoryPool*>(fixed.get()) : classes.get();
        held.push_back({static_cast<u32*>(from->alloc(size)), size / 4, seed << 24 | (i & 0xFFFFFF), from});
        std::fill_n(held.back().words, held.back().count, held.back().mark);
      } else if (!held.empty()) {
        std::swap(held[random() % held.size()], held.back());
        Block& block = held.back();
        if (!isWhole(block)) ++damaged;
        if (random() % 8 == 0 && block.from == classes.get()) {
          block.words = static_cast<u32*>(classes->realloc(block.words, block.count * 4 + 200));
          if (!isWhole(block)) ++damaged;
        }
        block.from->free(block.words);
        held.pop_back();
      }
      if (i % 500 == 0) fixed->hibernate(true);
      if (i % 2000 == seed) BMemoryManager::drainMemory(1);
    }
    for (const Block& block : held) {
      if (!isWhole(block)) ++damaged;
      block.from->free(block.words);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i <= 8; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(damaged, 0);
  EXPECT_FALSE(told.empty());
  classes->hibernate(true);
  fixed->hibernate(true);
  EXPECT_EQ(fixed->chunkCount(), 0u);
  EXPECT_EQ(fixed->handedOutBytes(), 0u);
}

}  // namespace
}  // namespace corvix
