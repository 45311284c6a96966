// What windows by plug-ins cost, beside those of the system's calls alone. The menus of the two come to the same rows.
#include "bench/Bench.h"
#include "bench/ProbeFolder.h"

namespace corvix::bench {
namespace {

void measureWindows(Report& report) {
  constexpr int kRounds = 41, kPlugins = 100;
  const std::vector<ProbeFolder::Plugin> ofDesk = {{"gui"}, {"views"}, {"dialogs"}, {"panel-pages"}, {"panel-report"}};
  std::vector<ProbeFolder::Plugin> many = ofDesk;
  many.push_back({"worker", kPlugins});
  const ProbeFolder desk("corvix-frame-probe", ofDesk), crowded("corvix-frame-probe", many),
      bare("corvix-bare-probe", {});
  Sleep(2500);  // what is kept of files counts when they are two seconds old
  for (const ProbeFolder* folder : {&desk, &crowded, &bare}) folder->ns("start");
  std::vector<double> starts, bareStarts, menus, bareMenus;
  const auto pair = [](int round, const ProbeFolder& ours, const ProbeFolder& theirs, const char* what,
                       std::vector<double>& oursNs, std::vector<double>& theirsNs) {
    if (round % 2) theirsNs.push_back(theirs.ns(what));  // in turns: what another program does meets both alike
    oursNs.push_back(ours.ns(what));
    if (round % 2 == 0) theirsNs.push_back(theirs.ns(what));
  };
  for (int i = 0; i < kRounds; ++i) {
    pair(i, desk, bare, "start", starts, bareStarts);
    pair(i, crowded, bare, "menu", menus, bareMenus);
  }
  report.add("start until the first frame is painted", "a bare window of the same controls", 1.3, starts, bareStarts);
  report.add("opening a menu with rows of 100 plug-ins", "appending them", 5, menus, bareMenus);
}

const Area area{"windows", measureWindows};

}  // namespace
}  // namespace corvix::bench
