// The creators behind "AGDC.SmoothMemory" and "AGDC.SmoothScreen".
#include "descriptor.h"
#include "graphics/quality/QualityListener_p.h"
#include "plugins/smooth/SmoothContext_p.h"
#include "shell/Plugin.h"

namespace corvix::smooth {

class SmoothCreator : public IAGDCCreator {
  CORVIX_IDENTITY(SmoothCreator, 0xB5D7194E, 0x4F8362C0, 0x97AE4D18, 0x30CB85F6, IAGDCCreator)

 public:
  explicit SmoothCreator(bool isMemory) : isMemory_(isMemory) {
    if (const IShell* const shell = IShell::getInstance()) watchQuality(*shell->settings());
  }

  // A wish that cannot be had is dropped.
  IAGDC* create(u32 required, u32, DeviceHandle device, double width, double height) override {
    if (required & ~(SmoothContext::kOffered | capability::kTargets) || !isFinite({width, height})) return nullptr;
    try {
      auto context = make<SmoothContext>(isMemory_, device, width, height);
      return !isMemory_ || context->canDraw() ? context.detach() : nullptr;
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }

 private:
  bool isMemory_;
};

class SmoothMemoryCreator final : public SmoothCreator {
  CORVIX_IDENTITY(SmoothMemoryCreator, 0x27E0C9A3, 0x49B5F81D, 0x8C60D374, 0xE94A16B2, SmoothCreator)

 public:
  SmoothMemoryCreator() : SmoothCreator(true) {}
};

class SmoothScreenCreator final : public SmoothCreator {
  CORVIX_IDENTITY(SmoothScreenCreator, 0x5C18F7E6, 0x4A92D03B, 0xB47E91C5, 0x068F3AD2, SmoothCreator)

 public:
  SmoothScreenCreator() : SmoothCreator(false) {}
};

}  // namespace corvix::smooth

CORVIX_PLUGIN(corvix::rowFor<descriptor::AGDC_SmoothMemory, corvix::smooth::SmoothMemoryCreator>(),
              corvix::rowFor<descriptor::AGDC_SmoothScreen, corvix::smooth::SmoothScreenCreator>())
