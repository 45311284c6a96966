// Files of text: which encoding they are taken for, and that they are written as they were read.
#include "plugins/format-text/TextCoding_p.h"
#include "shell/documents/TextSource.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

namespace corvix::fuzz {

void texts(Bytes bytes) {
  const std::string_view file(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const i32 found = encodingOf(file);
  for (i32 encoding = found; encoding >= 0; encoding = encoding == ITextEditor::kAnsi ? -1 : ITextEditor::kAnsi) {
    TextUnits text;
    LineEnds ends;
    if (decodeText(file, encoding, text, ends)) continue;
    require(text.find(L'\r') == text.npos && text.find(L'\0') == text.npos, "lines end in one way");
    require(static_cast<std::size_t>(std::count(text.begin(), text.end(), L'\n')) == ends.size(), "each end is kept");
    corvix::Bytes written;
    require(!encodeText(text, ends, encoding, written), "what was read can be written");
    require(written == file, "it is written as it was read");
  }
}

}  // namespace corvix::fuzz
