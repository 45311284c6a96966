// Pages, one below the other, drawn through a drawing context in memory and shown from there.
#include "plugins/views/Views.h"

#include "graphics/IAGDCCreator.h"
#include "plugins/windows/Look.h"
#include "plugins/windows/OwnWindow.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/gui/DocumentView.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"
#include "shell/gui/PagedView.h"
#include "shell/history/StateList.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>
#include <vector>

#include <windowsx.h>

namespace corvix::views {

using namespace windows;

namespace {

constexpr double kSmallest = 0.05, kLargest = 16, kStep = 1.25, kPointsPerInch = 72;
constexpr double kLongest = 1e9;      // of all pages, in pixels: what scroll bars can count
constexpr int kGap = 10, kLine = 48;  // in 1/96 inch

IShell& shell() { return *IShell::getInstance(); }

// Somebody waits: the rest is drawn when he has had his turn.
class InputWatch final : public IDrawWatch {
  CORVIX_IDENTITY(InputWatch, 0x30D5B426, 0xDE4EF89B, 0x8240A383, 0x150EBC9F, IDrawWatch)

 public:
  bool shouldStop() override {
    isStopped = isStopped || HIWORD(GetQueueStatus(QS_KEY | QS_MOUSEBUTTON)) != 0;
    return isStopped;
  }
  bool isStopped = false;
};

class PagedView final : public BSmartObject,
                        public IDocumentView,
                        public IPagedView,
                        public IActionTarget,
                        public IStateListener,
                        private OwnWindow {
  CORVIX_IDENTITY(PagedView, 0xAD899168, 0x27CB58D9, 0xDE76E28A, 0x1D8124ED, BSmartObject, IDocumentView, IPagedView,
                  IActionTarget, IStateListener)

 public:
  IDocument* document() const noexcept override { return document_; }
  bool setDocument(IDocument* document) override {
    document_ = document;
    pages_ = corvix::query<IPagedDocument>(document);
    return pages_ != nullptr;
  }

  bool attach(IFrameWindow*, void* parent) override {
    if (!open(static_cast<HWND>(parent), L"CorvixPages", WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, WS_EX_CLIENTEDGE,
              COLOR_APPWORKSPACE))
      return false;
    if (IStateList* const history = document_->history())
      history->sender().addListener(static_cast<IStateListener*>(this));
    look_ = std::make_unique<Look>(window());
    layOut();
    return true;
  }
  void detach() override {
    if (IStateList* const history = document_->history())
      history->sender().removeListener(static_cast<IStateListener*>(this));
    close();
    canvas_.reset();
    shell().changeStatusText(1, L"");
    shell().changeStatusText(2, L"");
  }
  void update() override {
    layOut();
    redraw();
  }
  const wchar_t* contextWords() const noexcept override {
    return pages_->pageCount() > 1 ? L"view.paged view.pages" : L"view.paged";
  }

  i32 currentPage() const noexcept override { return current_; }
  bool goToPage(i32 index) override {
    if (index < 0 || static_cast<std::size_t>(index) >= placed_.size()) return false;
    moveTo(SB_VERT, static_cast<int>(placed_[static_cast<std::size_t>(index)].top) - gap());
    return true;
  }
  double zoom() const noexcept override { return scale() * kPointsPerInch / look_->scaled(96); }
  void setZoom(double zoom) override {
    zoom_ = zoom > 0 ? std::clamp(zoom, kSmallest, kLargest) : 0;
    const RECT client = clientOf(window());
    zoomAround({client.right / 2, 0});
  }

  int onValidateAction(IAction& action, IActionSender*) override {
    const Row* const row = rowOf(action.name());
    return !row ? notify::kGoOn : row->canBe(*this) ? notify::kTaken : notify::kStop;
  }
  int onProcessAction(IAction& action, IActionSender*) override {
    const Row* const row = rowOf(action.name());
    if (!row) return notify::kGoOn;
    row->act(*this);
    return notify::kTaken;
  }

 private:
  struct Row {
    std::wstring_view name;
    bool (*canBe)(PagedView&);
    void (*act)(PagedView&);
  };
  static const Row* rowOf(const wchar_t* name);

  int onStatesChanged(IStateList&) override {
    update();
    return notify::kGoOn;
  }

  // Pixels a point.
  double scale() const noexcept { return (zoom_ > 0 ? zoom_ : fitting_) * look_->scaled(96) / kPointsPerInch; }
  int gap() const noexcept { return look_->scaled(kGap); }

  // Where every page lies, in pixels from the first one's corner.
  void layOut() {
    const RECT client = clientOf(window());
    double widest = 1;
    std::vector<std::pair<double, double>> sizes(static_cast<std::size_t>(std::max(pages_->pageCount(), 0)));
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      pages_->pageSize(static_cast<i32>(i), &sizes[i].first, &sizes[i].second);
      widest = std::max(widest, sizes[i].first);
    }
    const double room = std::max(static_cast<double>(client.right - 2 * gap()), 16.0);
    fitting_ = std::clamp(room * kPointsPerInch / look_->scaled(96) / widest, kSmallest, 1.0);
    placed_.clear();
    double top = gap(), width = 0;
    for (const auto& [w, h] : sizes) {
      const double pageWidth = std::max(std::round(w * scale()), 1.0),
                   pageHeight = std::max(std::round(h * scale()), 1.0);
      placed_.push_back({0, top, pageWidth, std::min(top + pageHeight, kLongest)});
      top = std::min(top + pageHeight + gap(), kLongest);
      width = std::max(width, pageWidth + 2 * gap());
    }
    const double middle = std::max(width, static_cast<double>(client.right)) / 2;
    for (Box& page : placed_) {
      const double pageWidth = page.right;
      page.left = std::floor(middle - pageWidth / 2);
      page.right = page.left + pageWidth;
    }
    setBar(SB_HORZ, static_cast<int>(std::min(width, kLongest)), client.right);
    setBar(SB_VERT, static_cast<int>(top), client.bottom);
    follow();
  }

