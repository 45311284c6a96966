#include "plugins/drive/Steps.h"

#include "core/baselib/system/Log.h"
#include "plugins/windows/Picture.h"
#include "plugins/windows/Windows.h"
#include "shell/documents/DocManager.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"
#include "shell/language/Translator.h"
#include "shell/services/Report.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <sstream>

#include <commctrl.h>

namespace corvix::drive {

using namespace windows;

namespace {

constexpr UINT kTickMs = 30;
constexpr ULONGLONG kLongestWaitMs = 30000;
constexpr int kCalmTicks = 3;

std::unique_ptr<Steps> steps;

IShell& shell() { return *IShell::getInstance(); }
IFrameWindow* frame() { return shell().guiManager() ? shell().guiManager()->mainWindow() : nullptr; }
HWND frameWindow() { return frame() ? static_cast<HWND>(frame()->windowHandle()) : nullptr; }

constexpr struct {
  const wchar_t* name;
  WORD key;
} kKeys[] = {{L"Ctrl", VK_CONTROL},  {L"Alt", VK_MENU},        {L"Shift", VK_SHIFT},   {L"Esc", VK_ESCAPE},
             {L"Enter", VK_RETURN},  {L"Tab", VK_TAB},         {L"Up", VK_UP},         {L"Down", VK_DOWN},
             {L"Left", VK_LEFT},     {L"Right", VK_RIGHT},     {L"Home", VK_HOME},     {L"End", VK_END},
             {L"PgUp", VK_PRIOR},    {L"PgDn", VK_NEXT},       {L"Space", VK_SPACE},   {L"Del", VK_DELETE},
             {L"Plus", VK_OEM_PLUS}, {L"Minus", VK_OEM_MINUS}, {L"Backspace", VK_BACK}};

WORD keyNamed(const std::wstring& name) {
  for (const auto& row : kKeys) {
    if (name == row.name) return row.key;
  }
  if (name.size() == 1) return static_cast<WORD>(towupper(name[0]));
  return name[0] == L'F' ? static_cast<WORD>(VK_F1 + std::wcstol(name.c_str() + 1, nullptr, 10) - 1) : WORD{0};
}

void send(WORD key, DWORD flags) {
  INPUT input = {};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = (flags & KEYEVENTF_UNICODE) ? WORD{0} : key;
  input.ki.wScan = (flags & KEYEVENTF_UNICODE) ? key : static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
  input.ki.dwFlags = flags;
  SendInput(1, &input, sizeof input);
}

// "Ctrl+Shift+A"; false for one that there is not.
bool press(std::wstring keys) {
  std::vector<WORD> down;
  for (std::size_t plus; (plus = keys.find(L'+')) != keys.npos; keys.erase(0, plus + 1))
    down.push_back(keyNamed(keys.substr(0, plus)));
  down.push_back(keys.empty() ? WORD{0} : keyNamed(keys));
  for (const WORD key : down) {
    if (!key) return false;
  }
  for (const WORD key : down) send(key, 0);
  for (auto at = down.rbegin(); at != down.rend(); ++at) send(*at, KEYEVENTF_KEYUP);
  return true;
}

HWND childOfClass(HWND parent, const wchar_t* wanted) { return FindWindowExW(parent, nullptr, wanted, nullptr); }

std::wstring statusText(int pane) {
  const HWND bar = childOfClass(frameWindow(), STATUSCLASSNAMEW);
  std::wstring text(512, L'\0');
  if (bar) SendMessageW(bar, SB_GETTEXTW, static_cast<WPARAM>(pane), reinterpret_cast<LPARAM>(text.data()));
  return text.c_str();
}

std::wstring yesOrNo(bool is) { return is ? L"yes" : L"no"; }

}  // namespace

std::wstring Steps::Step::from(std::size_t index) const {
  std::wstring text;
  for (std::size_t i = index; i < words.size(); ++i) text += (i > index ? L" " : L"") + words[i];
  return text;
}

bool Steps::begin(const wchar_t* file) {
  std::FILE* const opened = _wfopen(file, L"rb");
  if (!opened) return false;
  std::string bytes;
  char block[4096];
  std::size_t count = 0;
  while ((count = std::fread(block, 1, sizeof block, opened)) > 0) bytes.append(block, count);
  std::fclose(opened);
  std::wstring text(bytes.size(), L'\0');
  text.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()),
                                                           text.data(), static_cast<int>(text.size()))));
  steps.reset(new Steps(fileName(file)));
  std::wistringstream lines(text);
  std::wstring line;
  for (int number = 1; std::getline(lines, line); ++number) {
    std::wistringstream words(line.substr(0, line.find(L'#')));
    Step step{number, {}};
    for (std::wstring word; words >> word;) step.words.push_back(word);
    if (!step.words.empty()) steps->steps_.push_back(std::move(step));
  }
  steps->timer_ = SetTimer(nullptr, 0, kTickMs, &Steps::tick);
  return steps->timer_ != 0;
}

void CALLBACK Steps::tick(HWND, UINT, UINT_PTR, DWORD) {
  if (steps) guarded(L"a step", [] { steps->next(); });
}

