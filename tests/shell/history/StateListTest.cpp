#include "shell/history/KStateHistory_p.h"

#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/OutputStream.h"
#include "shell/documents/BDocument.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <stdexcept>

#include <windows.h>
#include <psapi.h>

namespace corvix {
namespace {

// What the steps below change.
struct Document {
  std::string text;
  int refuseAt = -1;  // so many goes later one cannot be done
  bool refuses() { return refuseAt >= 0 && refuseAt-- == 0; }
};

std::size_t bytesAwake = 0;  // of all Typed

// Letters at the end of a text.
class Typed : public BSmartObject, public IState {
  CORVIX_IDENTITY(Typed, 0x1B6E40D7, 0x4FA2C583, 0x93D07E61, 0xC852B9F4, BSmartObject, IState)

 public:
  Typed(Document& document, std::string letters, bool merges = false) : document_(document), merges_(merges) {
    document_.text += letters;
    keep(std::move(letters));
  }
  ~Typed() override { bytesAwake -= letters_.size(); }

  const wchar_t* text() const noexcept override { return L"typing"; }
  bool goBack() override {
    if (document_.refuses()) return false;
    document_.text.resize(document_.text.size() - letters_.size());
    return true;
  }
  bool goForward() override {
    if (document_.refuses()) return false;
    document_.text += letters_;
    return true;
  }
  bool mergeWith(IState* next) override {
    if (!merges_) return false;
    keep(letters_ + query<Typed>(next)->letters_);
    return true;
  }
  u32 sizeBytes() const noexcept override { return static_cast<u32>(letters_.size()); }
  bool freeze(IBStream* to) override {
    BOutputStream& out = *query<BOutputStream>(to);
    const u32 size = sizeBytes();
    if (freezes != Freezes || out.write(&size, sizeof size) + out.write(letters_.data(), size) != sizeof size + size)
      return false;
    keep({});
    return true;
  }
  bool thaw(IBStream* from) override {
    if (freezes == StaysFrozen) return false;
    u32 size = 0;
    BInputStream& in = *query<BInputStream>(from);
    if (readFully(in, &size, sizeof size) != sizeof size) return false;
    std::string letters(size, 0);
    if (readFully(in, letters.data(), size) != size) return false;
    keep(std::move(letters));
    return true;
  }

  enum { Freezes, NeverFreezes, StaysFrozen };
  static inline int freezes = Freezes;

 private:
  void keep(std::string letters) {
    bytesAwake += letters.size() - letters_.size();
    letters_ = std::move(letters);
    letters_.shrink_to_fit();
  }
  Document& document_;
  bool merges_;
  std::string letters_;
};

// Every version of a document that can still be reached, in a row.
struct Model {
  struct Version {
    int id;
    std::string text;
    bool isGroup;
  };
  std::vector<Version> versions{{0, "", true}};
  std::size_t at = 0;
  int lastId = 0, saved = 0;
  bool wasJustAdded = false;

