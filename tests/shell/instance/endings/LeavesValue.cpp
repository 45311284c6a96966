// A module that leaves a value with a destructor of its own in the global data.
#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/SmartObject.h"

#include <cstdio>

extern "C" CORVIX_EXPORT void leaveValue() {
  static int value;
  corvix::BGlobalData::setItem(corvix::IBSmartObject::classInfo(), "of a module", &value,
                               [](void*) { std::fputs("module's value\n", stderr); });
}