// A step may have a message loop of its own; then the next ones are taken in there.
void Steps::next() {
  const bool isCalm = HIWORD(GetQueueStatus(QS_INPUT | QS_POSTMESSAGE | QS_PAINT)) == 0;
  calm_ = isCalm ? calm_ + 1 : 0;
  const ULONGLONG now = GetTickCount64();
  if (now < waitUntil_ || (calm_ < calmWanted_ && now < waitUntil_ + kLongestWaitMs)) return;
  calmWanted_ = 1;
  calm_ = 0;
  if (at_ < steps_.size()) return run(steps_[at_++]);
  KillTimer(nullptr, timer_);
  timer_ = 0;
}

void Steps::fail(const Step& step, const std::wstring& why) {
  std::fwprintf(stderr, L"%ls:%d: %ls: %ls\n", file_.c_str(), step.line, step.from(0).c_str(), why.c_str());
  std::fflush(stderr);
  at_ = steps_.size();
  // What is open is left behind: a dialog's loop does not end by a message.
  TerminateProcess(GetCurrentProcess(), 1);
}

void Steps::run(const Step& step) {
  const std::wstring& what = step.words[0];
  const std::wstring rest = step.from(1);
  const auto number = [&](std::size_t index) {
    return index < step.words.size() ? static_cast<int>(std::wcstol(step.words[index].c_str(), nullptr, 10)) : 0;
  };
  if (what == L"open") {
    IDocManager* const documents = shell().docManager();
    if (!documents || !documents->openDocument(rest.c_str()))
      fail(step, documents && documents->report() ? std::wstring(reportText(*documents->report()))
                                                  : L"there is no document manager");
  } else if (what == L"action") {
    if (shell().actionManager()->processAction(rest.c_str(), nullptr) != notify::kTaken) fail(step, L"it was refused");
  } else if (what == L"panel") {
    if (!frame() || !frame()->showPanel(step.words[1].c_str(), step.words.back() == L"yes"))
      fail(step, L"there is none");
  } else if (what == L"key") {
    if (!press(rest)) fail(step, L"there is no such key");
  } else if (what == L"type") {
    for (const wchar_t letter : rest)
      send(letter, KEYEVENTF_UNICODE), send(letter, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP);
  } else if (what == L"click") {
    const POINT at = {number(1), number(2)};
    const HWND window = ChildWindowFromPointEx(frameWindow(), at, CWP_SKIPINVISIBLE);
    POINT inside = at;
    MapWindowPoints(frameWindow(), window, &inside, 1);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(inside.x, inside.y));
    PostMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(inside.x, inside.y));
  } else if (what == L"size") {
    SetWindowPos(frameWindow(), nullptr, 0, 0, number(1), number(2), SWP_NOMOVE | SWP_NOZORDER);
  } else if (what == L"wait") {
    waitUntil_ = GetTickCount64() + static_cast<ULONGLONG>(rest == L"idle" ? 0 : number(1));
    calmWanted_ = kCalmTicks;
  } else if (what == L"shot") {
    if (!frameWindow() || !saveWithAllOver(*shell().pluginManager(), frameWindow(), rest.c_str()))
      fail(step, L"the picture could not be written");
  } else if (what == L"language") {
    const auto translator = createObject<IBTranslator>(*shell().pluginManager(), L"IBTranslator.Instance");
    if (!translator || !translator->setLanguage(rest.c_str())) fail(step, L"there is none");
  } else if (what == L"log") {
    if (!switchLog(rest == L"on")) fail(step, L"the registry does not let us");
  } else if (what == L"quit") {
    shell().guiManager()->quit(0);
  } else if (what == L"expect" && step.words.size() > 2) {
    expect(step);
  } else {
    fail(step, L"there is no such step");
  }
}

void Steps::expect(const Step& step) {
  const std::wstring &what = step.words[1], &name = step.words[2];
  std::wstring wanted = step.from(2), found;
  if (what == L"title") {
    found = textOf(frameWindow());
  } else if (what == L"status") {
    found = statusText(static_cast<int>(std::wcstol(name.c_str(), nullptr, 10)));
    wanted = step.from(3);
  } else if (what == L"enabled") {
    found = name + L" " + yesOrNo(shell().actionManager()->validateAction(name.c_str(), nullptr) == notify::kTaken);
  } else if (what == L"documents") {
    found = std::to_wstring(shell().docManager() ? shell().docManager()->documentCount() : 0);
  } else if (what == L"panel") {
    found = name + L" " + yesOrNo(frame() && frame()->isPanelShown(name.c_str()));
  } else if (what == L"dialog") {
    const HWND popup = GetLastActivePopup(frameWindow());
    found = popup && popup != frameWindow() ? textOf(popup) : L"";
  } else if (what == L"text") {
    found = textOf(GetFocus());
    found.erase(std::min(found.find_first_of(L"\r\n"), found.size()));
  } else if (what == L"focus") {
    wchar_t text[64] = L"";
    GetClassNameW(GetFocus(), text, 64);
    found = text;
  } else {
    return fail(step, L"nothing of that kind can be expected");
  }
  if (found != wanted) fail(step, L"it is \"" + found + L"\"");
}

}  // namespace corvix::drive
