// BHibernatable: an object that holds memory which it can rebuild later. It is asked for that memory when an
// allocation fails or is about to.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBHibernatable : public IBTransportable {
  CORVIX_IDENTITY(IBHibernatable, 0x00AFAA80, 0x49DB5A71, 0xBA1B0101, 0xF883D89F, IBTransportable)

 public:
  // Releases what can be rebuilt; true if that was anything. Called under the lock of `allocCSProc`, on the
  // thread that is short of memory: it may allocate and free, register and unregister, and release the object
  // itself, but must not wait for another thread that allocates. An allocation that fails in here starts no
  // second round. The manager passes true. One that throws has released nothing, and the next is asked.
  virtual bool hibernate(bool argument) = 0;
};

// Registered with the memory manager from construction to the last `release`: while its destroy listeners are told it
// may still be asked, in its destructors no more. While other threads allocate, make one under the lock of
// `allocCSProc`: it may be asked as soon as it is registered.
class CORVIX_API BHibernatable : public BSmartObject, public IBHibernatable {
  CORVIX_IDENTITY(BHibernatable, 0xA0FE6A6E, 0x4CF50677, 0xA0E70C32, 0xB81E29F1, BSmartObject, IBHibernatable)

 public:
  BHibernatable();
  ~BHibernatable() override;

  bool release() override;
};

}  // namespace corvix
