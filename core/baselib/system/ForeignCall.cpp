#include "core/baselib/system/ForeignCall_p.h"

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/KernelFile_p.h"
#include "core/baselib/system/Log.h"

#include <exception>

namespace corvix {

namespace {

std::wstring widen(const char* text) {
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0)), 0);
  MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), static_cast<int>(wide.size()));
  if (!wide.empty()) wide.pop_back();
  return wide;
}

HMODULE moduleOf(const void* code) noexcept {
  constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE module = nullptr;
  return GetModuleHandleExW(kByAddress, static_cast<const wchar_t*>(code), &module) ? module : nullptr;
}

}  // namespace

std::wstring textOfThrown() {
  std::wstring text;
  try {
    throw;
  } catch (const std::exception& exception) {
    text = widen(exception.what());
  } catch (const SException* exception) {
    const HeapBuffer<wchar_t> message(exception ? exception->getMessage() : nullptr);
    if (message) text = message.get();
  } catch (...) {
    return L"an exception of an unknown kind";
  }
  return text.empty() ? L"an exception that says nothing" : text;
}

std::wstring modulePathOf(const void* code) {
  const HMODULE module = moduleOf(code);
  return module ? modulePath(module) : std::wstring();
}

bool isCode(const void* address) noexcept {
  constexpr DWORD kExecutable = PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  MEMORY_BASIC_INFORMATION pages;
  return VirtualQuery(address, &pages, sizeof pages) && pages.State == MEM_COMMIT && (pages.Protect & kExecutable);
}

void logThrown(const void* code, const wchar_t* place) noexcept {
  try {
    const std::wstring path = modulePathOf(code);
    sWriteLog(L"Called as %s, %s threw: %s\n", place, path.empty() ? L"an unknown module" : path.c_str(),
              textOfThrown().c_str());
  } catch (...) {  // no memory for its text
    sWriteLog(L"Called as %s, a module threw.\n", place);
  }
}

}  // namespace corvix
