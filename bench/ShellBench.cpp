// Notifications and events of the shell, and what each plug-in adds to its start.
#include "bench/Bench.h"
#include "core/xml/XmlNode.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include <windows.h>

namespace corvix::bench {
namespace {

namespace fs = std::filesystem;

class Listener final : public IProgressCallback {
  CORVIX_IDENTITY(Listener, 0xF47651B7, 0xA9FA03C0, 0xBE078DBA, 0x2716EF01, IProgressCallback)

 public:
  int onStartProgress(const Progress&) override { return 0; }
  int onChangeProgress(const Progress& progress) override {
    seen_ += static_cast<u32>(progress.position);
    return notify::kGoOn;
  }
  int onUpdateProgress(const Progress&) override { return 0; }
  int onStopProgress(const Progress&) override { return 0; }

 private:
  u32 seen_ = 0;
};

void measureNotifications(Report& report, IShell& shell) {
  for (const auto& [count, wanted] : {std::pair(0u, 0.3), {1u, 0.0}, {64u, 0.15}}) {
    std::vector<std::unique_ptr<Listener>> listeners;
    boost::signals2::signal<int(const Progress&)> signal;
    BNotifySender& sender = shell.sender(ShellNotification::ChangeProgress);
    for (u32 i = 0; i < count; ++i) {
      Listener* const listener = listeners.emplace_back(std::make_unique<Listener>()).get();
      sender.addListener(static_cast<IProgressCallback*>(listener));
      signal.connect([listener](const Progress& progress) { return listener->onChangeProgress(progress); });
    }
    report.compare(
        "a notification with " + std::to_string(count) + " listeners", "Boost.Signals2", wanted,
        [&](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n; ++i) {
            int result = shell.changeProgress(1, 0, 100, static_cast<i32>(i), 0);
            keep(result);
          }
        },
        [&](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n; ++i) {
            auto result = signal(Progress{1, 0, 100, static_cast<i32>(i), 0});
            keep(result);
          }
        });
    for (const auto& listener : listeners) sender.removeListener(static_cast<IProgressCallback*>(listener.get()));
  }
}

class Target final : public BSmartObject, public IGlobalEventTarget {
  CORVIX_IDENTITY(Target, 0x7CB5BEBB, 0x1FB3EF30, 0xA7F1EE4A, 0x9D4E21EA, BSmartObject, IGlobalEventTarget)

 public:
  int onGlobalEvent(IGlobalEvent& event) override {
    keep(event);
    return notify::kGoOn;
  }
};

class Event final : public IGlobalEvent {
  CORVIX_IDENTITY(Event, 0x94577163, 0xCB28CE1F, 0xE4C5860E, 0x0E706D77, IGlobalEvent)

 public:
  const wchar_t* name() const noexcept override { return L"Bench"; }
};

void measureEvents(Report& report, IPluginManager& manager) {
  constexpr int kTargets = 10;
  const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  const auto plugin = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Plugin");
  root->appendChild(plugin.get());
  for (int i = 0; i < kTargets; ++i) {
    const auto element = make<XMLNodeNode>(plugin.get(), XmlNodeType::Element, L"Interface");
    for (const auto& [name, value] : {std::pair(L"Name", L"GlobalEvent.Bench"), {L"GUID", L"1, 2, 3, 4"}})
      element->appendChild(make<XMLNodeParam>(element.get(), XmlNodeType::Attribute, name, value).get());
    plugin->appendChild(element.get());
  }
  manager.registerDescriptor(GetModuleHandleW(nullptr), root.get());
  Event event;
  report.compare(
      "an event with 10 targets", "ten objects made, told and deleted in a loop", 1.2,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) manager.raiseEvent(event);
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n * kTargets; ++i) {
          std::unique_ptr<IGlobalEventTarget> target = std::make_unique<Target>();
          target->onGlobalEvent(event);
        }
      });
}

// A program of its own in a folder with that many plug-ins, and what its shell's start costs.
class StartFolder {
 public:
  explicit StartFolder(int plugins)
      : path_(fs::temp_directory_path() /
              ("corvix-start-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(plugins))) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const fs::path built = fs::path(program).parent_path();
    fs::create_directories(path_ / "plugins");
    for (const auto& file : fs::directory_iterator(built)) {
      if (file.path().extension() == ".dll") fs::copy(file.path(), path_);
    }
    fs::copy(built / "corvix-start-probe.exe", path_);
    for (int i = 0; i < plugins; ++i)
      fs::copy(built / "plugins" / "textstats.dll", path_ / "plugins" / ("plugin" + std::to_string(i) + ".dll"));
  }
  ~StartFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    std::wstring key = (path_ / "corvix-start-probe.exe").wstring();
    std::replace(key.begin(), key.end(), L'\\', L'/');
    RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\Marrowby\\Corvix\\" + key).c_str());
  }

  double startNs() const {
    const std::wstring command = L"\"" + (path_ / "corvix-start-probe.exe").wstring() + L"\"";
    FILE* const said = _wpopen(command.c_str(), L"r");
    double ns = 0;
    const bool isRead = said && std::fscanf(said, "%lf", &ns) == 1;
    if (said) _pclose(said);
    if (!isRead) throw std::runtime_error("corvix-start-probe.exe did not say how long the start took");
    return ns;
  }

 private:
  fs::path path_;
};

// What plug-ins add to a start is the difference of two starts in one round; the first start of each makes the keys.
void measureStart(Report& report) {
  constexpr int kRounds = 15;
  const StartFolder none(0), ten(10), hundred(100);
  for (const StartFolder* folder : {&none, &ten, &hundred}) folder->startNs();
  std::vector<double> bases, ofTen, ofHundred, tens;
  for (int i = 0; i < kRounds; ++i) {
    bases.push_back(none.startNs());
    ofTen.push_back((ten.startNs() - bases.back()) / 10);
    ofHundred.push_back((hundred.startNs() - bases.back()) / 100);
    tens.push_back(10 * ofTen.back());
  }
  report.add("start, cost of each of 100 plug-ins", "of each of 10", 1.2, ofHundred, ofTen);
  report.add("start without plug-ins", "ten times one plug-in", 0, bases, tens);
}

void measureShell(Report& report) {
  IShell& shell = *IShell::getInstance();
  measureNotifications(report, shell);
  measureEvents(report, *shell.pluginManager());
  measureStart(report);
}

const Area area{"shell", measureShell};

}  // namespace

IBSmartObject* makeEventTarget() { return new Target; }

}  // namespace corvix::bench
