// Fonts by name: what a document asks for, and what it gets. The library's IFMFontMachine is "IFMFontMachine.Instance",
// one for everybody who creates it. Texts are valid as long as the object that returned them. A font belongs to one
// thread at a time. Text asks the machine from every thread that draws, and the machine asks its creators one after the
// other: a creator does not wait for another thread that draws text.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

// A font that can be drawn with.
class IFMFont : public BSmartObject {
  CORVIX_IDENTITY(IFMFont, 0x6E0B92F5, 0x41D73AC8, 0xB95C20E4, 0x8F16D37A, BSmartObject)

 public:
  // The family to draw with, as the system knows it.
  virtual const wchar_t* family() const noexcept = 0;

  // True when that is another one than was asked for.
  virtual bool isSubstitute() const noexcept = 0;
};

// Finds fonts for names; a font machine asks several of them. A plug-in may offer its own.
class IFMFontCreator : public IBTransportable {
  CORVIX_IDENTITY(IFMFontCreator, 0xD1A83C67, 0x4F920E5B, 0x87E4B6D9, 0x203C5FA1, IBTransportable)

 public:
  // A new font, owned by the caller; null when this one has none for the name.
  virtual IFMFont* createFont(const wchar_t* family) = 0;
};

class IFMFontMachine : public BSmartObject {
  CORVIX_IDENTITY(IFMFontMachine, 0xAA61BA96, 0x4886DDDE, 0xE83B9587, 0x283689BF, BSmartObject)

 public:
  // A new font, owned by the caller, from the first creator that has one. Never null: the last creator takes
  // whatever name it is given, an empty one or null too.
  virtual IFMFont* createFont(const wchar_t* family) = 0;

  // Asked before every creator that was added earlier. The machine keeps a reference.
  virtual void addCreator(IFMFontCreator* creator) = 0;
};

}  // namespace corvix
