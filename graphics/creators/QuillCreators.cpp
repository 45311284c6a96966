#include "graphics/creators/QuillCreators_p.h"

#include "core/baselib/objects/Ref.h"
#include "graphics/contexts/MemoryContexts_p.h"

#include <algorithm>

namespace corvix {

namespace {

// Null when GDI+ cannot be started.
template <class Context>
IAGDC* makeContext(DeviceHandle device, double width, double height) {
  auto context = make<Context>(device, width, height);
  if constexpr (std::is_base_of_v<AGDC, Context>) {
    if (!context->isStarted()) return nullptr;
  }
  return context.detach();
}

template <class Context>
IAGDC* makeMemoryContext(DeviceHandle device, double width, double height) {
  Ref<IAGDC> context = Ref<IAGDC>::adopt(makeContext<Context>(device, width, height));
  if (!context) return nullptr;
  context->clear();
  return context->canDraw() ? context.detach() : nullptr;
}

// In the order in which they are tried.
struct Kind {
  u32 accepted;
  IAGDC* (*make)(DeviceHandle device, double width, double height);
};
constexpr Kind kKinds[] = {
    {AGDCPlainMemory::kAccepted, makeMemoryContext<AGDCPlainMemory>},
    {AGDCPlain::kAccepted, makeContext<AGDCPlain>},
    {AGDCMemory::kAccepted, makeMemoryContext<AGDCMemory>},
    {AGDC::kAccepted, makeContext<AGDC>},
};
static_assert(kKinds[0].accepted == 0x800013FF && kKinds[1].accepted == 0x600013FF);
static_assert(kKinds[2].accepted == 0x800033FF && kKinds[3].accepted == 0x600033FF);

const Kind* findKind(u32 wanted) noexcept {
  for (const Kind& kind : kKinds) {
    if (!(wanted & ~kind.accepted)) return &kind;
  }
  return nullptr;
}

}  // namespace

void LivingContexts::add(IAGDC& context) {
  context.addListener(static_cast<IDestroyListener*>(this));
  SCriticalSection::Lock lock(section_);
  try {
    contexts_.push_back(static_cast<IBRTTISupport*>(&context));
  } catch (const std::bad_alloc&) {
    context.removeListener(static_cast<IDestroyListener*>(this));
    throw;
  }
}

int LivingContexts::onDestroy(IBRTTISupport* sender) {
  SCriticalSection::Lock lock(section_);
  if (const auto found = std::find(contexts_.begin(), contexts_.end(), sender); found != contexts_.end()) {
    *found = contexts_.back();
    contexts_.pop_back();
  }
  const bool isLast = !hasCreator_ && contexts_.empty();
  lock.release();
  if (isLast) delete this;
  return notify::kGoOn;
}

std::size_t LivingContexts::count() const noexcept {
  SCriticalSection::Lock lock(section_);
  return contexts_.size();
}

void LivingContexts::creatorIsGone() noexcept {
  SCriticalSection::Lock lock(section_);
  hasCreator_ = false;
  const bool isLast = contexts_.empty();
  lock.release();
  if (isLast) delete this;
}

IAGDC* AGDCCreator::createFirst(u32 required, u32 optional, DeviceHandle device, double width, double height) {
  if (!std::isfinite(width) || !std::isfinite(height)) return nullptr;
  const Kind* kind = findKind(required | optional);
  if (!kind) kind = findKind(required);
  if (!kind) return nullptr;
  try {
    Ref<IAGDC> context = Ref<IAGDC>::adopt(kind->make(device, width, height));
    if (!context) return nullptr;
    living_->add(*context);
    return context.detach();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

IAGDC* QuillScreenDCCreator::create(u32 required, u32 optional, DeviceHandle device, double width, double height) {
  return createFirst((required & ~capability::kTargets) | capability::kScreenTarget, optional & ~capability::kTargets,
                     device, width, height);
}

IAGDC* QuillMemoryDCCreator::create(u32 required, u32 optional, DeviceHandle device, double width, double height) {
  return createFirst((required & ~capability::kTargets) | capability::kMemoryTarget, optional & ~capability::kTargets,
                     device, width, height);
}

}  // namespace corvix