  void setBar(int bar, int whole, int page) {
    scrolled_[bar] = std::clamp(scrolled_[bar], 0, std::max(whole - page, 0));
    const SCROLLINFO info = {sizeof info,
                             SIF_PAGE | SIF_POS | SIF_RANGE,
                             0,
                             std::max(whole - 1, 0),
                             static_cast<UINT>(std::max(page, 0)),
                             scrolled_[bar],
                             0};
    SetScrollInfo(window(), bar, &info, TRUE);
  }

  // What is under the point stays there.
  void zoomAround(POINT at) {
    const double before = lastScale_ > 0 ? lastScale_ : scale();
    const double x = (scrolled_[SB_HORZ] + at.x) / before, y = (scrolled_[SB_VERT] + at.y) / before;
    layOut();
    moveTo(SB_HORZ, static_cast<int>(x * scale()) - at.x);
    moveTo(SB_VERT, static_cast<int>(y * scale()) - at.y);
    redraw();
    follow();
  }
  void zoomBy(double factor, POINT at) {
    zoom_ = std::clamp(zoom() * factor, kSmallest, kLargest);
    zoomAround(at);
  }

  void redraw() {
    isDrawn_ = false;
    InvalidateRect(window(), nullptr, FALSE);
  }

  // Where the user is.
  void follow() {
    lastScale_ = scale();
    const RECT client = clientOf(window());
    double most = -1;
    for (std::size_t i = 0; i < placed_.size(); ++i) {
      const double seen = std::min(placed_[i].bottom, static_cast<double>(scrolled_[SB_VERT] + client.bottom)) -
                          std::max(placed_[i].top, static_cast<double>(scrolled_[SB_VERT]));
      if (seen > most) most = seen, current_ = static_cast<i32>(i);
    }
  }

  // While it is in front; what stands there may be another view's.
  void tellPlace() {
    const std::wstring page = std::to_wstring(current_ + 1), last = std::to_wstring(placed_.size());
    shell().changeStatusText(1, sentence(L"Page %1 of %2", {page, last}).c_str());
    shell().changeStatusText(2, sentence(L"%1 %", {std::to_wstring(std::lround(zoom() * 100))}).c_str());
  }

