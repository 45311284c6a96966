// KHTTPSupplier: whole resources of "http" locations, as internet streams. It is also declared for "ftp", of which
// it supplies nothing.
#pragma once

#include "core/suppliers/Supplier.h"
#include "core/suppliers/UrlRecord.h"

namespace corvix {

class KHTTPSupplier final : public BSmartObject, public IBSupplier {
  CORVIX_IDENTITY(KHTTPSupplier, 0x1C603B15, 0x450A378B, 0xE08ACBAE, 0x85095F68, BSmartObject, IBSupplier)

 public:
  bool setLocation(const wchar_t* location) override;

  // The stream is closed when the resource cannot be had; null when it is not asked for as above.
  IBStream* open(u32 flags, const wchar_t* relative, i32 start, i32 length) override;

 private:
  UrlRecord url_;
};

}  // namespace corvix
