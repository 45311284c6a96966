#include "shell/Plugin.h"

CORVIX_PLUGIN({L"Faulty.crashes_when_asked", []() -> corvix::IBSmartObject* {
                 *static_cast<volatile int*>(nullptr) = 1;
                 return nullptr;
               }})
