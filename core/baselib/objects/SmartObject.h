// Counted objects. Whoever makes one owns its first reference; the last `release` tells the object's own
// destroy listeners, then those of the whole process, and deletes it. Counting is not atomic: an object
// belongs to one thread at a time.
#pragma once

#include "core/baselib/objects/NotifySender.h"

namespace corvix {

// Told when an object is about to be destroyed; the object is still whole then.
class IDestroyListener : public IBTransportable {
  CORVIX_IDENTITY(IDestroyListener, 0x7720C5AE, 0x4163B8D9, 0x8EF10B36, 0x5D92A47C, IBTransportable)

 public:
  // `sender` is the object as its identity. Returns one of notify::k... .
  virtual int onDestroy(IBRTTISupport* sender) = 0;
};

// Can be removed from afar. As a sender it tells IDestroyListener.
class CORVIX_API IBRemoteRemovable : public IBTransportable, public virtual BNotifySender {
  CORVIX_IDENTITY(IBRemoteRemovable, 0x0B5C6E12, 0x4F87D3A0, 0xB6209C45, 0xE31F7D88, IBTransportable, BNotifySender)

 public:
  // Drops one reference; true if that was the last and the object is gone.
  virtual bool release() = 0;

  // Tells the object's own listeners and then the process's; part of the last `release`.
  virtual int notifyDestroy() = 0;
};

// The object as what IDestroyListener is told, to compare with: for who knows it by one of its interfaces. Null when
// there is nobody to tell of its end.
template <class Object>
IBRTTISupport* identityOf(Object* object) {
  return query<IBRemoteRemovable>(object);
}

class CORVIX_API IBSmartObject : public IBRemoteRemovable {
  CORVIX_IDENTITY(IBSmartObject, 0x41D8F09B, 0x4A36E27D, 0x9C5B10F4, 0x2EA7638D, IBRemoteRemovable)

 public:
  virtual void addRef() = 0;

  // References beyond the first: 0 for a new object.
  virtual u32 refCount() const noexcept = 0;
};

class CORVIX_API BSmartObject : public IBSmartObject {
  CORVIX_IDENTITY(BSmartObject, 0x9A04B7E3, 0x45FC1D68, 0x87E26A95, 0xC10D53BF, IBSmartObject)

 public:
  BSmartObject() noexcept = default;
  ~BSmartObject() override;

  bool release() override;
  int notifyDestroy() override;
  void addRef() override { ++refs_; }
  u32 refCount() const noexcept override { return refs_; }

 private:
  u32 refs_ = 0;
};

// An object of one owner, without a count: the first `release` destroys it and answers true.
class CORVIX_API BRemoteRemovable : public IBRemoteRemovable {
  CORVIX_IDENTITY(BRemoteRemovable, 0x18313AE8, 0x8CCC0DB0, 0xBBAC7DA0, 0xED6D41F6, IBRemoteRemovable)

 public:
  bool release() override;
  int notifyDestroy() override;
};

// The list of those who are told of the destruction of every object of the process; kept in the global data
// under IBRemoteRemovable and "OnDestroy".
CORVIX_API BNotifySender& destroyNotifications();

}  // namespace corvix
