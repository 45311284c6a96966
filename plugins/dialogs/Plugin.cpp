#include "shell/Plugin.h"
#include "descriptor.h"
#include "plugins/dialogs/Dialogs.h"

CORVIX_PLUGIN({descriptor::Dialog_OpenSave::name, corvix::dialogs::makeFileDialog},
              {descriptor::Dialog_Options::name, corvix::dialogs::makeOptionsDialog},
              {descriptor::Dialog_Password::name, corvix::dialogs::makePasswordDialog},
              {descriptor::Dialog_About::name, corvix::dialogs::makeAboutDialog})
