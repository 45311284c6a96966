// Makes nothing the first time, an object the second, throws the third, and always says something else then.
#include "shell/Plugin.h"

#include <stdexcept>
#include <string>

CORVIX_PLUGIN({L"Faulty.fickle", []() -> corvix::IBSmartObject* {
                 static int turn = 0;
                 if (++turn == 1) return nullptr;
                 if (turn == 2) return new corvix::BSmartObject;
                 throw std::runtime_error("turn " + std::to_string(turn));
               }})
