// KFileSupplier: files, by "file" locations: "file:///C:/dir/a%20name", "file://server/share/name", and whatever
// is relative to them. A "\" is taken for a "/".
#pragma once

#include "core/suppliers/Supplier.h"
#include "core/suppliers/UrlRecord.h"

namespace corvix {

class KFileSupplier final : public BSmartObject, public IBSupplier {
  CORVIX_IDENTITY(KFileSupplier, 0x433EE9FE, 0x4D43DDCA, 0xB437B6A9, 0x3226F338, BSmartObject, IBSupplier)

 public:
  bool setLocation(const wchar_t* location) override;

  // A BRAInputStream on the file or on a part of it; null when there is no such file, or none that a location
  // may name (see pathOfLocation), or when it is asked for in order to write.
  IBStream* open(u32 flags, const wchar_t* relative, i32 start, i32 length) override;

 private:
  UrlRecord url_;
};

}  // namespace corvix
