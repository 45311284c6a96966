// How a menu or toolbar shows an action, without loading a plug-in for it: one whose module's code is not loaded yet
// can be chosen, and is asked then.
#pragma once

#include "shell/Shell.h"

#include <string>

namespace corvix::gui {

struct ActionLook {
  bool isEnabled = true;
  bool isChecked = false;
  std::wstring text;  // empty: as the template says
};

ActionLook lookOf(const wchar_t* actionName);

// What its plug-in says of it in a sentence; empty when it does not.
std::wstring describe(const wchar_t* actionName);

// `by` says to others who asks: "menu", "key". What nobody can do is told to the user in the status bar.
void process(const wchar_t* actionName, const wchar_t* by);

// Whether it can be done now; asks, and so loads.
bool isPossible(const wchar_t* actionName);

}  // namespace corvix::gui
