// Everything that a plug-in needs, in one include.
#pragma once

#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/GlobalSender.h"
#include "core/baselib/objects/Ref.h"
#include "shell/ClassFactory.h"
#include "shell/Shell.h"
