#pragma once

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/WideString.h"
#include "shell/history/FrozenStates_p.h"
#include "shell/history/StateList.h"

#include <atomic>
#include <vector>

namespace corvix {

// Steps far from where the list stands freeze when they hold more than a limit, or when memory is short.
class KStateList final : public BHibernatable, public IStateList {
  CORVIX_IDENTITY(KStateList, 0xB3DC2301, 0xB0022D12, 0x9423B46E, 0xCE30D7AF, BHibernatable, IStateList)

 public:
  static constexpr u64 kMostAwakeBytes = u64{32} * 1024 * 1024;
  static constexpr std::size_t kNear = 16;  // so many steps on each side stay awake

  // To be made by this: while it is being made, no other thread may ask it for memory.
  static Ref<KStateList> create();
  ~KStateList() override;

  bool add(IState* state) override;
  void begin(const wchar_t* text) override;
  void end() override;
  bool canGoBack() const noexcept override { return !isBusy_ && groups_ == 0 && position_ > 0; }
  bool canGoForward() const noexcept override { return !isBusy_ && groups_ == 0 && position_ < steps_.size(); }
  bool goBack() override;
  bool goForward() override;
  const wchar_t* backText() const noexcept override;
  const wchar_t* forwardText() const noexcept override;
  void markSaved() override;
  bool isAtSaved() const noexcept override { return currentId() == savedId_; }
  BNotifySender& sender() noexcept override { return sender_; }

  bool hibernate(bool argument) override;

 private:
  struct Entry {
    Ref<IState> state;
    u32 sizeBytes;
    u32 frozenAt = FrozenStates::kNone;
  };
  struct Step {
    std::size_t first;  // of the entries
    std::size_t count;
    u64 id;  // of what is there once it is done; 0 is what was there at first
    bool isGroup;
    WideString text;  // of a group
  };
  class Busy;
  template <class T>
  using Row = std::vector<T, HeapAllocator<T>>;

  KStateList() = default;

  u64 currentId() const noexcept { return position_ ? steps_[position_ - 1].id : 0; }
  const wchar_t* textOf(const Step& step) const noexcept;
  bool mayMerge() const noexcept;
  bool mergeIntoLast(IState& state);
  bool go(const Step& step, bool forward);
  bool wake(std::size_t step) noexcept;
  void measure(Entry& entry) noexcept;
  void popStep() noexcept;
  void clear() noexcept;
  bool freezeDownTo(u64 bytes) noexcept;
  void freezeStep(Step& step, FrozenStates& into) noexcept;
  void changed();

  Row<Entry> entries_;  // of all steps, one behind the other
  Row<Step> steps_;
  std::size_t position_ = 0;       // steps that are done
  std::size_t frozenBack_ = 0;     // steps at the beginning, those that cannot freeze included
  std::size_t frozenForward_ = 0;  // likewise at the end
  FrozenStates back_;
  FrozenStates forward_;
  u64 awakeBytes_ = 0;
  u64 lastId_ = 0;
  u64 savedId_ = 0;
  int groups_ = 0;  // begun and not ended
  bool isGroupNew_ = false;
  WideString groupText_;
  bool wasJustAdded_ = false;
  bool isBusy_ = false;
  std::atomic<bool> isShort_{false};  // memory was, while it could not be given
  const u32 thread_ = currentThread();
  static u32 currentThread() noexcept;
  BNotifySender sender_;
};

}  // namespace corvix
