#include "graphics/fonts/FMFontMachine_p.h"

#include "core/baselib/system/ForeignCall.h"
#include "graphics/fonts/FontSubstitutors_p.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

namespace {

constinit IDeclaredFontCreators* declared = nullptr;
constinit FMFontMachine* current = nullptr;  // the first that was made of those that live

}  // namespace

void setDeclaredFontCreators(IDeclaredFontCreators* creators) noexcept { declared = creators; }

Ref<FMFontMachine> FMFontMachine::shared() {
  return current ? Ref<FMFontMachine>::share(current) : make<FMFontMachine>();
}

FMFontMachine::FMFontMachine() {
  own_.push_back(make<SystemFontSubstitutor>());
  own_.push_back(make<FakeSubstitutor>());
  if (!current) current = this;
}

FMFontMachine::~FMFontMachine() {
  if (current != this) return;
  current = nullptr;
  if (declared) declared->forget();
}

bool FMFontMachine::begin(Turn& turn) noexcept {
  const SCriticalSection::Lock lock(lock_);
  for (const Turn* other = turns_; other; other = other->outer) {
    if (other->creator == turn.creator && other->thread == turn.thread) return false;
  }
  turn.outer = turns_;
  turns_ = &turn;
  return true;
}

void FMFontMachine::end(Turn& turn) noexcept {
  const SCriticalSection::Lock lock(lock_);
  Turn** place = &turns_;
  while (*place != &turn) place = &(*place)->outer;
  *place = turn.outer;
}

// Creators are asked outside the lock: they may add and remove others, and ask the machine themselves.
template <class Ask>
IFMFont* FMFontMachine::askAll(const FontRequest* request, Ask askIt) {
  const auto ask = [&](IFMFontCreator* creator) -> IFMFont* {
    Turn turn = {creator, GetCurrentThreadId(), nullptr};
    if (!begin(turn)) return nullptr;
    IFMFont* const font = callForeign(codeOf(creator), L"IFMFontCreator", [&] { return askIt(creator); });
    end(turn);
    return font;
  };
  Creators added;
  {
    const SCriticalSection::Lock lock(lock_);
    added = added_;
  }
  for (auto creator = added.rbegin(); creator != added.rend(); ++creator) {
    if (IFMFont* const font = ask(creator->get())) return font;
  }
  for (i32 i = 0; declared && i < declared->count(); ++i) {
    IFMFontCreator* const creator = declared->creatorFor(i, request);
    if (IFMFont* const font = creator ? ask(creator) : nullptr) return font;
  }
  for (const Ref<IFMFontCreator>& creator : own_) {
    if (IFMFont* const font = ask(creator.get())) return font;
  }
  return nullptr;
}

IFMFont* FMFontMachine::createFont(const wchar_t* family) {
  const wchar_t* const name = family ? family : L"";
  FontRequest request;
  request.family = name;
  return askAll(&request, [name](IFMFontCreator* creator) { return creator->createFont(name); });
}

IFMFont* FMFontMachine::createFontFor(const FontRequest& request) {
  FontRequest whole = request;
  if (!whole.family) whole.family = L"";
  return askAll(&whole, [&whole](IFMFontCreator* creator) {
    auto* const finder = corvix::query<IFMFontFinder>(creator);
    return finder ? finder->createFontFor(whole) : creator->createFont(whole.family);
  });
}

IFMFont* FMFontMachine::fontWithGlyph(u32 codePoint, IFMFont* like) {
  return askAll(nullptr, [=](IFMFontCreator* creator) {
    auto* const finder = corvix::query<IFMFontFinder>(creator);
    return finder ? finder->fontWithGlyph(codePoint, like) : nullptr;
  });
}

void FMFontMachine::addCreator(IFMFontCreator* creator) {
  if (!creator) return;
  const SCriticalSection::Lock lock(lock_);
  added_.push_back(Ref<IFMFontCreator>::share(creator));
}

bool FMFontMachine::removeCreator(IFMFontCreator* creator) {
  Ref<IFMFontCreator> gone;  // let go outside the lock
  const SCriticalSection::Lock lock(lock_);
  const auto found = std::find_if(added_.rbegin(), added_.rend(),
                                  [creator](const Ref<IFMFontCreator>& one) { return one.get() == creator; });
  if (found == added_.rend()) return false;
  gone = std::move(*found);
  added_.erase(std::next(found).base());
  return true;
}

}  // namespace corvix
