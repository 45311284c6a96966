// Documents as the user opens and saves them: by dialogs, with a message when it cannot be done. [shell thread]
#pragma once

#include <string>

namespace corvix {

class IDocument;

namespace gui {

// What the program calls itself in its version information, else the name of its file.
const std::wstring& programName();

// "&1 photo.png"; beyond the ninth without a letter to press.
std::wstring numbered(std::size_t index, const std::wstring& text);

// The middle left out when it is long.
std::wstring shortened(const std::wstring& path);

bool openLocation(const std::wstring& location);
void openByDialog();
bool save(IDocument& document);
bool saveByDialog(IDocument& document);

}  // namespace gui

}  // namespace corvix
