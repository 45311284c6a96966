#include "core/baselib/system/Exception.h"

#include <gtest/gtest.h>

#include <string>

#include <windows.h>

namespace corvix {
namespace {

std::wstring boxText, boxCaption;

LRESULT CALLBACK answerBox(int code, WPARAM wParam, LPARAM lParam) {
  const auto* const message = reinterpret_cast<const CWPRETSTRUCT*>(lParam);
  if (code >= 0 && message->message == WM_INITDIALOG) {
    wchar_t text[256];
    GetDlgItemTextW(message->hwnd, 65535, text, 256);
    boxText = text;
    GetWindowTextW(message->hwnd, text, 256);
    boxCaption = text;
    EndDialog(message->hwnd, IDOK);
  }
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(SException, MessageIsCopiedAndShown) {
  HHOOK const hook = SetWindowsHookExW(WH_CALLWNDPROCRET, answerBox, nullptr, GetCurrentThreadId());
  const std::pair<const wchar_t*, std::wstring> rows[] = {
      {L"CloseHandle(m_hFile)", L"CloseHandle(m_hFile)"}, {L"", L""}, {nullptr, L"<Unspecified>"}};
  for (const auto& [message, shown] : rows) {
    SException exception(L"a.cpp", 7, message);
    wchar_t* const first = exception.getMessage();
    wchar_t* const second = exception.getMessage();
    EXPECT_EQ(first, shown);
    EXPECT_NE(first, second) << "the caller frees it";
    _sfree(first);
    _sfree(second);
    exception.report();
    EXPECT_EQ(boxText, shown);
    EXPECT_EQ(boxCaption, L"Exeption") << "spelt so on purpose: the box is known by it";
  }
  UnhookWindowsHookEx(hook);
}

}  // namespace
}  // namespace corvix
