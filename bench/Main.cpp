#include "bench/Bench.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <iostream>

using namespace corvix::bench;

namespace {

bool write(const std::string& path, const std::vector<Row>& rows) {
  auto list = nlohmann::ordered_json::array();
  for (const Row& row : rows) {
    list.push_back({{"area", row.area},
                    {"case", row.name},
                    {"peer", row.peer},
                    {"ours_ns", row.oursNs},
                    {"peer_ns", row.peerNs},
                    {"ratio", row.ratio},
                    {"wanted", row.wanted}});
  }
  std::ofstream file(path);
  file << list.dump(2) << '\n';
  return file.good();
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Measures Corvix against what one would use instead. Ratios are ours / peer: less is better."};
  std::string json;
  std::vector<std::string> wanted;
  app.add_option("--json", json, "Also write the rows to this file");
  app.add_option("--area", wanted, "Only these areas");
  CLI11_PARSE(app, argc, argv);

  std::vector<const Area*> areas;
  for (const Area* area = Area::first; area; area = area->next) areas.push_back(area);
  std::sort(areas.begin(), areas.end(),
            [](const Area* a, const Area* b) { return std::string_view(a->name) < b->name; });

  Report report;
  for (const Area* area : areas) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), area->name) == wanted.end()) continue;
    report.startArea(area->name);
    area->run(report);
  }
  const auto missed = std::count_if(report.rows().begin(), report.rows().end(),
                                    [](const Row& row) { return row.wanted > 0 && row.ratio > row.wanted; });
  std::cout << '\n' << report.rows().size() << " rows, " << missed << " above the wanted ratio\n";
  if (!json.empty() && !write(json, report.rows())) {
    std::cerr << "cannot write " << json << '\n';
    return 1;
  }
  return 0;
}
