#include "shell/history/KStateList_p.h"

#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/ForeignCall.h"
#include "core/baselib/system/Log.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr wchar_t kPlace[] = L"IState";
constexpr u64 kNever = ~u64{0};  // no step's

template <class Call>
auto ask(IState& state, Call call) noexcept {
  return callForeign(codeOf(&state), kPlace, [&] { return call(state); });
}

template <class Row>
void makeRoom(Row& row) {
  if (row.size() == row.capacity()) row.reserve(2 * row.size() + 16);
}

}  // namespace

// As long as it lives, foreign code runs that must not change the list.
class KStateList::Busy {
 public:
  explicit Busy(KStateList& list) noexcept : list_(list) { list_.isBusy_ = true; }
  ~Busy() { list_.isBusy_ = false; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  KStateList& list_;
};

u32 KStateList::currentThread() noexcept { return GetCurrentThreadId(); }

Ref<KStateList> KStateList::create() {
  const SCriticalSection::Lock lock(allocCSProc());
  return Ref<KStateList>::adopt(new KStateList);
}

KStateList::~KStateList() { clear(); }

bool KStateList::add(IState* state) {
  if (isBusy_ || !corvix::query<IBSmartObject>(state)) return false;
  const bool opensGroup = groups_ > 0 && isGroupNew_;
  const bool joinsGroup = groups_ > 0 && !isGroupNew_;
  WideString text = opensGroup ? groupText_ : WideString();
  makeRoom(entries_);
  makeRoom(steps_);  // what follows needs no memory
  const auto kept = Ref<IState>::share(state);
  const auto self = Ref<KStateList>::share(this);  // who is told may forget the list
  const Busy busy(*this);
  while (steps_.size() > position_) popStep();
  if (!(mayMerge() && mergeIntoLast(*state))) {
    Entry& entry = entries_.emplace_back(Entry{kept, 0});
    if (joinsGroup) {
      ++steps_.back().count;
    } else {
      steps_.push_back({entries_.size() - 1, 1, 0, opensGroup, std::move(text)});
      ++position_;
    }
    measure(entry);
  }
  steps_.back().id = ++lastId_;
  isGroupNew_ = false;
  wasJustAdded_ = true;
  changed();
  return true;
}

// What was saved stays a step of its own: taking more into it would make it something else.
bool KStateList::mayMerge() const noexcept {
  return groups_ == 0 && wasJustAdded_ && position_ > 0 && !steps_.back().isGroup && !isAtSaved() &&
         entries_.back().frozenAt == FrozenStates::kNone;
}

bool KStateList::mergeIntoLast(IState& state) {
  Entry& last = entries_.back();
  if (!ask(*last.state, [&](IState& one) { return one.mergeWith(&state); })) return false;
  measure(last);
  return true;
}

void KStateList::begin(const wchar_t* text) {
  if (groups_ == 0) {
    groupText_ = text ? text : L"";
    isGroupNew_ = true;
  }
  ++groups_;
}

void KStateList::end() {
  if (groups_ > 0 && --groups_ == 0) {
    isGroupNew_ = false;
    wasJustAdded_ = false;
  }
}

bool KStateList::goBack() {
  if (!canGoBack()) return false;
  const auto self = Ref<KStateList>::share(this);
  const Busy busy(*this);
  if (!wake(position_ - 1) || !go(steps_[position_ - 1], false)) return false;
  --position_;
  wasJustAdded_ = false;
  changed();
  return true;
}

bool KStateList::goForward() {
  if (!canGoForward()) return false;
  const auto self = Ref<KStateList>::share(this);
  const Busy busy(*this);
  if (!wake(position_) || !go(steps_[position_], true)) return false;
  ++position_;
  wasJustAdded_ = false;
  changed();
  return true;
}

// All of its states, or none of them.
bool KStateList::go(const Step& step, bool forward) {
  const auto one = [&](std::size_t i, bool isForward) {
    Entry& entry = entries_[step.first + (forward ? i : step.count - 1 - i)];
    const bool isDone =
        ask(*entry.state, [&](IState& state) { return isForward ? state.goForward() : state.goBack(); });
    measure(entry);
    return isDone;
  };
  std::size_t done = 0;
  while (done < step.count && one(done, forward)) ++done;
  if (done == step.count) return true;
  while (done > 0) {
    if (one(--done, !forward)) continue;
    sWriteLog(L"The steps of a document are let go: one that was half done can neither be done nor taken back.\n");
    clear();
    savedId_ = kNever;
    changed();
    return false;
  }
  return false;
}

// It can be gone to then.
bool KStateList::wake(std::size_t step) noexcept {
  const bool isBack = step < frozenBack_;
  if (!isBack && step < steps_.size() - frozenForward_) return true;
  const Step& frozen = steps_[step];
  for (std::size_t i = frozen.first + frozen.count; i-- > frozen.first;) {
    Entry& entry = entries_[i];
    if (entry.frozenAt == FrozenStates::kNone) continue;
    if (!(isBack ? back_ : forward_).thaw(*entry.state, entry.frozenAt)) return false;
    entry.frozenAt = FrozenStates::kNone;
    measure(entry);
  }
  --(isBack ? frozenBack_ : frozenForward_);
  return true;
}

void KStateList::measure(Entry& entry) noexcept {
  awakeBytes_ -= entry.sizeBytes;
  entry.sizeBytes = entry.frozenAt == FrozenStates::kNone ? entry.state->sizeBytes() : 0;
  awakeBytes_ += entry.sizeBytes;
}

// The last one, which is not done.
void KStateList::popStep() noexcept {
  const std::size_t first = steps_.back().first;
  if (frozenForward_ > 0 && --frozenForward_ == 0) forward_.drop(0);
  steps_.pop_back();
  while (entries_.size() > first) {
    awakeBytes_ -= entries_.back().sizeBytes;
    Ref<IState> state = std::move(entries_.back().state);
    entries_.pop_back();
    const void* const code = codeOf(state.get());
    callForeign(code, kPlace, [&] { state.reset(); });
  }
}

void KStateList::clear() noexcept {
  position_ = 0;
  frozenBack_ = 0;
  while (!steps_.empty()) popStep();
  back_.drop(0);
}

const wchar_t* KStateList::textOf(const Step& step) const noexcept {
  const wchar_t* const text = step.isGroup ? step.text.c_str() : entries_[step.first].state->text();
  return text ? text : L"";
}

const wchar_t* KStateList::backText() const noexcept { return canGoBack() ? textOf(steps_[position_ - 1]) : L""; }

const wchar_t* KStateList::forwardText() const noexcept { return canGoForward() ? textOf(steps_[position_]) : L""; }

void KStateList::markSaved() {
  const auto self = Ref<KStateList>::share(this);
  savedId_ = currentId();
  wasJustAdded_ = false;
  changed();
}

// Freezes, as the list is whole again, and tells.
void KStateList::changed() {
  freezeDownTo(isShort_.exchange(false) ? 0 : kMostAwakeBytes);
  const bool wasBusy = std::exchange(isBusy_, false);
  broadcastTo<IStateListener>(sender_, [this](IStateListener& listener) { return listener.onStatesChanged(*this); });
  isBusy_ = wasBusy;
}

// Where the most steps lie, the farthest one first.
bool KStateList::freezeDownTo(u64 bytes) noexcept {
  const u64 before = awakeBytes_;
  while (awakeBytes_ > bytes) {
    const std::size_t behind = position_ - frozenBack_;
    const std::size_t ahead = steps_.size() - frozenForward_ - position_;
    if (behind <= kNear && ahead <= kNear) break;
    if (behind >= ahead) {
      freezeStep(steps_[frozenBack_++], back_);
    } else {
      freezeStep(steps_[steps_.size() - ++frozenForward_], forward_);
    }
  }
  return awakeBytes_ < before;
}

void KStateList::freezeStep(Step& step, FrozenStates& into) noexcept {
  for (std::size_t i = step.first; i < step.first + step.count; ++i) {
    entries_[i].frozenAt = into.freeze(*entries_[i].state);
    measure(entries_[i]);
  }
}

bool KStateList::hibernate(bool) {
  if (GetCurrentThreadId() != thread_ || isBusy_) {
    isShort_ = true;
    return false;
  }
  const Busy busy(*this);
  return freezeDownTo(0);
}

}  // namespace corvix
