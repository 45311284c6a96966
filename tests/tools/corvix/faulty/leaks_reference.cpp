#include "IFaulty.h"

CORVIX_PLUGIN({L"Faulty.Object", [] {
                 corvix::IBSmartObject* const object = corvix::create<Good>();
                 object->addRef();
                 return object;
               }})
