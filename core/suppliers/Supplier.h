// IBSupplier: turns locations of one scheme into streams. A supplier is an ordinary interface of a module, named
// "Supplier." and the scheme in lower case; `openLocation` in shell/Locations.h finds the one for a location.
//
//   const auto supplier = createObject<IBSupplier>(manager, L"Supplier.file");
//   if (supplier->setLocation(L"file:///C:/books/index.html")) stream = supplier->open(supply::kRead, L"a.pdf");
#pragma once

#include "core/baselib/streams/Stream.h"

namespace corvix {

namespace supply {
constexpr u32 kRead = 0;
constexpr u32 kWrite = 1;           // bit 0; no supplier of the library writes
constexpr i32 kWholeResource = -1;  // for start and length
}  // namespace supply

class IBSupplier : public IBTransportable {
  CORVIX_IDENTITY(IBSupplier, 0xA6D1F3C8, 0x4E0B7295, 0x93C84A1D, 0x5F7E20B6, IBTransportable)

 public:
  // The location that the supplier is for: an absolute one, or the base of relative ones. False if the supplier
  // can do nothing with it; the former one is kept then.
  virtual bool setLocation(const wchar_t* location) = 0;

  // Opens the location, or the one that `relative` (null for none) means from there: an input stream, owned by
  // the caller. Null when there is no such thing, or the supplier does not do what is asked for. `start` and
  // `length`, in bytes, ask for a part of it. Some streams are returned closed: ask `isOpen`.
  virtual IBStream* open(u32 flags, const wchar_t* relative = nullptr, i32 start = supply::kWholeResource,
                         i32 length = supply::kWholeResource) = 0;
};

}  // namespace corvix
