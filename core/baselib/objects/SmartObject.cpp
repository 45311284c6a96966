#include "core/baselib/objects/SmartObject.h"

#include "core/baselib/objects/GlobalSender.h"

namespace corvix {

namespace {

int deliverDestroy(BNotifySender& sender, IBRTTISupport* object) {
  return broadcastTo<IDestroyListener>(sender,
                                       [object](IDestroyListener& listener) { return listener.onDestroy(object); });
}

}  // namespace

BNotifySender& destroyNotifications() {
  static GlobalSender sender(IBRemoteRemovable::classInfo(), "OnDestroy");
  return sender.get();
}

BSmartObject::~BSmartObject() = default;

bool BSmartObject::release() {
  if (refs_ > 0) {
    --refs_;
    return false;
  }
  notifyDestroy();
  delete this;
  return true;
}

int BSmartObject::notifyDestroy() {
  const int own = deliverDestroy(*this, this);
  BNotifySender& everybody = destroyNotifications();
  return everybody.hasListeners() ? deliverDestroy(everybody, this) : own;
}

}  // namespace corvix
