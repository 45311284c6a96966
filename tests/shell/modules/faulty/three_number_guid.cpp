#include "shell/Plugin.h"

CORVIX_PLUGIN({L"Faulty.three_number_guid", corvix::create<corvix::BSmartObject>},
              {L"GlobalEvent.three_number_guid", corvix::create<corvix::BSmartObject>})