  void draw() {
    const RECT client = clientOf(window());
    if (!canvas_ || canvas_->width() != client.right || canvas_->height() != client.bottom) {
      const auto creator = createObject<IAGDCCreator>(*shell().pluginManager(), L"AGDC.Memory");
      canvas_ = Ref<IAGDC>::adopt(
          creator ? creator->create(0, capability::kGdiPlus, nullptr, client.right, client.bottom) : nullptr);
    }
    if (!canvas_) return;
    const COLORREF back = GetSysColor(COLOR_APPWORKSPACE);
    canvas_->resetClip();
    canvas_->setFillColor(rgb(GetRValue(back), GetGValue(back), GetBValue(back)));
    canvas_->fillRect(0, 0, client.right, client.bottom);
    InputWatch watch;
    for (std::size_t i = 0; i < placed_.size(); ++i) {
      Box page = placed_[i];
      page.left -= scrolled_[SB_HORZ], page.right -= scrolled_[SB_HORZ];
      page.top -= scrolled_[SB_VERT], page.bottom -= scrolled_[SB_VERT];
      if (page.bottom > 0 && page.top < client.bottom) drawPage(static_cast<i32>(i), page, watch);
    }
    isDrawn_ = !watch.isStopped;
  }

  void drawPage(i32 index, const Box& page, InputWatch& watch) {
    IAGDC& to = *canvas_;
    const double width = page.right - page.left, height = page.bottom - page.top, shadow = look_->scaled(2);
    to.setFillColor(rgb(90, 90, 90));
    to.fillRect(page.left + shadow, page.top + shadow, width, height);
    to.setFillColor(kWhite);
    to.fillRect(page.left, page.top, width, height);
    to.saveClip();
    to.clipRect(page.left, page.top, width, height);
    double points = 0, ignored = 0;
    pages_->pageSize(index, &points, &ignored);
    const double scaled = points > 0 ? width / points : scale();
    pages_->drawPage(index, to, Matrix::scaling(scaled, scaled).then(Matrix::translation(page.left, page.top)), &watch);
    to.restoreClip();
  }

  void paint() {
    PAINTSTRUCT painting;
    const HDC device = BeginPaint(window(), &painting);
    if (!isDrawn_) draw();
    if (!canvas_ || !canvas_->copyTo(device, 0, 0))
      FillRect(device, &painting.rcPaint, GetSysColorBrush(COLOR_APPWORKSPACE));
    tellPlace();
    EndPaint(window(), &painting);
    if (!isDrawn_ && canvas_) SetTimer(window(), 1, 30, nullptr);  // the rest when the input is done
  }

  void scroll(int bar, int request) {
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    GetScrollInfo(window(), bar, &info);
    const int page = static_cast<int>(info.nPage), line = look_->scaled(kLine);
    const struct {
      int request, to;
    } rows[] = {{SB_LINEUP, info.nPos - line},
                {SB_LINEDOWN, info.nPos + line},
                {SB_PAGEUP, info.nPos - page + line},
                {SB_PAGEDOWN, info.nPos + page - line},
                {SB_THUMBTRACK, info.nTrackPos},
                {SB_THUMBPOSITION, info.nTrackPos},
                {SB_TOP, 0},
                {SB_BOTTOM, info.nMax}};
    for (const auto& row : rows) {
      if (row.request == request) return moveTo(bar, row.to);
    }
  }

  void moveTo(int bar, int position) {
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    GetScrollInfo(window(), bar, &info);
    position = std::clamp(position, 0, std::max(info.nMax + 1 - static_cast<int>(info.nPage), 0));
    if (position == scrolled_[bar]) return;
    scrolled_[bar] = position;
    SetScrollPos(window(), bar, position, TRUE);
    redraw();
    follow();
  }

  bool key(WPARAM code) {
    constexpr struct {
      WPARAM key;
      int bar, request;
    } kKeys[] = {{VK_UP, SB_VERT, SB_LINEUP},     {VK_DOWN, SB_VERT, SB_LINEDOWN},  {VK_PRIOR, SB_VERT, SB_PAGEUP},
                 {VK_NEXT, SB_VERT, SB_PAGEDOWN}, {VK_SPACE, SB_VERT, SB_PAGEDOWN}, {VK_HOME, SB_VERT, SB_TOP},
                 {VK_END, SB_VERT, SB_BOTTOM},    {VK_LEFT, SB_HORZ, SB_LINEUP},    {VK_RIGHT, SB_HORZ, SB_LINEDOWN}};
    for (const auto& row : kKeys) {
      if (row.key == code) return scroll(row.bar, row.request), true;
    }
    return false;
  }

  bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT&) override {
    const POINT at = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    if (!look_) return false;
    switch (message) {
      case WM_SIZE:
        layOut();
        redraw();
        return true;
      case WM_TIMER:
        KillTimer(window(), 1);
        InvalidateRect(window(), nullptr, FALSE);
        return true;
      case WM_PAINT:
        paint();
        return true;
      case WM_ERASEBKGND:
        return true;  // every pixel is painted
      case WM_HSCROLL:
      case WM_VSCROLL:
        scroll(message == WM_HSCROLL ? SB_HORZ : SB_VERT, LOWORD(wparam));
        return true;
      case WM_MOUSEWHEEL:
        wheel(GET_WHEEL_DELTA_WPARAM(wparam), (wparam & MK_CONTROL) != 0, at);
        return true;
      case WM_KEYDOWN:
        return GetKeyState(VK_CONTROL) >= 0 && key(wparam);
      case WM_LBUTTONDOWN:
        SetFocus(window());
        SetCapture(window());
        grabbed_ = {at.x + scrolled_[SB_HORZ], at.y + scrolled_[SB_VERT]};
        return true;
      case WM_MOUSEMOVE:
        if (GetCapture() != window()) return false;
        moveTo(SB_HORZ, grabbed_.x - at.x);
        moveTo(SB_VERT, grabbed_.y - at.y);
        return true;
      case WM_LBUTTONUP:
        if (GetCapture() == window()) ReleaseCapture();
        return true;
      case WM_SETTINGCHANGE:
      case WM_DPICHANGED_AFTERPARENT:
        look_ = std::make_unique<Look>(window());
        update();
        return true;
      default:
        return false;
    }
  }

  void wheel(int delta, bool withControl, POINT onScreen) {
    if (!withControl) return moveTo(SB_VERT, scrolled_[SB_VERT] - MulDiv(delta, look_->scaled(kLine), WHEEL_DELTA));
    ScreenToClient(window(), &onScreen);
    zoomBy(std::pow(kStep, static_cast<double>(delta) / WHEEL_DELTA), onScreen);
    if (IGUIManager* const manager = shell().guiManager()) manager->refreshActions();
  }

  IDocument* document_ = nullptr;
  IPagedDocument* pages_ = nullptr;
  std::unique_ptr<Look> look_;
  Ref<IAGDC> canvas_;
  std::vector<Box> placed_;
  double zoom_ = 0, fitting_ = 1, lastScale_ = 0;
  int scrolled_[2] = {0, 0};  // by SB_HORZ and SB_VERT
  i32 current_ = 0;
  POINT grabbed_ = {};
  bool isDrawn_ = false;
};

const PagedView::Row* PagedView::rowOf(const wchar_t* name) {
  static constexpr Row kRows[] = {
      {L"Actions.View.ZoomIn", [](PagedView& view) { return view.zoom() < kLargest; },
       [](PagedView& view) {
         view.zoomBy(kStep, {clientOf(view.window()).right / 2, 0});
       }},
      {L"Actions.View.ZoomOut", [](PagedView& view) { return view.zoom() > kSmallest; },
       [](PagedView& view) {
         view.zoomBy(1 / kStep, {clientOf(view.window()).right / 2, 0});
       }},
      {L"Actions.View.ActualSize", [](PagedView& view) { return view.zoom_ != 1; },
       [](PagedView& view) { view.setZoom(1); }},
      {L"Actions.View.FitWidth", [](PagedView& view) { return view.zoom_ != 0; },
       [](PagedView& view) { view.setZoom(0); }},
      {L"Actions.View.NextPage",
       [](PagedView& view) { return view.current_ + 1 < static_cast<i32>(view.placed_.size()); },
       [](PagedView& view) { view.goToPage(view.current_ + 1); }},
      {L"Actions.View.PreviousPage", [](PagedView& view) { return view.current_ > 0; },
       [](PagedView& view) { view.goToPage(view.current_ - 1); }},
  };
  const auto found = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& row) { return row.name == name; });
  return found == std::end(kRows) ? nullptr : found;
}

}  // namespace

IBSmartObject* makePagedView() { return new PagedView; }

}  // namespace corvix::views
