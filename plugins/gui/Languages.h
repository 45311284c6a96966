// The languages that there are, as rows of a menu.
#pragma once

#include "plugins/gui/MainMenu.h"

namespace corvix::gui {

std::vector<ListedRow> languages();

}  // namespace corvix::gui
