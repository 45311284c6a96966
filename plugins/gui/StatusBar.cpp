#include "plugins/gui/StatusBar.h"

#include "plugins/windows/Translated.h"
#include "plugins/windows/Windows.h"
#include "shell/Shell.h"
#include "tools/xmlbinc/Harmless.h"

#include <algorithm>

#include <commctrl.h>

namespace corvix::gui {

using namespace windows;

namespace {

constexpr ULONGLONG kPatienceMs = 300;
constexpr i32 kMostPanes = 6;
constexpr int kMostPaints = 20;
constexpr int kBarWidth = 160, kStopWidth = 64;  // in 1/96 inch
constexpr std::size_t kLongestText = 300;

}  // namespace

bool StatusBar::make(HWND parent) {
  bar_ = makeChild(parent, STATUSCLASSNAMEW, L"",
                   WS_VISIBLE | WS_CLIPSIBLINGS | CCS_NOPARENTALIGN | CCS_NORESIZE | SBARS_SIZEGRIP);
  progress_ = makeChild(parent, PROGRESS_CLASSW, L"", WS_CLIPSIBLINGS | PBS_SMOOTH);
  stop_ = makeChild(parent, L"BUTTON", L"Stop", WS_CLIPSIBLINGS | WS_TABSTOP | BS_PUSHBUTTON, kStop);
  return bar_ && progress_ && stop_;
}

void StatusBar::adopt(const Look& look) {
  look_ = &look;
  setFont(bar_, look.font());
  setFont(stop_, look.font());
}

int StatusBar::height() const { return look_->lineHeight() + look_->scaled(2); }

void StatusBar::place(const RECT& area) {
  move(bar_, area);
  arrange();
}

// The texts from left to right; the first has what the others leave, progress stands at its end.
void StatusBar::arrange() {
  const RECT area = clientOf(bar_);
  int right = area.right - (texts_.size() > 1 ? GetSystemMetrics(SM_CXVSCROLL) : 0);
  std::vector<int> ends(texts_.size());
  const HDC device = GetDC(bar_);
  const HGDIOBJ before = SelectObject(device, look_->font());
  for (std::size_t i = texts_.size(); i-- > 0;) {
    ends[i] = i + 1 == texts_.size() ? -1 : right;
    SIZE size = {};
    GetTextExtentPoint32W(device, texts_[i].c_str(), static_cast<int>(texts_[i].size()), &size);
    right -= static_cast<int>(size.cx) + look_->scaled(16);
  }
  SelectObject(device, before);
  ReleaseDC(bar_, device);
  SendMessageW(bar_, SB_SETPARTS, ends.size(), reinterpret_cast<LPARAM>(ends.data()));
  for (std::size_t i = 0; i < texts_.size(); ++i)
    SendMessageW(bar_, SB_SETTEXTW, i, reinterpret_cast<LPARAM>(texts_[i].c_str()));
  RECT first = {};
  SendMessageW(bar_, SB_GETRECT, 0, reinterpret_cast<LPARAM>(&first));
  MapWindowPoints(bar_, GetParent(bar_), reinterpret_cast<POINT*>(&first), 2);
  const int gap = look_->scaled(3), stopWidth = look_->scaled(kStopWidth), barWidth = look_->scaled(kBarWidth);
  const int height = heightOf(first) - 2;
  SetWindowPos(stop_, HWND_TOP, first.right - stopWidth - gap, first.top + 1, stopWidth, height, SWP_NOACTIVATE);
  SetWindowPos(progress_, HWND_TOP, first.right - stopWidth - barWidth - 2 * gap, first.top + gap, barWidth,
               height - 2 * gap, SWP_NOACTIVATE);
}

void StatusBar::setText(i32 pane, const wchar_t* text) {
  if (pane < 0 || pane >= kMostPanes) return;
  const auto index = static_cast<std::size_t>(pane);
  std::wstring shown = xmlbinc::harmless(std::wstring(text ? text : L""), kLongestText);
  if (index < texts_.size() && texts_[index] == shown) return;
  if (index >= texts_.size() && shown.empty()) return;
  if (index >= texts_.size()) texts_.resize(index + 1);
  texts_[index] = std::move(shown);
  while (texts_.size() > 1 && texts_.back().empty()) texts_.pop_back();
  if (pane == 0) {
    SendMessageW(bar_, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(texts_[0].c_str()));
  } else {
    arrange();
  }
}

void StatusBar::start(const Progress& progress) {
  Variant isWanted;
  const bool has = IShell::getInstance()->settings()->getValue(L"Interface", L"ProgressIndicator", isWanted);
  if ((progress.flags & kProgressIsHidden) || (has && !isWanted.truth())) return;
  running_[progress.id] = {progress, GetTickCount64()};
}

int StatusBar::change(const Progress& progress) {
  const auto found = running_.find(progress.id);
  if (found == running_.end()) return notify::kGoOn;
  found->second.now = progress;
  if (GetTickCount64() - found->second.startMs >= kPatienceMs) {
    show(&found->second);
    takeInput();
  }
  const auto still = running_.find(progress.id);
  return still != running_.end() && still->second.isStopped ? notify::kStop : notify::kGoOn;
}

void StatusBar::stop(const Progress& progress) {
  running_.erase(progress.id);
  if (isShown_ && shownId_ == progress.id) show(shown());
}

// What began last, of those that take their time.
StatusBar::Running* StatusBar::shown() {
  Running* last = nullptr;
  for (auto& [id, running] : running_) {
    if (GetTickCount64() - running.startMs >= kPatienceMs) last = &running;
  }
  return last;
}

void StatusBar::show(Running* running) {
  isShown_ = running != nullptr;
  if (running) {
    const Progress& now = running->now;
    shownId_ = now.id;
    const bool hasEnd = now.maximum > now.minimum;
    const LONG_PTR style = GetWindowLongPtrW(progress_, GWL_STYLE);
    const LONG_PTR wanted = hasEnd ? style & ~LONG_PTR{PBS_MARQUEE} : style | PBS_MARQUEE;
    if (wanted != style) SetWindowLongPtrW(progress_, GWL_STYLE, wanted);
    if (hasEnd) {
      SendMessageW(progress_, PBM_SETRANGE32, static_cast<WPARAM>(now.minimum), now.maximum);
      SendMessageW(progress_, PBM_SETPOS, static_cast<WPARAM>(now.position), 0);
    } else {
      SendMessageW(progress_, PBM_SETMARQUEE, TRUE, 50);
    }
    SetWindowTextW(stop_, translated(L"Stop"));
    EnableWindow(stop_, !running->isStopped);
  }
  const bool canStop = running && (running->now.flags & kProgressCanStop);
  ShowWindow(progress_, running ? SW_SHOWNA : SW_HIDE);
  ShowWindow(stop_, canStop ? SW_SHOWNA : SW_HIDE);
}

void StatusBar::stopPressed() {
  const auto found = running_.find(shownId_);
  if (!isShown_ || found == running_.end() || !(found->second.now.flags & kProgressCanStop)) return;
  found->second.isStopped = true;
  EnableWindow(stop_, FALSE);
}

// While somebody works on this thread: paints, and takes what is for the button; Escape is for it, too. All else waits.
void StatusBar::takeInput() {
  if (isTaking_) return;
  isTaking_ = true;
  MSG message;
  // A window that never has done with painting must not hold the work up.
  for (int i = 0; i < kMostPaints && PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE | PM_QS_PAINT); ++i)
    DispatchMessageW(&message);
  while (PeekMessageW(&message, stop_, WM_MOUSEFIRST, WM_MOUSELAST, PM_REMOVE)) DispatchMessageW(&message);
  while (PeekMessageW(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_NOREMOVE) && message.wParam == VK_ESCAPE) {
    PeekMessageW(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE);
    stopPressed();
  }
  isTaking_ = false;
}

}  // namespace corvix::gui
