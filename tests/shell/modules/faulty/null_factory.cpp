#include "shell/Plugin.h"

extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal() { return nullptr; }
