#include "shell/Plugin.h"

CORVIX_PLUGIN({L"Faulty.makes_nothing", [] { return static_cast<corvix::IBSmartObject*>(nullptr); }})
