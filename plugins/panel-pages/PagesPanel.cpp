// Small pictures of a document's pages, one below the other; a click leads there. Pictures are drawn when they are
// seen, one at a time, into contexts in memory; when memory is short they go and are drawn again.
#include "core/baselib/memory/Hibernatable.h"
#include "descriptor.h"
#include "graphics/IAGDCCreator.h"
#include "plugins/windows/Look.h"
#include "plugins/windows/OwnWindow.h"
#include "shell/Plugin.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/PagedView.h"
#include "shell/history/StateList.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <memory>

#include <windowsx.h>

namespace corvix {

using namespace windows;

namespace {

constexpr UINT kDraw = 1, kFollow = 2, kFollowMs = 250;
constexpr int kMargin = 12, kLargest = 160;  // in 1/96 inch
constexpr std::size_t kMostKept = 64;

// What was drawn. It may be asked by a thread that must not touch contexts: then they go when they are used next.
class Pictures final : public BHibernatable {
  CORVIX_IDENTITY(Pictures, 0x21E26FB7, 0x3C569C90, 0x37DED02E, 0x6891E247, BHibernatable)

 public:
  IAGDC* find(i32 page) {
    if (mustGo_.exchange(false)) all_.clear();
    const auto found = all_.find(page);
    return found == all_.end() ? nullptr : found->second.get();
  }
  void keep(i32 page, Ref<IAGDC> picture) {
    if (all_.size() >= kMostKept) all_.clear();
    all_[page] = std::move(picture);
  }
  void clear() { all_.clear(); }
  bool hibernate(bool) override {
    if (GetCurrentThreadId() != thread_) return mustGo_ = true, false;
    const bool has = !all_.empty();
    all_.clear();
    return has;
  }

 private:
  std::map<i32, Ref<IAGDC>> all_;
  std::atomic<bool> mustGo_{false};
  const DWORD thread_ = GetCurrentThreadId();
};

class PagesPanel final : public BSmartObject, public IDocumentPanel, public IStateListener, private OwnWindow {
  CORVIX_IDENTITY(PagesPanel, 0x8839D7F2, 0xC0CFCB65, 0x6604412C, 0x77E210C9, BSmartObject, IDocumentPanel,
                  IStateListener)

 public:
  const wchar_t* title() const noexcept override { return L""; }
  const wchar_t* contextWords() const noexcept override { return L""; }
  bool attach(IFrameWindow* frame, void* parent) override {
    frame_ = frame;
    if (!open(static_cast<HWND>(parent), L"CorvixPagePictures", WS_VISIBLE | WS_VSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE,
              COLOR_APPWORKSPACE))
      return false;
    look_ = std::make_unique<Look>(window());
    SetTimer(window(), kFollow, kFollowMs, nullptr);
    return true;
  }
  void detach() override {
    setDocument(nullptr);
    close();
  }
  void update() override {
    pictures_->clear();
    layOut();
    InvalidateRect(window(), nullptr, FALSE);
  }
  void setDocument(IDocument* document) override {
    if (history_) history_->sender().removeListener(static_cast<IStateListener*>(this));
    pages_ = corvix::query<IPagedDocument>(document);
    history_ = document ? document->history() : nullptr;
    if (history_) history_->sender().addListener(static_cast<IStateListener*>(this));
    scrolled_ = 0;
    current_ = -1;
    if (look_) update();
  }
  int onStatesChanged(IStateList&) override {
    update();
    return notify::kGoOn;
  }

 private:
  IPagedView* view() const { return corvix::query<IPagedView>(frame_->activeView()); }
  i32 count() const { return pages_ ? pages_->pageCount() : 0; }
  int captionHeight() const { return look_->lineHeight(); }

  // Every page has a box of one size, as high as it is wide.
  int boxSize() const {
    const int room = static_cast<int>(clientOf(window()).right) - 2 * look_->scaled(kMargin);
    return std::clamp(room, look_->scaled(24), look_->scaled(kLargest));
  }
  int step() const { return boxSize() + captionHeight() + look_->scaled(kMargin) / 2; }

  void layOut() {
    const int page = clientOf(window()).bottom,
              whole = static_cast<int>(std::min<i64>(i64{count()} * step() + look_->scaled(kMargin), INT_MAX));
    scrolled_ = std::clamp(scrolled_, 0, std::max(whole - page, 0));
    const SCROLLINFO info = {sizeof info,
                             SIF_PAGE | SIF_POS | SIF_RANGE,
                             0,
                             std::max(whole - 1, 0),
                             static_cast<UINT>(std::max(page, 0)),
                             scrolled_,
                             0};
    SetScrollInfo(window(), SB_VERT, &info, TRUE);
  }

  void moveTo(int position) {
    scrolled_ = position;
    layOut();
    InvalidateRect(window(), nullptr, FALSE);
  }

  // Where the page lies in its box, in pixels.
  SIZE sizeOf(i32 page) const {
    double width = 1, height = 1;
    pages_->pageSize(page, &width, &height);
    const double scale = boxSize() / std::max({width, height, 1.0});
    return {std::max(static_cast<LONG>(std::lround(width * scale)), 1L),
            std::max(static_cast<LONG>(std::lround(height * scale)), 1L)};
  }

  bool draw(i32 page) {
    const SIZE size = sizeOf(page);
    const auto creator = createObject<IAGDCCreator>(*IShell::getInstance()->pluginManager(), L"AGDC.Memory");
    auto picture =
        Ref<IAGDC>::adopt(creator ? creator->create(0, capability::kGdiPlus, nullptr, size.cx, size.cy) : nullptr);
    double width = 1, height = 1;
    if (!picture || !pages_->pageSize(page, &width, &height)) return false;
    picture->clear();
    pages_->drawPage(page, *picture, Matrix::scaling(size.cx / width, size.cy / height), nullptr);
    pictures_->keep(page, std::move(picture));
    return true;
  }

