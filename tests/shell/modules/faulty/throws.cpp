#include "shell/Plugin.h"

#include <stdexcept>

CORVIX_PLUGIN({L"Faulty.throws", []() -> corvix::IBSmartObject* { throw std::runtime_error("no paper left"); }},
              {L"Faulty.decimal", []() -> corvix::IBSmartObject* { throw 7; }})
