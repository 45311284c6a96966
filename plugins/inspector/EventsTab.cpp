// What the shell tells its listeners, and the global events, as they happen.
#include "plugins/inspector/Tab.h"

#include "shell/GlobalEvent.h"

#include <climits>
#include <mutex>

namespace corvix::inspector {

namespace {

constexpr std::size_t kMostRows = 500;

std::wstring timeText() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  wchar_t text[32];
  wsprintfW(text, L"%02u:%02u:%02u.%03u", now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  return text;
}

// The listener of all of them, the first to be told, which never has a say. It stands as long as the module: another
// thread may be in it while the tab goes.
class Recorder : public IShellListener,
                 public IDialogListener,
                 public IStatusListener,
                 public IActionTarget,
                 public IProgressCallback,
                 public IActionListener,
                 public IDocumentListener {
  CORVIX_IDENTITY(Recorder, 0x0B70779F, 0x23FF7E54, 0x51C3E999, 0x222BBB06, IShellListener, IDialogListener,
                  IStatusListener, IActionTarget, IProgressCallback, IActionListener, IDocumentListener)

 public:
  void begin(HWND page) {
    wake_.aimAt(page);
    IShell& shell = *IShell::getInstance();
#define CORVIX_LISTEN(notification, name, Owner, Listener) \
  shell.sender(ShellNotification::notification).addListener(static_cast<Listener*>(this), INT_MIN);
    CORVIX_SHELL_NOTIFICATIONS(CORVIX_LISTEN)
#undef CORVIX_LISTEN
    shell.pluginManager()->preEventSender().addListener(&before_, INT_MIN);
    shell.pluginManager()->postEventSender().addListener(&after_, INT_MIN);
  }

  void end() {
    wake_.aimAt(nullptr);
    if (IShell* const shell = IShell::getInstance()) {
#define CORVIX_LISTEN(notification, name, Owner, Listener) \
  shell->sender(ShellNotification::notification).removeListener(static_cast<Listener*>(this));
      CORVIX_SHELL_NOTIFICATIONS(CORVIX_LISTEN)
#undef CORVIX_LISTEN
      shell->pluginManager()->preEventSender().removeListener(&before_);
      shell->pluginManager()->postEventSender().removeListener(&after_);
    }
    take();
  }

  // What came since the last call.
  std::vector<Row> take() {
    const std::lock_guard<std::mutex> guard(lock_);
    return std::move(rows_);
  }

  int add(const wchar_t* what, std::wstring about) {
    const std::lock_guard<std::mutex> guard(lock_);
    if (rows_.size() == kMostRows) rows_.erase(rows_.begin());
    rows_.push_back({timeText(), what, std::move(about)});
    wake_.ring();
    return notify::kGoOn;
  }

  int onInitialize(IShell&) override { return add(L"OnInitialize", {}); }
  int onUnInitialize(IShell&) override { return add(L"OnUnInitialize", {}); }
  int onSysMsgBox(MessageBoxRequest& request) override { return add(L"OnSysMsgBox", orEmpty(request.text)); }
  int onShowCustomDialog(CustomDialogRequest& request) override {
    return add(L"OnShowCustomDialog", orEmpty(request.interfaceName));
  }
  int onShowConfirmation(ConfirmationRequest& request) override {
    return add(L"OnShowConfirmation", orEmpty(request.text));
  }
  int onChangeStatusText(i32 pane, const wchar_t* text) override {
    return add(L"OnChangeStatusText", std::to_wstring(pane) + L": " + orEmpty(text));
  }
  int onValidateAction(IAction& action, IActionSender* by) override {
    return add(L"OnValidateAction", about(action, by));
  }
  int onProcessAction(IAction& action, IActionSender* by) override {
    return add(L"OnProcessAction", about(action, by));
  }
  int onStartProgress(const Progress& progress) override { return add(L"onStartProgress", about(progress)); }
  int onChangeProgress(const Progress& progress) override { return add(L"onChangeProgress", about(progress)); }
  int onUpdateProgress(const Progress& progress) override { return add(L"onUpdateProgress", about(progress)); }
  int onStopProgress(const Progress& progress) override { return add(L"onStopProgress", about(progress)); }
  int preValidateAction(IAction& action, IActionSender* by) override {
    return add(L"preValidateAction", about(action, by));
  }
  int postValidateAction(IAction& action, IActionSender* by) override {
    return add(L"postValidateAction", about(action, by));
  }
  int preProcessAction(IAction& action, IActionSender* by) override {
    return add(L"preProcessAction", about(action, by));
  }
  int postProcessAction(IAction& action, IActionSender* by) override {
    return add(L"postProcessAction", about(action, by));
  }
  int onOpenDocument(IDocument*, const wchar_t* location) override { return add(L"OnOpenDocument", orEmpty(location)); }

 private:
  class EventListener : public IGlobalEventTarget {
    CORVIX_IDENTITY(EventListener, 0x69914885, 0xE2B966E3, 0xCE04565F, 0x821B221D, IGlobalEventTarget)

   public:
    EventListener(Recorder& recorder, const wchar_t* what) : recorder_(recorder), what_(what) {}
    int onGlobalEvent(IGlobalEvent& event) override { return recorder_.add(what_, orEmpty(event.name())); }

   private:
    Recorder& recorder_;
    const wchar_t* const what_;
  };

  static std::wstring about(IAction& action, IActionSender* by) {
    return orEmpty(action.name()) + (by ? L", asked for by " + orEmpty(by->senderName()) : L"");
  }
  static std::wstring about(const Progress& progress) {
    return L"work " + std::to_wstring(progress.id) + L": " + std::to_wstring(progress.position) + L" of " +
           std::to_wstring(progress.minimum) + L" to " + std::to_wstring(progress.maximum);
  }

  EventListener before_{*this, L"global event begins"};
  EventListener after_{*this, L"global event ends"};
  std::mutex lock_;
  std::vector<Row> rows_;
  Wake wake_;
} recorder;

class RaisedEvent : public IGlobalEvent {
  CORVIX_IDENTITY(RaisedEvent, 0x7DCDB64F, 0x4717F197, 0xD020D3C4, 0xB76866A5, IGlobalEvent)