  void add(const std::string& text, bool isMerged, bool isGroup) {
    versions.resize(at + 1);
    if (isMerged && wasJustAdded && at > 0 && !versions[at].isGroup && versions[at].id != saved) {
      versions[at].id = ++lastId;
      versions[at].text = text;
    } else {
      versions.push_back({++lastId, text, isGroup});
      ++at;
    }
    wasJustAdded = !isGroup;
  }
};

TEST(StateList, GoesWhereAModelGoes) {
  std::mt19937 random(7);
  const auto chance = [&](unsigned percent) { return random() % 100 < percent; };
  for (int walk = 0; walk < 40; ++walk) {
    const bool merges = walk % 3 != 0;
    Document document;
    Model model;
    const auto list = KStateList::create();
    for (int step = 0; step < 500; ++step) {
      SCOPED_TRACE(testing::Message() << "walk " << walk << ", step " << step);
      const bool isTowardsBack = walk % 2 && step > 250;
      if (chance(isTowardsBack ? 20 : 45)) {
        const std::string letters(1 + random() % 3, static_cast<char>('a' + random() % 26));
        EXPECT_TRUE(list->add(make<Typed>(document, letters, merges).get()));
        model.add(document.text, merges, false);
      } else if (chance(15)) {
        list->begin(L"group");
        list->begin(L"inside it");
        const unsigned count = random() % 4;
        for (unsigned i = 0; i < count; ++i) list->add(make<Typed>(document, "g").get());
        list->end();
        EXPECT_FALSE(list->goBack());
        list->end();
        if (count) model.add(document.text, false, true);
        model.wasJustAdded = false;
      } else if (chance(10)) {
        list->markSaved();
        model.saved = model.versions[model.at].id;
        model.wasJustAdded = false;
      } else if (chance(10)) {
        list->hibernate(true);
      } else {
        const bool isBack = chance(60), isThere = isBack ? model.at > 0 : model.at + 1 < model.versions.size();
        document.refuseAt = chance(20) ? static_cast<int>(random() % 3) : -1;
        const bool isDone = isBack ? list->goBack() : list->goForward();
        EXPECT_LE(isDone, isThere);
        EXPECT_TRUE(isDone || !isThere || document.refuseAt < 0);
        document.refuseAt = -1;
        if (isDone) model.at += isBack ? std::size_t(-1) : 1;
        if (isDone) model.wasJustAdded = false;
      }
      ASSERT_EQ(document.text, model.versions[model.at].text);
      ASSERT_EQ(list->isAtSaved(), model.versions[model.at].id == model.saved);
      ASSERT_EQ(list->canGoBack(), model.at > 0);
      ASSERT_EQ(list->canGoForward(), model.at + 1 < model.versions.size());
      const std::wstring back = model.at == 0 ? L"" : model.versions[model.at].isGroup ? L"group" : L"typing";
      ASSERT_EQ(list->backText(), back);
    }
  }
  EXPECT_EQ(bytesAwake, 0u);
}

TEST(StateList, AHundredThousandStepsTakeLessThan64MiB) {
  constexpr std::size_t kSteps = 100'000, kLetters = 1024, kMost = 64u << 20;
  const auto privateBytes = [] {
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    return memory.PagefileUsage;
  };
  Document document;
  std::string all(kSteps * kLetters, 'x');  // memory of the test's own is there before
  document.text = all;
  document.text.clear();
  const std::size_t before = privateBytes();
  const auto list = KStateList::create();
  std::size_t most = 0;
  const auto look = [&](std::size_t step) {
    EXPECT_LE(bytesAwake, KStateList::kMostAwakeBytes + kLetters);
    if (step % 1000 == 0) most = std::max<std::size_t>(most, privateBytes() - before);
  };
  for (std::size_t i = 0; i < kSteps; ++i) {
    ASSERT_TRUE(list->add(make<Typed>(document, std::string(kLetters, static_cast<char>('a' + i % 26))).get()));
    look(i);
  }
  all = document.text;
  for (std::size_t i = 0; i < kSteps; ++i) {
    ASSERT_TRUE(list->goBack()) << i;
    look(i);
  }
  EXPECT_EQ(document.text, "");
  EXPECT_TRUE(BMemoryManager::drainMemory(0));
  EXPECT_LE(bytesAwake, KStateList::kNear * kLetters);
  for (std::size_t i = 0; i < kSteps; ++i) ASSERT_TRUE(list->goForward()) << i;
  EXPECT_EQ(document.text, all);
  EXPECT_LT(most, kMost);
  std::printf("%u KiB at most, of %u KiB in %u steps\n", static_cast<unsigned>(most >> 10),
              static_cast<unsigned>(kSteps * kLetters >> 10), static_cast<unsigned>(kSteps));
}

// What a step does besides.
class Odd final : public Typed {
  CORVIX_IDENTITY(Odd, 0x7C90F1A4, 0x45D83B2E, 0xB16A0D97, 0x2FE5C834, Typed)

