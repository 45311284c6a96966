// The views of the product; a source file each.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix::views {

IBSmartObject* makePagedView();
IBSmartObject* makeTextView();

}  // namespace corvix::views
