// What windows by plug-ins cost, beside those of the system's calls alone. The menus of the two come to the same rows.
#include "bench/Bench.h"
#include "bench/ProbeFolder.h"

namespace corvix::bench {
namespace {

void measureWindows(Report& report) {
  constexpr int kRounds = 15, kPlugins = 100;
  const std::vector<ProbeFolder::Plugin> ofDesk = {{"gui"}, {"views"}, {"dialogs"}, {"panel-pages"}, {"panel-report"}};
  std::vector<ProbeFolder::Plugin> many = ofDesk;
  many.push_back({"worker", kPlugins});
  const ProbeFolder desk("corvix-frame-probe", ofDesk), crowded("corvix-frame-probe", many),
      bare("corvix-bare-probe", {});
  Sleep(2500);  // what is kept of files counts when they are two seconds old
  for (const ProbeFolder* folder : {&desk, &crowded, &bare}) folder->ns("start");
  std::vector<double> starts, bareStarts, menus, bareMenus;
  for (int i = 0; i < kRounds; ++i) {
    starts.push_back(desk.ns("start"));
    bareStarts.push_back(bare.ns("start"));
    menus.push_back(crowded.ns("menu"));
    bareMenus.push_back(bare.ns("menu"));
  }
  report.add("start until the first frame is painted", "a bare window of the same controls", 1.3, starts, bareStarts);
  report.add("opening a menu with rows of 100 plug-ins", "appending them", 5, menus, bareMenus);
}

const Area area{"windows", measureWindows};

}  // namespace
}  // namespace corvix::bench
