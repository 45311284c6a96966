// IBSecretary: acts for the user where a document asks for something while it is read. The library has one, under the
// name "IBSecretary.Instance"; a plug-in that declares the name takes its place. [shell thread]
//
//   for (i32 attempt = 1;; ++attempt) {
//     const auto key = Ref<IBSmartObject>::adopt(secretary.keyFor(location, attempt)).as<IBEncryptionKey>();
//     if (!key) return nullptr;  // the user gave up
//     if (opens(key->bytes(), key->sizeBytes())) break;
//   }
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBReport;

class IBSecretary : public IBTransportable {
  CORVIX_IDENTITY(IBSecretary, 0xBBBB288B, 0x1C487059, 0xAF20135A, 0x196B5E60, IBTransportable)

 public:
  static constexpr i32 kMostAttempts = 3;

  // Of work that runs unseen. Adds no reference.
  virtual IBReport* report() = 0;

  // What opens a document: an IBEncryptionKey with a reference for the caller. The first attempt gives the key that was
  // given for the location before, unless a further attempt has told that it was wrong; every other one asks the user.
  // Null when the user gives up, when nobody is there to ask or no dialog to ask with, and after kMostAttempts. The
  // keys of a few locations are kept, in memory alone; they are never logged.
  virtual IBSmartObject* keyFor(const wchar_t* location, i32 attempt) = 0;

  // The key of that location, or of all when it is null.
  virtual void forget(const wchar_t* location) noexcept = 0;
};

}  // namespace corvix
