// The host's commands. Each prints what it did and returns the program's exit code: 0, or 1 with a message.
#pragma once

#include "shell/Shell.h"

#include <string>

namespace host {

// Every module, interface and setting that the shell knows.
int listModules(corvix::IPluginManager& manager);

// Makes objects of the example plug-ins, uses them and lets them go.
int runDemo(corvix::IPluginManager& manager);

// Draws the test page through plain GDI and through GDI+, side by side, into a PNG file.
int drawToFile(corvix::IPluginManager& manager, const std::string& file);

// The same in a window, until the user closes it; or by itself, when the seconds are above 0.
int showWindow(corvix::IPluginManager& manager, double closeAfterSeconds);

// Copies what a location or a path names into a file, or to the standard output when `file` is empty.
int fetch(corvix::IShell& shell, const std::string& location, const std::string& file);

// Every setting with its value, its default and what can be chosen.
int listSettings(corvix::IShell& shell);

int getSetting(corvix::IShell& shell, const std::string& group, const std::string& item);

// Checks the text against the setting's type, changes the setting and saves it.
int setSetting(corvix::IShell& shell, const std::string& group, const std::string& item, const std::string& text);

int saveSettings(corvix::IShell& shell);

// Raises a global event and says who declares to be told.
int raiseEvent(corvix::IShell& shell, const std::string& name);

// Processes an action, unless it says that it cannot be done now.
int processAction(corvix::IShell& shell, const std::string& name);

// Works with pools and a hibernatable, and shows what the memory manager knows of them before and after it is asked
// to give memory back.
int showMemory();

// Switches the log of this program on or off, from its next start.
int switchLog(bool on);

// Whether the log is on, and where it is.
int tellLog();

// What this run has logged so far.
int showLog();

}  // namespace host
