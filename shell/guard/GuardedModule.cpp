#include "shell/guard/GuardedModule_p.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr struct {
  DWORD code;
  const wchar_t* text;
} kFaults[] = {
    {EXCEPTION_ACCESS_VIOLATION, L"an access violation"},
    {EXCEPTION_DATATYPE_MISALIGNMENT, L"a misaligned access"},
    {EXCEPTION_FLT_DIVIDE_BY_ZERO, L"a division by zero"},
    {EXCEPTION_ILLEGAL_INSTRUCTION, L"an illegal instruction"},
    {EXCEPTION_INT_DIVIDE_BY_ZERO, L"a division by zero"},
    {EXCEPTION_INT_OVERFLOW, L"an overflow"},
    {EXCEPTION_IN_PAGE_ERROR, L"a page that cannot be read from its file"},
    {EXCEPTION_PRIV_INSTRUCTION, L"a privileged instruction"},
    {EXCEPTION_STACK_OVERFLOW, L"a stack overflow"},
};

}  // namespace

std::wstring faultText(u32 code) {
  const wchar_t* text = L"exception";
  for (const auto& row : kFaults) {
    if (row.code == code) text = row.text;
  }
  wchar_t number[16];
  wsprintfW(number, L" (0x%08X)", code);
  return std::wstring(text) + number;
}

}  // namespace corvix
