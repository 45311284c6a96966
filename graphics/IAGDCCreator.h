// IAGDCCreator: makes drawing contexts. Ask the plug-in manager for "AGDC.Screen" (draws on a device context of the
// caller's) or "AGDC.Memory" (draws into a bitmap of its own); with the plug-in "smooth", for "AGDC.SmoothScreen" or
// "AGDC.SmoothMemory", whose sizes are above 0.
//
//   auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
//   auto page = Ref<IAGDC>::adopt(creator->create(0, capability::kGdiPlus, nullptr, 640, 480));
#pragma once

#include "graphics/IAGDC.h"

namespace corvix {

// What a caller may require or wish. The eleven of kCommon are offered by every context.
namespace capability {
constexpr u32 kMemoryTarget = 0x80000000;
constexpr u32 kOtherTarget = 0x40000000;
constexpr u32 kScreenTarget = 0x20000000;
constexpr u32 kTargets = kMemoryTarget | kOtherTarget | kScreenTarget;
constexpr u32 kGdiPlus = 0x00002000;  // smoothing, transforms, transparency: not in plain GDI
constexpr u32 kCommon = 0x000013FF;
}  // namespace capability

class IAGDCCreator : public BSmartObject {
  CORVIX_IDENTITY(IAGDCCreator, 0xC3590E8A, 0x47F2D61B, 0x9B08E4C7, 0x2FA6135D, BSmartObject)

 public:
  // A new context, owned by the caller, of the first kind that offers all that is required and wished; if there is
  // none, of the first that offers what is required; else null. The creator sets the target bits itself. `device` may
  // be null and stays the caller's; a memory context that is given one draws on it and makes no bitmap. Width and
  // height are in pixels. The bitmap of a memory context has whole pixels, rounded up; below 0 towards zero: then it is
  // as large as without the sign, and none of its pixels belongs to the output. Null when such a size rounds to 0, and
  // when the memory or the bitmap cannot be had. A creator may be asked by several threads at once; what it makes
  // belongs to the one that asked. [thread that will draw]
  virtual IAGDC* create(u32 required, u32 optional, DeviceHandle device, double width, double height) = 0;
};

}  // namespace corvix
