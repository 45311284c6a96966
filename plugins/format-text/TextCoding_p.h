// Between the bytes of a text file and UTF-16 with "\n" at the ends of lines.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"

#include <string>
#include <string_view>
#include <vector>

namespace corvix {

using TextUnits = std::basic_string<wchar_t, std::char_traits<wchar_t>, HeapAllocator<wchar_t>>;
using Bytes = std::basic_string<char, std::char_traits<char>, HeapAllocator<char>>;
using LineEnds = std::vector<u8, HeapAllocator<u8>>;  // of each line but the last, as in ITextEditor

// The encoding of a file (ITextEditor::Encoding) by its mark, or by where its zeros are; else UTF-8 to be tried.
i32 encodingOf(std::string_view bytes) noexcept;

// Null, or why it is no text, a sentence; `text` and `ends` are filled then as far as it went.
const wchar_t* decodeText(std::string_view bytes, i32 encoding, TextUnits& text, LineEnds& ends);

// The reverse. Null, or why it cannot be written in that encoding.
const wchar_t* encodeText(std::wstring_view text, const LineEnds& ends, i32 encoding, Bytes& bytes);

// Strict: false for what is no text of whole characters.
bool toUtf8(std::wstring_view text, Bytes& bytes);

// Appends with "\n" for each end of a line, and what it was to `ends`.
void appendLines(std::wstring_view raw, TextUnits& text, LineEnds& ends);

}  // namespace corvix
