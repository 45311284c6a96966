#include "core/baselib/memory/Hibernatable.h"

#include "core/baselib/memory/MemoryManager.h"

namespace corvix {

BHibernatable::BHibernatable() { BMemoryManager::registerHibernatable(this); }

BHibernatable::~BHibernatable() { BMemoryManager::unregisterHibernatable(this); }

// Its listeners still find it registered; once it begins to go, nobody asks it any more, not even a destructor of its
// own that allocates when memory is short.
bool BHibernatable::release() {
  if (refCount() > 0) return BSmartObject::release();
  notifyDestroy();
  BMemoryManager::unregisterHibernatable(this);
  delete this;
  return true;
}

}  // namespace corvix
