#include "core/baselib/system/Exception.h"

#include <cstring>
#include <cwchar>

#include <windows.h>

namespace corvix {

namespace {

// Null for null, and when memory is short.
wchar_t* copyOf(const wchar_t* text) noexcept {
  if (!text) return nullptr;
  const std::size_t size = (std::wcslen(text) + 1) * sizeof *text;
  void* const copy = _smalloc(size);
  return static_cast<wchar_t*>(copy ? std::memcpy(copy, text, size) : nullptr);
}

}  // namespace

SException::SException(const wchar_t* sourceFile, i32 sourceLine, const wchar_t* message)
    : sourceFile_(copyOf(sourceFile)), sourceLine_(sourceLine), message_(copyOf(message)) {}

SException::~SException() {
  _sfree(message_);
  _sfree(sourceFile_);
}

void SException::report() {
  wchar_t* const message = getMessage();
  // The misspelt caption is deliberate: the box is known by it.
  MessageBoxW(nullptr, message, L"Exeption", MB_ICONHAND | MB_TASKMODAL);
  _sfree(message);
}

wchar_t* SException::getMessage() const { return copyOf(message_ ? message_ : L"<Unspecified>"); }

}  // namespace corvix
