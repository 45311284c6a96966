// IBTransportable: what every interface that crosses a module boundary begins with. An interface of your own
// derives from it alone and adds its operations; the class that implements it derives from BSmartObject too.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/baselib/identity/RttiSupport.h"

namespace corvix {

class IBTransportable : public HeapAllocated {
  CORVIX_IDENTITY_ROOT(IBTransportable, 0x3E91D704, 0x4BA2650C, 0x8D17F3B2, 0x6A05C9E8)

 public:
  // Public for the compilers' sake: a counted object is never deleted, it is released.
  virtual ~IBTransportable() = default;

  // True for every living object.
  virtual bool isValid() const noexcept { return true; }

  // The two operations of IBRTTISupport once more, in the table that every module can reach.
  virtual const stype_info& typeInfo() const noexcept = 0;
  virtual void* query(const stype_info& wanted, QueryVisitor* visitor = nullptr) = 0;
  CORVIX_IDENTITY_QUERY
};

}  // namespace corvix
