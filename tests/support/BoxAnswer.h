// Reads the message boxes of this thread and answers them.
#pragma once

#include <string>

#include <windows.h>

namespace corvix::testing_support {

struct BoxAnswer {
  explicit BoxAnswer(int button) : hook_(SetWindowsHookExW(WH_CALLWNDPROCRET, react, nullptr, GetCurrentThreadId())) {
    answer = button;
    text = caption = buttons = {};
  }
  ~BoxAnswer() { UnhookWindowsHookEx(hook_); }
  BoxAnswer(const BoxAnswer&) = delete;
  BoxAnswer& operator=(const BoxAnswer&) = delete;

  static inline std::wstring text, caption, buttons;  // a letter for each of OK, Cancel, Yes and Retry
  static inline int answer;

 private:
  static LRESULT CALLBACK react(int code, WPARAM wParam, LPARAM lParam) {
    const auto* const message = reinterpret_cast<const CWPRETSTRUCT*>(lParam);
    if (code >= 0 && message->message == WM_INITDIALOG) {
      wchar_t buffer[1024];
      text.assign(buffer, GetDlgItemTextW(message->hwnd, 65535, buffer, 1024));
      caption.assign(buffer, static_cast<std::size_t>(GetWindowTextW(message->hwnd, buffer, 1024)));
      for (int button : {IDOK, IDCANCEL, IDYES, IDRETRY})
        if (GetDlgItem(message->hwnd, button)) buttons += L"?OC?R?Y"[button];
      EndDialog(message->hwnd, answer);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
  }
  HHOOK hook_;
};

}  // namespace corvix::testing_support
