#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/FileInputStream.h"
#include "core/baselib/system/Log.h"
#include "examples/host/Command.h"
#include "examples/host/Console.h"

#include <algorithm>

#include <windows.h>

namespace host {

using namespace corvix;

namespace {

// A log is text in the system's ANSI code page.
std::string utf8OfLog(const std::string& text) {
  std::wstring units(text.size(), 0);
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), units.data(),
                                         static_cast<int>(units.size()));
  units.resize(static_cast<std::size_t>(length));
  std::string lines;
  for (std::size_t begin = 0; begin < units.size();) {
    const std::size_t end = std::min(units.find(L'\n', begin), units.size());
    std::wstring_view line(units.data() + begin, end - begin);
    if (line.ends_with(L'\r')) line.remove_suffix(1);
    lines += shown(line, kSentence) + "\n";
    begin = end + 1;
  }
  return lines;
}

// From the last start line on.
std::string thisRun() {
  const auto file = make<BFileInputStream>();
  if (!file->open(logPath().c_str())) return {};
  constexpr u32 kMost = 1024 * 1024;  // a run that logs more is shown from where that begins
  file->seek(file->size() > kMost ? file->size() - kMost : 0);
  std::string text(kMost, 0);
  text.resize(readFully(*file, text.data(), kMost));
  const std::size_t start = text.rfind("\nStart ");
  return start == std::string::npos ? text : text.substr(start + 1);
}

int switchLog(bool on) {
  if (!corvix::switchLog(on)) {
    std::fprintf(stderr, "corvix-host: the registry does not let us switch the log %s.\n", on ? "on" : "off");
    return 1;
  }
  std::printf("From its next start on, corvix-host %s %s\n", on ? "logs to" : "writes no log to",
              utf8(logPath()).c_str());
  return 0;
}

int tellLog() {
  std::printf("The log of corvix-host is %s: %s\n", isLogSwitchedOn() ? "on" : "off", utf8(logPath()).c_str());
  return 0;
}

}  // namespace

int showLog() {
  const std::string text = thisRun();
  if (text.empty()) {
    std::printf("\nNo log: corvix-host log on switches it on.\n");
  } else {
    std::printf("\nLog of this run (%s)\n%s", utf8(logPath()).c_str(), utf8OfLog(text).c_str());
  }
  return 0;
}

const Command logCommand("log", "Switch the log of this program on or off, or tell where it is",
                         {{"state", "on or off, from the next start", Argument::Optional, {"on", "off"}}},
                         [](Host&, const Texts& given) {
                           return given[0].empty() ? tellLog() : switchLog(given[0] == "on");
                         });

}  // namespace host
