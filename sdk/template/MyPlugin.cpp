#include "IMyInterface.h"
#include "descriptor.h"  // made from plugin.xml
#include "shell/Plugin.h"

class MyObject : public corvix::BSmartObject, public IMyInterface {
  CORVIX_IDENTITY(MyObject, 0x18D64F7A, 0x43B0C2E5, 0xA9F58316, 0xD07E2B94, corvix::BSmartObject, IMyInterface)

 public:
  int twice(int number) const override { return 2 * number; }
};

// One row for each interface of plugin.xml; the compiler says when one is missing.
CORVIX_PLUGIN(corvix::rowFor<descriptor::My_Interface, MyObject>())
