// Runs programs where no other test's window takes their keys:
//   corvix-on-desktop NAME PROGRAM ARGUMENTS...   runs it on that desktop; streams, folder and exit code are its own
//   corvix-on-desktop NAME                        makes the desktop, which takes a second, says so, and keeps it until
//   the input ends
#include <windows.h>
#include <cstdio>
#include <cwchar>

namespace {

// The command line behind its first two words.
wchar_t* behindTwoWords(wchar_t* line) {
  for (int word = 0; word < 2; ++word) {
    bool isQuoted = false;
    for (; *line && (isQuoted || *line != L' '); ++line) isQuoted ^= *line == L'"';
    line += std::wcsspn(line, L" ");
  }
  return line;
}

int run(wchar_t* desktop, wchar_t* line) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.lpDesktop = desktop;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, line, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process))
    return std::fprintf(stderr, "%ls: cannot be started (%lu)\n", line, GetLastError()), 2;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = 2;
  GetExitCodeProcess(process.hProcess, &code);
  return static_cast<int>(code);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) return std::fputs("usage: corvix-on-desktop NAME [PROGRAM ARGUMENTS...]\n", stderr), 2;
  const HDESK desktop = CreateDesktopW(argv[1], nullptr, nullptr, 0, GENERIC_ALL, nullptr);
  if (!desktop || !SetThreadDesktop(desktop)) return std::fprintf(stderr, "no such desktop (%lu)\n", GetLastError()), 2;
  if (argc > 2) return run(argv[1], behindTwoWords(GetCommandLineW()));
  GetDesktopWindow();  // now it is made
  std::puts("made");
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  return 0;
}
