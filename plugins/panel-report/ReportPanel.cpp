// What the program had to say of its windows and documents, line by line; the last one can be seen.
#include "descriptor.h"
#include "plugins/windows/List.h"
#include "plugins/windows/OwnWindow.h"
#include "shell/Plugin.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/GUIManager.h"
#include "shell/services/Report.h"

#include <memory>

#include <commctrl.h>

namespace corvix {

using namespace windows;

namespace {

constexpr UINT kRefreshMs = 500;

class ReportPanel final : public BSmartObject, public IDocumentPanel, private OwnWindow {
  CORVIX_IDENTITY(ReportPanel, 0x6CCF00B9, 0x8D207FE8, 0x7FDD3282, 0x37F11B32, BSmartObject, IDocumentPanel)

 public:
  const wchar_t* title() const noexcept override { return L""; }
  void setDocument(IDocument*) override {}  // it is about all
  const wchar_t* contextWords() const noexcept override { return L""; }

  bool attach(IFrameWindow*, void* parent) override {
    if (!open(static_cast<HWND>(parent), L"CorvixReport", WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT))
      return false;
    list_.make(window(), 1, {{L"Report", 600}});
    adoptLook();
    update();
    SetTimer(window(), 1, kRefreshMs, nullptr);
    return true;
  }
  void detach() override { close(); }

  void update() override {
    IGUIManager* const manager = IShell::getInstance()->guiManager();
    IBReport* const report = manager ? manager->report() : nullptr;
    std::vector<windows::Row> rows;
    for (i32 i = 0; report && i < report->lineCount(); ++i) rows.push_back({report->lineAt(i)});
    if (rows.size() == shown_) return;
    const bool isAtEnd = list_.isAtEnd();
    shown_ = rows.size();
    list_.show(rows);
    fit();
    if (isAtEnd) list_.showEnd();
  }

 private:
  // As wide as its longest line, at least as the panel.
  void fit() {
    ListView_SetColumnWidth(list_.handle(), 0, LVSCW_AUTOSIZE);
    const int least = clientOf(list_.handle()).right;
    if (ListView_GetColumnWidth(list_.handle(), 0) < least) ListView_SetColumnWidth(list_.handle(), 0, least);
  }

  void adoptLook() {
    look_ = std::make_unique<Look>(window());
    setFont(list_.handle(), look_->font());
    list_.adopt(*look_);
  }

  bool handle(UINT message, WPARAM, LPARAM, LRESULT&) override {
    if (!list_.handle()) return false;
    switch (message) {
      case WM_SIZE:
        move(list_.handle(), clientOf(window()));
        fit();
        return true;
      case WM_SETFOCUS:
        SetFocus(list_.handle());
        return true;
      case WM_TIMER:
        update();
        return true;
      case WM_COPY:
        list_.copySelected();
        return true;
      case WM_SETTINGCHANGE:
      case WM_DPICHANGED_AFTERPARENT:
        adoptLook();
        return true;
      default:
        return false;
    }
  }

  List list_;
  std::unique_ptr<Look> look_;
  std::size_t shown_ = static_cast<std::size_t>(-1);
};

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN({descriptor::Panel_Report::name, corvix::create<corvix::ReportPanel>})
