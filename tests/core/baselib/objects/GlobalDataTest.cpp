#include "core/baselib/objects/GlobalData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/baselib/objects/GlobalData_p.h"
#include "core/baselib/objects/SmartObject.h"

namespace corvix {
namespace {

const stype_info& kOwner = IBSmartObject::classInfo();
const stype_info& kOtherOwner = BSmartObject::classInfo();

std::vector<void*> destroyed;
void note(void* value) { destroyed.push_back(value); }

int one, two;

class GlobalDataTest : public testing::Test {
 protected:
  void SetUp() override {
    BGlobalData::destroyAll();
    destroyed.clear();
  }
  void TearDown() override { BGlobalData::destroyAll(); }
};

TEST_F(GlobalDataTest, KeysAreTheWholeNameAndTheClass) {
  BGlobalData::setItem(kOwner, "a", &one, nullptr);
  for (const char* name : {"", "A", "aa"}) EXPECT_EQ(BGlobalData::getItem(kOwner, name), nullptr) << name;
  EXPECT_EQ(BGlobalData::getItem(kOtherOwner, "a"), nullptr);
  BGlobalData::setItem(kOtherOwner, "a", &two, nullptr);
  EXPECT_EQ(BGlobalData::getItem(kOwner, "a"), &one);
}

struct ReplaceRow {
  const char* why;
  void* first;
  BGlobalData::Destructor destructor;
  void* second;
  std::vector<void*> expected;
};

TEST_F(GlobalDataTest, ReplacingCallsTheFirstDestructor) {
  const ReplaceRow rows[] = {
      {"value and destructor", &one, note, &two, {&one}},
      {"the same pointer again", &one, note, &one, {&one}},
      {"replaced by nothing", &one, note, nullptr, {&one}},
      {"no destructor", &one, nullptr, &two, {}},
      {"no value", nullptr, note, &two, {}},
  };
  for (const ReplaceRow& row : rows) {
    SetUp();
    BGlobalData::setItem(kOwner, "a", row.first, row.destructor);
    BGlobalData::setItem(kOwner, "a", row.second, nullptr);
    EXPECT_EQ(destroyed, row.expected) << row.why;
    EXPECT_EQ(BGlobalData::getItem(kOwner, "a"), row.second) << row.why;
  }
}

void setAnother(void* value) {
  note(value);
  BGlobalData::setItem(kOwner, "late", &two, note);
}

void destroyAgain(void* value) {
  note(value);
  BGlobalData::destroyAll();
}

TEST_F(GlobalDataTest, DestroyAllForgetsEverythingAndDestructorsMayCallBack) {
  std::vector<int> values(300);
  for (std::size_t i = 0; i < values.size(); ++i)
    BGlobalData::setItem(kOwner, std::to_string(i).c_str(), &values[i], i == 50 ? setAnother : note);
  BGlobalData::destroyAll();
  EXPECT_EQ(destroyed.size(), 301u) << "what a destructor sets is destroyed too";
  std::sort(destroyed.begin(), destroyed.end());
  EXPECT_EQ(std::unique(destroyed.begin(), destroyed.end()), destroyed.end()) << "each once";
  for (const char* name : {"0", "late"}) EXPECT_EQ(BGlobalData::getItem(kOwner, name), nullptr) << name;

  SetUp();
  BGlobalData::setItem(kOwner, "a", &one, destroyAgain);
  BGlobalData::setItem(kOwner, "b", &two, destroyAgain);
  BGlobalData::destroyAll();
  EXPECT_EQ(destroyed.size(), 2u);

  SetUp();
  BGlobalData::setItem(kOwner, "a", &one, destroyAgain);
  BGlobalData::setItem(kOwner, "a", &two, nullptr);  // the replaced value's destructor empties the registry
  EXPECT_EQ(BGlobalData::getItem(kOwner, "a"), &two);
}

void noteAndThrow(void* value) {
  note(value);
  if (value == &one) throw std::runtime_error("goes no further");
  throw value;
}

TEST_F(GlobalDataTest, WhatADestructorThrowsKeepsNothingFromBeingDestroyed) {
  BGlobalData::setItem(kOwner, "a", &one, noteAndThrow);
  BGlobalData::setItem(kOwner, "a", &two, noteAndThrow);
  EXPECT_EQ(BGlobalData::getItem(kOwner, "a"), &two);
  for (int time = 1; time <= 2; ++time) {
    destroyed.clear();
    for (const char* name : {"a", "b", "c", "d"}) BGlobalData::setItem(kOwner, name, &one, noteAndThrow);
    destroyed.clear();
    BGlobalData::destroyAll();
    EXPECT_EQ(destroyed.size(), 4u) << "call " << time;
    EXPECT_EQ(BGlobalData::getItem(kOwner, "b"), nullptr);
  }
}

std::thread guest;
std::atomic<bool> hasVisited;

void invite(void*) {
  guest = std::thread([] {
    BGlobalData::getItem(kOwner, "a");
    hasVisited = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(hasVisited) << "destructors run inside the lock";
}

TEST_F(GlobalDataTest, NobodyLooksWhileADestructorRuns) {
  BGlobalData::setItem(kOwner, "a", &one, invite);
  BGlobalData::setItem(kOwner, "a", &two, nullptr);
  guest.join();
  EXPECT_TRUE(hasVisited);
}

// An identifier whose object is made anew keeps its first text.
TEST_F(GlobalDataTest, AClassCountsByItsWordsWhateverItsText) {
  class Remade final : public stype_info {
   public:
    using stype_info::stype_info;
  };
  alignas(Remade) static unsigned char storage[sizeof(Remade)];
  unsigned char* volatile where = storage;
  new (where) Remade(1, 2, 3, 4);
  const auto* const remade = new (where) Remade(5, 6, 7, 8);
  BGlobalData::setItem(*remade, "a", &one, nullptr);
  BGlobalData::getItem(PlainIdentifier({5 + 64, 0, 0, 0}), "a");  // takes the place of what is remembered of the other
  EXPECT_EQ(BGlobalData::getItem(PlainIdentifier({5, 6, 7, 8}), "a"), &one);
}

class INoted : public IBTransportable {
  CORVIX_IDENTITY(INoted, 0xD1, 2, 3, 4, IBTransportable)
};
class Noted final : public BSmartObject, public INoted {
  CORVIX_IDENTITY(Noted, 0xD2, 2, 3, 4, BSmartObject, INoted)
};

TEST_F(GlobalDataTest, AnObjectIsFoundByWhoKnowsOneOfItsInterfaces) {
  Noted noted;
  INoted* const seen = &noted;
  setGlobalObject(kOwner, "by interface", seen);
  setGlobalObject(kOwner, "by class", &noted);
  for (const char* name : {"by interface", "by class"}) {
    EXPECT_EQ(globalObject<INoted>(kOwner, name), seen) << name;
    EXPECT_EQ(globalObject<IBSmartObject>(kOwner, name), &noted) << name;
  }
  EXPECT_EQ(globalObject<INoted>(kOwner, "none"), nullptr);
  EXPECT_EQ(identityOf(seen), static_cast<IBRTTISupport*>(&noted));
  EXPECT_EQ(kOwner.query(seen, BSmartObject::classInfo()), static_cast<BSmartObject*>(&noted));
  EXPECT_EQ(kOwner.query(static_cast<INoted*>(nullptr), BSmartObject::classInfo()), nullptr);
}

// In a process of its own: the bucket count never shrinks.
TEST(GlobalDataGrowthTest, TheSeventySecondItemDoublesTheBuckets) {
  BGlobalData::destroyAll();
  if (globalDataBuckets() != 64) GTEST_SKIP() << "another test of this process has filled the registry before";
  for (int i = 0; i < 71; ++i) BGlobalData::setItem(kOwner, std::to_string(i).c_str(), &one, nullptr);
  EXPECT_EQ(globalDataBuckets(), 64u);
  BGlobalData::setItem(kOwner, "71", &one, nullptr);
  EXPECT_EQ(globalDataBuckets(), 128u);
  for (int i = 0; i < 72; ++i) EXPECT_EQ(BGlobalData::getItem(kOwner, std::to_string(i).c_str()), &one) << i;
}

}  // namespace
}  // namespace corvix
