// Notifications and events of the shell, and what each plug-in adds to its start.
#include "bench/Bench.h"
#include "bench/ProbeFolder.h"
#include "core/xml/XmlNode.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"

#include <boost/signals2/signal.hpp>

#include <chrono>
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

// What a start costs with that many plug-ins, which are one file under many names.
class StartFolder : public ProbeFolder {
 public:
  explicit StartFolder(int plugins) : ProbeFolder("corvix-start-probe", {{"textstats", plugins}}) {}

  double startNs() const { return ns(); }

  // As if nothing had been kept.
  double firstStartNs() const {
    fs::remove_all(path() / "Marrowby");
    return startNs();
  }

  fs::path catalogue() const {
    for (const auto& file : fs::recursive_directory_iterator(path() / "Marrowby" / "Corvix" / "Catalogues")) {
      if (file.is_regular_file()) return file.path();
    }
    throw std::runtime_error("the start left no catalogue");
  }
};

template <class Call>
double nsOf(Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

class ReadFileOf {
 public:
  explicit ReadFileOf(const fs::path& path)
      : file_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                          nullptr)) {}
  ~ReadFileOf() { CloseHandle(file_); }
  ReadFileOf(const ReadFileOf&) = delete;
  ReadFileOf& operator=(const ReadFileOf&) = delete;
  void read(LONG offset, std::vector<char>& to) const {
    DWORD got = 0;
    SetFilePointer(file_, offset, nullptr, FILE_BEGIN);
    if (!ReadFile(file_, to.data(), static_cast<DWORD>(to.size()), &got, nullptr)) throw std::runtime_error("read");
    keep(got);
  }

 private:
  HANDLE file_;
};

// The least that tells what the modules declare without knowing them: its headers and its descriptor.
double openAndReadNs(const fs::path& folder, int plugins) {
  std::vector<char> bytes(4096);
  return nsOf([&] {
    for (int i = 0; i < plugins; ++i) {
      const ReadFileOf file(folder / ("plugin" + std::to_string(i) + ".dll"));
      file.read(0, bytes);
      file.read(8192, bytes);
    }
  });
}

// The least that tells what has changed, and what was kept.
double listAndReadNs(const fs::path& folder, const fs::path& catalogue) {
  return nsOf([&] {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder / "*").c_str(), &found);
    do keep(found);
    while (FindNextFileW(search, &found));
    FindClose(search);
    std::vector<char> bytes(static_cast<std::size_t>(fs::file_size(catalogue)));
    ReadFileOf(catalogue).read(0, bytes);
    keep(bytes);
  });
}

// Whatever else the machine does makes it longer, never shorter.
template <class Call>
double leastOf(int times, Call ns) {
  double least = ns();
  while (--times > 0) least = std::min(least, ns());
  return least;
}

// What plug-ins add to a start is the difference to one without any of the same round; the first start of each makes
// the keys, and what is kept of files counts when they are two seconds old. All that is compared is the least of as
// many, in turns.
void measureStart(Report& report) {
  constexpr int kRounds = 15, kLater = 7, kFirst = 2;
  constexpr int kSome = 100, kMany = 1000, kMost = 10000;
  const StartFolder none(0), some(kSome), many(kMany), most(kMost);
  Sleep(2500);
  for (const StartFolder* folder : {&none, &some, &many, &most}) folder->startNs();
  std::vector<double> ofSome, ofMany, ofMost, firstOfMany, opened, listed;
  const auto measureOurs = [&] {
    double base = none.startNs(), withSome = some.startNs(), withMany = many.startNs();
    for (int i = 1; i < kLater; ++i) {
      base = std::min(base, none.startNs());
      withSome = std::min(withSome, some.startNs());
      withMany = std::min(withMany, many.startNs());
    }
    ofSome.push_back((withSome - base) / kSome);
    ofMany.push_back((withMany - base) / kMany);
    ofMost.push_back((most.startNs() - base) / kMost);
    firstOfMany.push_back((leastOf(kFirst, [&] { return many.firstStartNs(); }) - base) / kMany);
  };
  const auto measurePeers = [&] {
    listed.push_back(leastOf(kLater, [&] { return listAndReadNs(many.plugins(), many.catalogue()); }) / kMany);
    opened.push_back(leastOf(kFirst, [&] { return openAndReadNs(many.plugins(), kMany); }) / kMany);
  };
  for (int i = 0; i < kRounds; ++i) {
    if (i % 2) measurePeers();
    measureOurs();
    if (i % 2 == 0) measurePeers();
  }
  report.add("first start, each of 1000 plug-ins", "open and two reads", 2.5, firstOfMany, opened);
  report.add("later start, each of 1000 plug-ins", "listed, the catalogue read", 1.5, ofMany, listed);
  report.add("later start, each of 1000 plug-ins", "of each of 100", 1.2, ofMany, ofSome);
  report.add("later start, each of 10000 plug-ins", "of each of 1000", 1.2, ofMost, ofMany);
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