 public:
  explicit RaisedEvent(std::wstring name) : name_(std::move(name)) {}
  const wchar_t* name() const noexcept override { return name_.c_str(); }

 private:
  const std::wstring name_;
};

class EventsTab : public Tab {
 public:
  ~EventsTab() override { recorder.end(); }

  void refresh() override {
    const bool followsEnd = list_.isAtEnd();
    std::vector<Row> news = recorder.take();
    if (news.empty()) return;
    rows_.insert(rows_.end(), news.begin(), news.end());
    if (rows_.size() > kMostRows) rows_.erase(rows_.begin(), rows_.end() - kMostRows);
    list_.show(rows_);
    if (followsEnd) list_.showEnd();
  }

  void command(int id, int) override {
    if (id == kClear) {
      rows_.clear();
      list_.show(rows_);
    } else if (id == kRaise || id == IDOK) {
      const std::wstring name = textOf(GetDlgItem(page(), kName));
      if (name.empty()) return;
      RaisedEvent event(name);
      if (staysOpen(page(), [&] { IShell::getInstance()->pluginManager()->raiseEvent(event); })) refresh();
    }
  }

 private:
  enum { kName = 1, kRaise, kClear };

  void make() override {
    list_.make(page(), kList, {{L"Time", 100}, {L"What", 170}, {L"About", 550}});
    addToRow(L"STATIC", L"&Event:", SS_CENTERIMAGE, -1, 45);
    addToRow(L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, kName, 200);
    addButton(L"&Raise", kRaise, 90);
    addButton(L"&Clear", kClear, 90);
    recorder.begin(page());
  }

  std::vector<Row> rows_;
};

}  // namespace

std::unique_ptr<Tab> makeEventsTab() { return std::make_unique<EventsTab>(); }

}  // namespace corvix::inspector
