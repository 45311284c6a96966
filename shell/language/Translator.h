// IBTranslator: turns texts of the program's own language into the user's. The library has one, under the name
// "IBTranslator.Instance"; a plug-in that declares the name takes its place. Texts are good as long as the translator,
// whatever language is chosen meanwhile. [shell thread]
#pragma once

#include "core/baselib/objects/NotifySender.h"

namespace corvix {

class IBTranslator;

// A language that there are texts of.
struct KnownLanguage {
  const wchar_t* code;
  const wchar_t* name;    // in that language; the code when nobody says it
  const wchar_t* origin;  // the path of the file or of the plug-in
};

// Told after another language was chosen: what is shown is shown anew.
class ILanguageListener : public IBTransportable {
  CORVIX_IDENTITY(ILanguageListener, 0x6E2B90D1, 0x4C83F7A5, 0x91D06C3E, 0x5F17A8B4, IBTransportable)

 public:
  virtual int onLanguageChanged(IBTranslator& translator) = 0;  // one of notify::k...
};

class IBTranslator : public IBTransportable {
  CORVIX_IDENTITY(IBTranslator, 0x19F2054D, 0xE87BB6A5, 0x9257F156, 0x3F0E425B, IBTransportable)

 public:
  // The text itself when there is no other; empty for null.
  virtual const wchar_t* translate(const wchar_t* text) = 0;

  // For a text that can mean two things: what is kept for this context, else what is kept for none.
  virtual const wchar_t* translateIn(const wchar_t* context, const wchar_t* text) = 0;

  // The code of what was chosen, such as "de-AT", or of the system's language.
  virtual const wchar_t* language() = 0;

  // Sets General\Language, which lasts when the settings are saved. Empty or null: the system's. False, and nothing
  // changed, when it is no code: letters, digits and "-", at most 32 of them.
  virtual bool setLanguage(const wchar_t* code) = 0;

  // What could be chosen: one row for each file of texts and each declared package, in the order of the codes. Texts
  // are good until the next call of `takeStock`, which looks anew and returns how many there are. Loads no code.
  virtual i32 takeStock() = 0;
  virtual bool knownAt(i32 index, KnownLanguage& known) const noexcept = 0;  // false outside the list

  // Tells ILanguageListener.
  virtual BNotifySender& sender() noexcept = 0;
};

}  // namespace corvix
