// The test page in a real window: it is drawn once into memory and shown from there, so that scrolling and resizing
// cost a copy. Dragging stretches a rubber band, which inverts what is under it and leaves it as it was.
#include "shell/gui/Window.h"
#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Page.h"

#include <algorithm>
#include <vector>

#include <windows.h>
#include <windowsx.h>

namespace host {

using namespace corvix;

namespace {

constexpr int kWidth = kPageCount * kPageWidth;
using Pages = std::vector<Ref<IAGDC>>;
constexpr int kLine = 32;  // pixels a step of the scroll bars

class PageWindow {
 public:
  PageWindow(Pages pages, Ref<IAGDCCreator> screens) : pages_(std::move(pages)), screens_(std::move(screens)) {}

  bool open() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &PageWindow::procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    windowClass.lpszClassName = L"CorvixPage";
    RegisterClassW(&windowClass);
    RECT size = {0, 0, kWidth, kPageHeight};
    AdjustWindowRect(&size, WS_OVERLAPPEDWINDOW, FALSE);
    window_ =
        CreateWindowExW(0, L"CorvixPage", L"Corvix: one page on every kind of context",
                        WS_OVERLAPPEDWINDOW | WS_HSCROLL | WS_VSCROLL, CW_USEDEFAULT, CW_USEDEFAULT,
                        size.right - size.left, size.bottom - size.top, nullptr, nullptr, windowClass.hInstance, this);
    if (window_) ShowWindow(window_, SW_SHOWNORMAL);
    return window_ != nullptr;
  }

  HWND handle() const noexcept { return window_; }

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
      const auto* const create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
      auto* const self = static_cast<PageWindow*>(create->lpCreateParams);
      self->window_ = window;
      SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* const self = reinterpret_cast<PageWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    try {  // an exception must not leave a window procedure
      if (self && self->handle(message, wparam, lparam)) return 0;
    } catch (const std::exception&) {
      PostQuitMessage(1);
    }
    return DefWindowProcW(window, message, wparam, lparam);
  }

