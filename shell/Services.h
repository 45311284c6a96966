// Interfaces by which plug-ins offer small services to each other. The library has no such objects of its own.
// Texts are good as long as the object; nothing adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

// The texts of one language.
class IBLangPackage : public IBTransportable {
  CORVIX_IDENTITY(IBLangPackage, 0xCDDC479A, 0xF824C124, 0x256504DE, 0x381803A0, IBTransportable)

 public:
  virtual const wchar_t* languageCode() const noexcept = 0;    // "en", "de"
  virtual const wchar_t* text(u32 number) const noexcept = 0;  // null when there is none
};

// Turns texts of the program's own language into the user's.
class IBTranslator : public IBTransportable {
  CORVIX_IDENTITY(IBTranslator, 0x19F2054D, 0xE87BB6A5, 0x9257F156, 0x3F0E425B, IBTransportable)

 public:
  // The text itself when there is no other.
  virtual const wchar_t* translate(const wchar_t* text) const = 0;
};

// Enters itself where the system looks for it: file types, helpers of other programs.
class IBSelfReg : public IBTransportable {
  CORVIX_IDENTITY(IBSelfReg, 0x003BE43E, 0xAA7EEAC7, 0x9EB9FA08, 0x94C745EA, IBTransportable)

 public:
  virtual bool registerSelf() = 0;
  virtual bool unregisterSelf() = 0;
};

class IBEncryptionKey : public IBTransportable {
  CORVIX_IDENTITY(IBEncryptionKey, 0x3FD31787, 0x468BE377, 0xA94DE7E7, 0x618499C2, IBTransportable)

 public:
  virtual const u8* bytes() const noexcept = 0;
  virtual u32 sizeBytes() const noexcept = 0;
};

// Takes the lines of a report on work that is done.
class IBReport : public IBTransportable {
  CORVIX_IDENTITY(IBReport, 0xD71094B5, 0xEE8736F9, 0x9C39E9A6, 0x97C86C7D, IBTransportable)

 public:
  virtual void addLine(const wchar_t* text) = 0;
};

// Keeps the reports of work that runs unseen.
class IBSecretary : public IBTransportable {
  CORVIX_IDENTITY(IBSecretary, 0xBBBB288B, 0x1C487059, 0xAF20135A, 0x196B5E60, IBTransportable)

 public:
  virtual IBReport* report() = 0;
};

}  // namespace corvix
