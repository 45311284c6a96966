// KIStreamSupplier: streams that the program has registered under a name, as "istream:name". [shell thread]
#pragma once

#include "core/suppliers/Supplier.h"
#include "core/suppliers/UrlRecord.h"

namespace corvix {

class KIStreamSupplier final : public BSmartObject, public IBSupplier {
  CORVIX_IDENTITY(KIStreamSupplier, 0x658f6969, 0x4f903933, 0xbf9ea5a2, 0xc295e14c, BSmartObject, IBSupplier)

 public:
  bool setLocation(const wchar_t* location) override;

  // A reader of its own where the stream can be cloned, else the registered stream itself, as far as it was
  // read. Only the whole stream, only for reading.
  IBStream* open(u32 flags, const wchar_t* relative, i32 start, i32 length) override;

 private:
  UrlRecord url_;
};

}  // namespace corvix
