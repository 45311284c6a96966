// The contexts over a bitmap of their own: a screen context whose device context is that of the bitmap.
#pragma once

#include "graphics/contexts/AGDC_p.h"
#include "graphics/contexts/OffscreenBitmap_p.h"
#include "graphics/contexts/PlainContext_p.h"

namespace corvix {

template <class Screen>
class MemoryContext : public Screen {
 public:
  static constexpr u32 kAccepted = (Screen::kAccepted & ~capability::kTargets) | capability::kMemoryTarget;

  // With a device context given, or a size of 0, there is no bitmap: that one is drawn on.
  MemoryContext(DeviceHandle device, double width, double height) : Screen(device, width, height) {
    if (device || !offscreen_.create(width, height)) return;
    if (!Screen::take(offscreen_.device(), width, height)) offscreen_.reset();
  }
  ~MemoryContext() override { MemoryContext::detach(); }

  BitmapHandle bitmap() const noexcept override { return offscreen_.bitmap(); }
  bool detach() override {
    const bool isDetached = Screen::detach();
    offscreen_.reset();
    return isDetached;
  }
  u32 capabilities() const noexcept override { return kAccepted; }

 protected:
  PixelMemory pixelMemory() const noexcept override {
    if (offscreen_.height() < 0) return {};
    return {offscreen_.pixels(), offscreen_.strideBytes(), offscreen_.width(), offscreen_.height()};
  }

 private:
  OffscreenBitmap offscreen_;
};

class AGDCPlainMemory final : public MemoryContext<AGDCPlain> {
  CORVIX_IDENTITY(AGDCPlainMemory, 0xA90C4F61, 0x4B7ED253, 0x86E1F39D, 0x25D8B7C4, AGDCPlain)

 public:
  using MemoryContext::MemoryContext;
};

class AGDCMemory final : public MemoryContext<AGDC> {
  CORVIX_IDENTITY(AGDCMemory, 0x3DF58A12, 0x47B6C0E9, 0xB02E7D54, 0xC81A9F63, AGDC)

 public:
  using MemoryContext::MemoryContext;
};

}  // namespace corvix
