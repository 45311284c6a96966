// The two creators that every font machine has.
#pragma once

#include "graphics/fonts/FontMachine.h"

namespace corvix {

// A family that is installed, or what the system's table of substitutes has for the name.
class SystemFontSubstitutor final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(SystemFontSubstitutor, 0x7C24E9B0, 0x43A8D16F, 0xA0F35D92, 0x19B8E74C, BSmartObject, IFMFontCreator)

 public:
  IFMFont* createFont(const wchar_t* family) override;
};

// Any name at all: the family of the system's own dialogs stands for it.
class FakeSubstitutor final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(FakeSubstitutor, 0xE8613F0D, 0x4259B7CA, 0x8B7EC401, 0x56D29AF3, BSmartObject, IFMFontCreator)

 public:
  IFMFont* createFont(const wchar_t* family) override;
};

}  // namespace corvix
