// The dialogs of the product; a source file each.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix::dialogs {

IBSmartObject* makeFileDialog();
IBSmartObject* makeOptionsDialog();
IBSmartObject* makePasswordDialog();
IBSmartObject* makeAboutDialog();

}  // namespace corvix::dialogs
