// Where the library keeps files of its own.
#pragma once

#include <string>

namespace corvix {

// What the environment says under that name; empty if nothing.
std::wstring environmentText(const wchar_t* name);

// Where the library keeps what is neither a setting nor temporary, below the user's folder of application data on this
// machine; empty if there is no such folder. It need not exist yet.
std::wstring userDataFolder();

// A folder, with those above it that are missing.
void makeFolders(const std::wstring& path);

}  // namespace corvix
