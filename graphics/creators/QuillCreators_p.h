// The creators behind "AGDC.Screen" and "AGDC.Memory". Their words are the identifiers of those interfaces in the
// descriptor.
#pragma once

#include "core/baselib/system/CriticalSection.h"
#include "graphics/IAGDCCreator.h"

#include <vector>

namespace corvix {

// The contexts that a creator made and somebody still holds. It goes with the last of them and the creator, on
// whichever thread that is. [any thread]
class LivingContexts final : public IDestroyListener {
  CORVIX_IDENTITY(LivingContexts, 0xD2615B8E, 0x43F7A09C, 0xB81E4D63, 0x7A90C52F, IDestroyListener)

 public:
  void add(IAGDC& context);  // throws std::bad_alloc, with nothing added
  int onDestroy(IBRTTISupport* sender) override;
  std::size_t count() const noexcept;
  void creatorIsGone() noexcept;

 private:
  ~LivingContexts() override = default;

  mutable SCriticalSection section_;
  std::vector<IBRTTISupport*, HeapAllocator<IBRTTISupport*>> contexts_;
  bool hasCreator_ = true;
};

// Handed to all threads, though the contexts that it makes belong to one each.
class AGDCCreator : public IAGDCCreator {
  CORVIX_IDENTITY(AGDCCreator, 0x6B48D3F2, 0x4E17A95C, 0x8D2CB60F, 0xF09357E1, IAGDCCreator)

 public:
  AGDCCreator() : living_(new LivingContexts) {}
  ~AGDCCreator() override { living_->creatorIsGone(); }

  // Contexts that were made here and are still held by somebody.
  std::size_t livingCount() const noexcept { return living_->count(); }

 protected:
  // The first kind whose mask has every bit asked for; without the optional ones when there is none. A context that
  // cannot draw though it should is not handed out.
  IAGDC* createFirst(u32 required, u32 optional, DeviceHandle device, double width, double height);

 private:
  LivingContexts* living_;
};

class QuillScreenDCCreator final : public AGDCCreator {
  CORVIX_IDENTITY(QuillScreenDCCreator, 0x292B8F67, 0x823045BA, 0xA24C5822, 0x447D802E, AGDCCreator)

 public:
  IAGDC* create(u32 required, u32 optional, DeviceHandle device, double width, double height) override;
};

class QuillMemoryDCCreator final : public AGDCCreator {
  CORVIX_IDENTITY(QuillMemoryDCCreator, 0xAF5AA148, 0x38C34DC6, 0xBBC99F0D, 0xD75709BC, AGDCCreator)

 public:
  IAGDC* create(u32 required, u32 optional, DeviceHandle device, double width, double height) override;
};

}  // namespace corvix
