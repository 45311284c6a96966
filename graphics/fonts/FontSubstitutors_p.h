// The two creators that every font machine has.
#pragma once

#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/text/WideString.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/fonts/SystemFont_p.h"

#include <unordered_map>
#include <vector>

namespace corvix {

// A family that is installed, or what the system's table of substitutes has for the name.
class SystemFontSubstitutor final : public BSmartObject, public IFMFontCreator, public IFMFontFinder {
  CORVIX_IDENTITY(SystemFontSubstitutor, 0x7C24E9B0, 0x43A8D16F, 0xA0F35D92, 0x19B8E74C, BSmartObject, IFMFontCreator,
                  IFMFontFinder)

 public:
  IFMFont* createFont(const wchar_t* family) override;
  IFMFont* createFontFor(const FontRequest& request) override;

  // Whichever family has the character, tried in the system's order, those of the same kind of pitch first; what was
  // found is remembered.
  IFMFont* fontWithGlyph(u32 codePoint, IFMFont* like) override;

 private:
  static constexpr i32 kNone = -1;

  // "LiberationSans" for "Liberation Sans"; empty when no family is called so.
  WideString familyWritten(std::wstring_view name);
  i32 familyWith(u32 codePoint, bool isFixed);

  SCriticalSection lock_;
  std::vector<InstalledFamily> families_;
  std::unordered_map<u32, i32> familyOf_;  // by character and pitch: a place in families_, or kNone
  i32 last_[2] = {kNone, kNone};           // of any pitch, of a fixed one
};

// Any name at all: a family of the same kind stands for it, as wide as the request says where the user's settings ask
// for that. For a character that no font has, a box with its code.
class FakeSubstitutor final : public BSmartObject, public IFMFontCreator, public IFMFontFinder {
  CORVIX_IDENTITY(FakeSubstitutor, 0xE8613F0D, 0x4259B7CA, 0x8B7EC401, 0x56D29AF3, BSmartObject, IFMFontCreator,
                  IFMFontFinder)

 public:
  IFMFont* createFont(const wchar_t* family) override;
  IFMFont* createFontFor(const FontRequest& request) override;
  IFMFont* fontWithGlyph(u32 codePoint, IFMFont* like) override;
};

}  // namespace corvix
