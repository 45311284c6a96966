// Another resolution of the screens: what the system answers for every window, and what it sends to one that came onto
// such a screen.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include <windows.h>

namespace corvix::testing_support {

// All windows are on a screen of so many pixels to the inch, as long as this lives. The code of the system's function
// is written over: modules may know its address already.
class Resolution {
 public:
  explicit Resolution(UINT dpi)
      : code_(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow"))) {
    now() = dpi;
    const auto answer = reinterpret_cast<std::uintptr_t>(&answerNow);
    std::array<std::uint8_t, kSize> jump = {0xB8};  // mov eax, answer; jmp eax
    if constexpr (sizeof(void*) == 8) jump = {0x48, 0xB8};
    std::memcpy(jump.data() + kSize - 2 - sizeof answer, &answer, sizeof answer);
    jump[kSize - 2] = 0xFF, jump[kSize - 1] = 0xE0;
    std::memcpy(before_.data(), code_, kSize);
    write(jump);
  }
  ~Resolution() { write(before_); }
  Resolution(const Resolution&) = delete;
  Resolution& operator=(const Resolution&) = delete;

  // The window moves to a screen of another resolution.
  void change(HWND window, UINT dpi, RECT wanted) const {
    now() = dpi;
    const auto both = MAKEWPARAM(dpi, dpi);
    SendMessageW(window, WM_DPICHANGED, both, reinterpret_cast<LPARAM>(&wanted));
    EnumChildWindows(window, &tellChild, 0);
  }

 private:
  static constexpr std::size_t kSize = sizeof(void*) == 8 ? 12 : 7;
  static UINT& now() {
    static UINT dpi = 96;
    return dpi;
  }
  static BOOL CALLBACK tellChild(HWND child, LPARAM) {
    SendMessageW(child, WM_DPICHANGED_AFTERPARENT, 0, 0);
    return TRUE;
  }
  static UINT WINAPI answerNow(HWND) { return now(); }
  void write(const std::array<std::uint8_t, kSize>& bytes) const {
    DWORD protection = 0;
    VirtualProtect(code_, kSize, PAGE_EXECUTE_READWRITE, &protection);
    std::memcpy(code_, bytes.data(), kSize);
    VirtualProtect(code_, kSize, protection, &protection);
    FlushInstructionCache(GetCurrentProcess(), code_, kSize);
  }

  void* const code_;
  std::array<std::uint8_t, kSize> before_{};
};

}  // namespace corvix::testing_support