  void paint() {
    PAINTSTRUCT painting;
    const HDC screen = BeginPaint(window(), &painting);
    const RECT area = clientOf(window());
    const HDC device = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, std::max(area.right, 1L), std::max(area.bottom, 1L));
    const HGDIOBJ bitmapBefore = SelectObject(device, bitmap), fontBefore = SelectObject(device, look_->font());
    FillRect(device, &area, GetSysColorBrush(COLOR_APPWORKSPACE));
    SetBkMode(device, TRANSPARENT);
    isComplete_ = true;
    const int margin = look_->scaled(kMargin);
    for (i32 page = scrolled_ / step(); page < count() && page * step() - scrolled_ < area.bottom; ++page)
      paintPage(device, page, margin + page * step() - scrolled_, area.right);
    BitBlt(screen, 0, 0, area.right, area.bottom, device, 0, 0, SRCCOPY);
    SelectObject(device, fontBefore);
    SelectObject(device, bitmapBefore);
    DeleteObject(bitmap);
    DeleteDC(device);
    EndPaint(window(), &painting);
    if (!isComplete_) SetTimer(window(), kDraw, USER_TIMER_MINIMUM, nullptr);
  }

  void paintPage(HDC device, i32 page, int top, int width) {
    const SIZE size = sizeOf(page);
    const int box = boxSize(), left = (width - static_cast<int>(size.cx)) / 2,
              y = top + (box - static_cast<int>(size.cy)) / 2;
    RECT frame = {left, y, left + size.cx, y + size.cy};
    if (page == current_) {
      RECT around = frame;
      InflateRect(&around, look_->scaled(4), look_->scaled(4));
      FillRect(device, &around, GetSysColorBrush(COLOR_HIGHLIGHT));
    }
    IAGDC* const picture = pictures_->find(page);
    if (!picture || !picture->copyTo(device, left, y)) {
      FillRect(device, &frame, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
      isComplete_ = false;
    }
    RECT caption = {0, top + box, width, top + box + captionHeight()};
    SetTextColor(device, GetSysColor(COLOR_WINDOW));
    DrawTextW(device, std::to_wstring(page + 1).c_str(), -1, &caption, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
  }

  // The first picture that is seen and not there yet.
  void drawNext() {
    KillTimer(window(), kDraw);
    const int height = clientOf(window()).bottom;
    for (i32 page = scrolled_ / step(); page < count() && page * step() - scrolled_ < height; ++page) {
      if (pictures_->find(page)) continue;
      if (draw(page)) InvalidateRect(window(), nullptr, FALSE);
      return;
    }
  }

  void follow() {
    const IPagedView* const shown = view();
    const i32 now = shown ? shown->currentPage() : -1;
    if (now == current_) return;
    current_ = now;
    const int top = now * step(), height = clientOf(window()).bottom;
    if (now >= 0 && (top < scrolled_ || top + step() > scrolled_ + height)) moveTo(top);
    InvalidateRect(window(), nullptr, FALSE);
  }

  void goTo(i32 page) {
    if (IPagedView* const shown = view(); shown && page >= 0 && page < count()) shown->goToPage(page);
    follow();
  }

  bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) override {
    if (!look_) return false;
    switch (message) {
      case WM_SIZE:
        update();
        return true;
      case WM_PAINT:
        paint();
        return true;
      case WM_ERASEBKGND:
        return true;
      case WM_TIMER:
        wparam == kDraw ? drawNext() : follow();
        return true;
      case WM_VSCROLL: {
        SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
        GetScrollInfo(window(), SB_VERT, &info);
        const int page = static_cast<int>(info.nPage);
        const int by[] = {-step() / 2, step() / 2, -page, page};  // SB_LINEUP and those behind it
        const WORD request = LOWORD(wparam);
        moveTo(request <= SB_PAGEDOWN ? scrolled_ + by[request] : request == SB_ENDSCROLL ? scrolled_ : info.nTrackPos);
        return true;
      }
      case WM_MOUSEWHEEL:
        moveTo(scrolled_ - MulDiv(GET_WHEEL_DELTA_WPARAM(wparam), step() / 2, WHEEL_DELTA));
        return true;
      case WM_LBUTTONDOWN:
        SetFocus(window());
        goTo((GET_Y_LPARAM(lparam) + scrolled_) / step());
        return true;
      case WM_GETDLGCODE:
        result = DLGC_WANTARROWS;
        return true;
      case WM_KEYDOWN:
        if (wparam == VK_DOWN || wparam == VK_NEXT) return goTo(current_ + 1), true;
        if (wparam == VK_UP || wparam == VK_PRIOR) return goTo(current_ - 1), true;
        if (wparam == VK_HOME) return goTo(0), true;
        if (wparam == VK_END) return goTo(count() - 1), true;
        return false;
      case WM_SETTINGCHANGE:
      case WM_DPICHANGED_AFTERPARENT:
        look_ = std::make_unique<Look>(window());
        update();
        return true;
      default:
        return false;
    }
  }

  IFrameWindow* frame_ = nullptr;
  IPagedDocument* pages_ = nullptr;
  IStateList* history_ = nullptr;
  std::unique_ptr<Look> look_;
  const Ref<Pictures> pictures_ = make<Pictures>();
  int scrolled_ = 0;
  i32 current_ = -1;
  bool isComplete_ = true;
};

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN({descriptor::Panel_Pages::name, corvix::create<corvix::PagesPanel>})
