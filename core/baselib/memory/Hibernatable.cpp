#include "core/baselib/memory/Hibernatable.h"

#include "core/baselib/memory/MemoryManager.h"

namespace corvix {

BHibernatable::BHibernatable() { BMemoryManager::registerHibernatable(this); }

BHibernatable::~BHibernatable() { BMemoryManager::unregisterHibernatable(this); }

// Unregistered while it is still whole: another thread may be about to ask it.
bool BHibernatable::release() {
  if (refCount() == 0) BMemoryManager::unregisterHibernatable(this);
  return BSmartObject::release();
}

}  // namespace corvix
