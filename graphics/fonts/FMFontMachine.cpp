#include "graphics/fonts/FMFontMachine_p.h"

#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/ForeignCall.h"
#include "graphics/fonts/FontSubstitutors_p.h"

#include <algorithm>

namespace corvix {

namespace {

constinit IDeclaredFontCreators* declared = nullptr;
constinit FMFontMachine* current = nullptr;  // the first that was made of those that live

// Held while creators are asked, too: they and what they hold belong to one thread at a time, as all objects do.
SCriticalSection& machineLock() {
  static SCriticalSection lock;
  return lock;
}

}  // namespace

void setDeclaredFontCreators(IDeclaredFontCreators* creators) noexcept { declared = creators; }

Ref<FMFontMachine> FMFontMachine::shared() {
  const SCriticalSection::Lock lock(machineLock());
  return current ? Ref<FMFontMachine>::share(current) : make<FMFontMachine>();
}

FMFontMachine::FMFontMachine() {
  const SCriticalSection::Lock lock(machineLock());
  own_.push_back(make<SystemFontSubstitutor>());
  own_.push_back(make<FakeSubstitutor>());
  if (!current) current = this;
}

FMFontMachine::~FMFontMachine() {
  if (current != this) return;
  current = nullptr;
  if (declared) declared->forget();
}

void FMFontMachine::addRef() {
  const SCriticalSection::Lock lock(machineLock());
  IFMFontMachine::addRef();
}

bool FMFontMachine::release() {
  const SCriticalSection::Lock lock(machineLock());
  return IFMFontMachine::release();
}

// Creators may add and remove others, and ask the machine themselves: they are passed over then.
template <class Ask>
IFMFont* FMFontMachine::askAll(const FontRequest* request, Ask askIt) {
  const SCriticalSection::Lock lock(machineLock());
  const auto ask = [&](IFMFontCreator* creator) -> IFMFont* {
    for (const Turn* turn = turns_; turn; turn = turn->outer) {
      if (turn->creator == creator) return nullptr;
    }
    const Turn turn = {creator, turns_};
    turns_ = &turn;
    IFMFont* const font = callForeign(codeOf(creator), L"IFMFontCreator", [&] { return askIt(creator); });
    turns_ = turn.outer;
    return font;
  };
  const Creators added = added_;
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
  const SCriticalSection::Lock lock(machineLock());
  added_.push_back(Ref<IFMFontCreator>::share(creator));
}

bool FMFontMachine::removeCreator(IFMFontCreator* creator) {
  const SCriticalSection::Lock lock(machineLock());
  const auto found = std::find_if(added_.rbegin(), added_.rend(),
                                  [creator](const Ref<IFMFontCreator>& one) { return one.get() == creator; });
  if (found == added_.rend()) return false;
  const Ref<IFMFontCreator> gone = std::move(*found);  // let go when the list is whole
  added_.erase(std::next(found).base());
  return true;
}

}  // namespace corvix
