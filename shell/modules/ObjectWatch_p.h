#pragma once

#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/system/CriticalSection.h"
#include "shell/ObjectWatch.h"
#include "shell/PluginManager.h"

#include <unordered_map>
#include <vector>

namespace corvix {

// Told of every object that is made by name, and of every one that goes.
class ObjectWatch final : public IDestroyListener {
  CORVIX_IDENTITY(ObjectWatch, 0x2F8B61D5, 0x9C07E4A1, 0xD6305BF9, 0x48E1AC72, IDestroyListener)

 public:
  ObjectWatch();
  ~ObjectWatch() override;

  void made(const IPluginInterface& entry, IBSmartObject& object);

  // It is kept for good.
  void forget(IBSmartObject& object);

  std::vector<ObjectsLeft> left();

  int onDestroy(IBRTTISupport* sender) override;

 private:
  struct Made {
    const IPluginInterface* entry;
    const wchar_t* className;  // both stand as long as the module
    u32 thread;
  };

  SCriticalSection section_;
  std::unordered_map<const IBRTTISupport*, Made> made_;
};

// The one that watches, or null.
inline constinit ObjectWatch* objectWatch = nullptr;

}  // namespace corvix