  bool handle(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case WM_PAINT:
        paint();
        return true;
      case WM_ERASEBKGND:
        return true;  // every pixel is painted
      case WM_SIZE:
        moveTo(SB_HORZ, scrolled_[SB_HORZ]);
        moveTo(SB_VERT, scrolled_[SB_VERT]);
        return true;
      case WM_HSCROLL:
        scroll(SB_HORZ, LOWORD(wparam));
        return true;
      case WM_VSCROLL:
        scroll(SB_VERT, LOWORD(wparam));
        return true;
      case WM_MOUSEWHEEL:
        moveTo(SB_VERT, scrolled_[SB_VERT] - GET_WHEEL_DELTA_WPARAM(wparam) * kLine / WHEEL_DELTA);
        return true;
      case WM_KEYDOWN:
        if (wparam != VK_F12) return false;
        if (const auto inspector = createObject<IWindow>(*IShell::getInstance()->pluginManager(), L"Window.Inspector"))
          inspector->show(true);
        return true;
      case WM_LBUTTONDOWN:
        SetCapture(window_);
        band_ = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam), GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
        return true;
      case WM_MOUSEMOVE:
        if (GetCapture() != window_) return false;
        invertBand();
        band_.right = GET_X_LPARAM(lparam);
        band_.bottom = GET_Y_LPARAM(lparam);
        invertBand();
        return true;
      case WM_LBUTTONUP:
      case WM_CAPTURECHANGED:
        invertBand();
        band_ = {};
        if (message == WM_LBUTTONUP) ReleaseCapture();
        return true;
      case WM_DESTROY:
        PostQuitMessage(0);
        return true;
      default:
        return false;
    }
  }

  void paint() {
    PAINTSTRUCT painting;
    const HDC device = BeginPaint(window_, &painting);
    FillRect(device, &painting.rcPaint, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    int x = -scrolled_[SB_HORZ];
    for (const Ref<IAGDC>& page : pages_) {
      page->copyTo(device, x, -scrolled_[SB_VERT]);
      x += kPageWidth;
    }
    EndPaint(window_, &painting);
    invertBand();
  }

  // Twice at the same place is nothing.
  void invertBand() {
    if (band_.left == band_.right || band_.top == band_.bottom) return;
    RECT client;
    GetClientRect(window_, &client);
    const HDC device = GetDC(window_);
    if (const auto context = Ref<IAGDC>::adopt(screens_->create(0, 0, device, client.right, client.bottom))) {
      context->xorRect({std::min(band_.left, band_.right), std::min(band_.top, band_.bottom),
                        std::max(band_.left, band_.right), std::max(band_.top, band_.bottom)});
    }
    ReleaseDC(window_, device);
  }

  void scroll(int bar, int request) {
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    GetScrollInfo(window_, bar, &info);
    const int page = static_cast<int>(info.nPage);
    switch (request) {
      case SB_LINEUP:
        return moveTo(bar, info.nPos - kLine);
      case SB_LINEDOWN:
        return moveTo(bar, info.nPos + kLine);
      case SB_PAGEUP:
        return moveTo(bar, info.nPos - page);
      case SB_PAGEDOWN:
        return moveTo(bar, info.nPos + page);
      case SB_THUMBTRACK:
      case SB_THUMBPOSITION:
        return moveTo(bar, info.nTrackPos);
      default:
        return;
    }
  }

  void moveTo(int bar, int position) {
    RECT client;
    GetClientRect(window_, &client);
    const int whole = bar == SB_HORZ ? kWidth : kPageHeight;
    const int page = bar == SB_HORZ ? client.right : client.bottom;
    scrolled_[bar] = std::clamp(position, 0, std::max(0, whole - page));
    const SCROLLINFO info = {sizeof info, SIF_ALL, 0, whole - 1, static_cast<UINT>(page), scrolled_[bar], 0};
    SetScrollInfo(window_, bar, &info, TRUE);
    InvalidateRect(window_, nullptr, FALSE);
  }

  Pages pages_;
  Ref<IAGDCCreator> screens_;
  HWND window_ = nullptr;
  int scrolled_[2] = {0, 0};  // by SB_HORZ and SB_VERT
  PixelBox band_ = {};
};

int showWindow(IPluginManager& manager, double closeAfterSeconds) {
  PageResult result;
  Pages pages;
  for (const PageKind& kind : kPageKinds) {
    if (Ref<IAGDC> page = makePage(manager, kind, result)) pages.push_back(std::move(page));
  }
  auto screens = createObject<IAGDCCreator>(manager, L"AGDC.Screen");
  if (pages.empty() || !screens) {
    std::fprintf(stderr, "corvix-host: no drawing context could be made.\n");
    return 1;
  }
  PageWindow window(std::move(pages), std::move(screens));
  if (!window.open()) {
    std::fprintf(stderr, "corvix-host: no window could be made. Is there a display? (CORVIX_DISPLAY=1)\n");
    return 1;
  }
  if (closeAfterSeconds > 0) SetTimer(window.handle(), 1, static_cast<UINT>(closeAfterSeconds * 1000), nullptr);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (message.message == WM_TIMER && message.hwnd == window.handle()) DestroyWindow(window.handle());
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return static_cast<int>(message.wParam);
}

}  // namespace

const Command windowCommand("window", "Show the test page in a window; drag for a rubber band, F12 for the inspector",
                            {{"--close-after", "Close it by itself after that many seconds", Argument::Optional}},
                            [](Host& host, const Texts& given) {
                              const double seconds = std::strtod(given[0].c_str(), nullptr);
                              if (given[0].empty() || seconds > 0) return showWindow(host.manager(), seconds);
                              std::fprintf(stderr, "corvix-host: --close-after takes a number of seconds above 0.\n");
                              return 1;
                            });

}  // namespace host
