#include "core/baselib/objects/SmartObject.h"

#include "core/baselib/objects/GlobalSender.h"

namespace corvix {

namespace {

int deliverDestroy(BNotifySender& sender, IBRTTISupport* object) {
  return broadcastTo<IDestroyListener>(sender,
                                       [object](IDestroyListener& listener) { return listener.onDestroy(object); });
}

int deliverDestroy(IBRemoteRemovable& object) {
  const int own = deliverDestroy(object, &object);
  BNotifySender& everybody = destroyNotifications();
  return everybody.hasListeners() ? deliverDestroy(everybody, &object) : own;
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

int BSmartObject::notifyDestroy() { return deliverDestroy(*this); }

bool BRemoteRemovable::release() {
  notifyDestroy();
  delete this;
  return true;
}

int BRemoteRemovable::notifyDestroy() { return deliverDestroy(*this); }

}  // namespace corvix
