#include "shell/Thrown_p.h"

#include "core/baselib/memory/Heap.h"
#include "core/baselib/system/Exception.h"

#include <exception>

#include <windows.h>

namespace corvix {

namespace {

std::wstring widen(const char* text) {
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0)), 0);
  MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), static_cast<int>(wide.size()));
  if (!wide.empty()) wide.pop_back();
  return wide;
}

}  // namespace

std::wstring textOfThrown() {
  try {
    throw;
  } catch (const std::exception& exception) {
    return widen(exception.what());
  } catch (const SException* exception) {
    wchar_t* const message = exception->getMessage();
    std::wstring text(message ? message : L"");
    _sfree(message);
    return text;
  } catch (...) {
    return L"an exception of an unknown kind";
  }
}

}  // namespace corvix
