#include "shell/Plugin.h"

__declspec(dllimport) int absentHelper();

CORVIX_PLUGIN({L"Faulty.missing_import", [] {
                 absentHelper();
                 return static_cast<corvix::IBSmartObject*>(nullptr);
               }})
