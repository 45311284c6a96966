// Listens for the destruction of other objects.
#include "descriptor.h"
#include "examples/plugins/witness/IWitness.h"
#include "shell/Plugin.h"

#include <algorithm>
#include <vector>

namespace example {

class Witness : public corvix::BSmartObject, public IWitness, public corvix::IDestroyListener {
  CORVIX_IDENTITY(Witness, 0xD6902EB4, 0x4F7A15C8, 0x83C0E96D, 0x5B1F47A2, corvix::BSmartObject, IWitness,
                  corvix::IDestroyListener)

 public:
  // A sender keeps no reference on its listeners: whoever listens stops before it goes.
  ~Witness() override {
    for (corvix::IBSmartObject* object : watched_) object->removeListener(listener());
  }

  void watch(corvix::IBSmartObject* object) override {
    object->addListener(listener());
    watched_.push_back(object);
  }

  corvix::WideString lastSeen() const override { return lastSeen_; }
  corvix::u32 count() const override { return count_; }

  int onDestroy(corvix::IBRTTISupport* sender) override {
    lastSeen_ = sender->typeInfo().classNameW();
    ++count_;
    const auto* const object = static_cast<corvix::IBSmartObject*>(sender->query(corvix::IBSmartObject::classInfo()));
    watched_.erase(std::remove(watched_.begin(), watched_.end(), object), watched_.end());
    return corvix::notify::kGoOn;
  }

 private:
  corvix::IDestroyListener* listener() { return this; }

  std::vector<corvix::IBSmartObject*> watched_;
  corvix::WideString lastSeen_;
  corvix::u32 count_ = 0;
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Example_Witness, example::Witness>())