 public:
  using Act = std::function<bool()>;
  Odd(Document& document, Act back, Act forward = {})
      : Typed(document, "o"), back_(std::move(back)), forward_(std::move(forward)) {}
  bool goBack() override { return back_() && Typed::goBack(); }
  bool goForward() override { return (!forward_ || forward_()) && Typed::goForward(); }

 private:
  Act back_, forward_;
};

TEST(StateList, WhatGoesWrongInAStepChangesNothing) {
  Document document;
  const auto list = KStateList::create();
  const auto isWhole = [&](const char* text) { return document.text == text && list->canGoBack(); };
  EXPECT_FALSE(list->add(nullptr));
  list->end();  // none was begun
  list->add(make<Odd>(document, []() -> bool { throw std::runtime_error("no"); }).get());
  EXPECT_TRUE(!list->goBack() && isWhole("o")) << "it throws";
  list->add(make<Odd>(document, [&] { return list->add(make<Typed>(document, "").get()) || list->goBack(); }).get());
  EXPECT_TRUE(!list->goBack() && isWhole("oo")) << "it changes the list meanwhile";

  list->begin(L"");
  list->add(make<Odd>(document, [] { return false; }).get());
  list->add(make<Typed>(document, "t").get());
  list->end();
  list->markSaved();
  EXPECT_TRUE(!list->goBack() && isWhole("ooot") && list->isAtSaved()) << "half of a group";
  list->begin(L"");
  list->add(make<Odd>(document, [] { return false; }).get());
  list->add(make<Odd>(
                document, [] { return true; }, [] { return false; })
                .get());
  list->end();
  EXPECT_FALSE(list->goBack());
  EXPECT_TRUE(!list->canGoBack() && !list->canGoForward() && !list->isAtSaved()) << "nobody knows where it stands";
}

TEST(StateList, WhatCannotFreezeOrThawStaysAsItIs) {
  Document document;
  const auto list = KStateList::create();
  for (int i = 0; i < 100; ++i) list->add(make<Typed>(document, "abc").get());
  Typed::freezes = Typed::NeverFreezes;
  EXPECT_FALSE(list->hibernate(true));
  EXPECT_EQ(bytesAwake, 300u);
  Typed::freezes = Typed::Freezes;
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(list->goBack());
  EXPECT_TRUE(list->hibernate(true));
  EXPECT_EQ(bytesAwake, KStateList::kNear * 3);
  Typed::freezes = Typed::StaysFrozen;
  for (std::size_t i = 0; i < KStateList::kNear; ++i) EXPECT_TRUE(list->goForward());
  EXPECT_TRUE(!list->goForward() && list->canGoForward());
  Typed::freezes = Typed::Freezes;
  while (list->goForward()) {
  }
  EXPECT_EQ(document.text.size(), 300u);
}

class Paper final : public BDocument {
  CORVIX_IDENTITY(Paper, 0xE4A0617C, 0x4C1D82F5, 0x80B97E3A, 0x5D26CF91, BDocument)
};

TEST(StateHistory, HasAListForEachDocumentAsLongAsItLives) {
  Document one, other;
  const auto history = make<KStateHistory>();
  IStateHistory& its = *history;
  auto first = make<Paper>(), second = make<Paper>();
  EXPECT_FALSE(its.listOf(nullptr) || its.canGoBack() || its.goBack() || its.goForward());
  its.listOf(first.get())->add(make<Typed>(one, "1").get());
  its.listOf(second.get())->add(make<Typed>(other, "2").get());
  its.setActive(first.get());
  EXPECT_TRUE(its.goBack() && its.canGoForward() && one.text.empty() && other.text == "2");
  its.forget(second.get());
  EXPECT_FALSE(its.listOf(second.get())->canGoBack());
  first.reset();
  EXPECT_FALSE(its.canGoForward());
  its.setActive(second.get());
  its.setActive(nullptr);
  EXPECT_FALSE(its.canGoBack());
  EXPECT_EQ(bytesAwake, 0u);
}

}  // namespace
}  // namespace corvix
