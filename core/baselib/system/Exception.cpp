#include "core/baselib/system/Exception.h"

#include <cstring>
#include <cwchar>

#include <windows.h>

namespace corvix {

namespace {

// Null for null, and when memory is short.
HeapBuffer<wchar_t> copyOf(const wchar_t* text) noexcept {
  HeapBuffer<wchar_t> copy;
  const std::size_t units = text ? std::wcslen(text) + 1 : 0;
  if (copy.tryAllocate(units)) std::memcpy(copy.get(), text, units * sizeof *text);
  return copy;
}

}  // namespace

SException::SException(const wchar_t* sourceFile, i32 sourceLine, const wchar_t* message)
    : sourceFile_(copyOf(sourceFile)), sourceLine_(sourceLine), message_(copyOf(message)) {}

SException::~SException() = default;

void SException::report() {
  const HeapBuffer<wchar_t> message(getMessage());
  // The misspelt caption is deliberate: the box is known by it.
  MessageBoxW(nullptr, message.get(), L"Exeption", MB_ICONHAND | MB_TASKMODAL);
}

wchar_t* SException::getMessage() const { return copyOf(message_ ? message_.get() : L"<Unspecified>").release(); }

}  // namespace corvix
