// Steps: a program with windows driven by a text, for tests and pictures. A line is a step; "#" begins a remark. A step
// is taken when nothing else is to be done, also while a menu or a dialog is open. [shell thread]
//
//   open FILE                       action NAME            key Ctrl+O    type TEXT
//   click X Y                       size WIDTH HEIGHT      wait idle     wait MILLISECONDS
//   shot FILE.png                   language CODE          log on|off    quit
//   expect title TEXT               expect status PANE TEXT       expect enabled NAME yes|no
//   expect documents COUNT          expect panel NAME yes|no      expect dialog TEXT
//   expect text FIRST LINE (of what has the focus)               expect focus CLASS              panel NAME yes|no
//
// What is expected may take its time, ten seconds at most. The first step that cannot be done, or finds something else,
// ends the program with 1 and a line on standard error.
#pragma once

#include "shell/Shell.h"

#include <string>
#include <vector>

#include <windows.h>

namespace corvix::drive {

class Steps {
 public:
  // From a file; false when it cannot be read. They begin with the message loop.
  static bool begin(const wchar_t* file);

 private:
  struct Step {
    int line;
    std::vector<std::wstring> words;
    std::wstring from(std::size_t index) const;  // the rest of the line
  };
  using Words = std::vector<std::wstring>;

  explicit Steps(std::wstring file) : file_(std::move(file)) {}
  static void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD);
  void next();
  void run(const Step& step);
  void expect(const Step& step);
  void fail(const Step& step, const std::wstring& why);

  std::wstring file_;
  std::vector<Step> steps_;
  std::size_t at_ = 0;
  int calm_ = 0, calmWanted_ = 0;
  ULONGLONG waitUntil_ = 0;
  ULONGLONG patientUntil_ = 0;  // 0: what is expected was not looked for yet
  UINT_PTR timer_ = 0;
};

}  // namespace corvix::drive
