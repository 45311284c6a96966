// What the commands say of objects that are made by name.
#pragma once

#include "shell/Shell.h"

#include <string>

namespace host {

// The last name of a module's path.
std::string fileName(const wchar_t* path);

// Why an entry's object asked for last could not be made; empty when it was fine.
std::string whyNot(corvix::IPluginInterface& entry);

// "0x..., 0x..., 0x..., 0x..."
std::string identifierText(const corvix::stype_info& identifier);

// For a user who got no object of that name, on the error output: nobody declares it, with the name that is nearest, or
// what each module that does says.
void explainNoObject(corvix::IPluginManager& manager, const wchar_t* name);

}  // namespace host
