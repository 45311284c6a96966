#include "bench/Bench.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iostream>
#include <set>

using namespace corvix::bench;

namespace {

constexpr std::size_t kMostAccepted = 3;

std::string keyOf(const Row& row) { return row.area + " | " + row.name + " | " + row.peer; }

// The rows that may miss, without their reasons.
std::set<std::string> readAccepted(const std::string& path) {
  std::set<std::string> accepted;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line.front() == '#') continue;
    const std::size_t bar = line.rfind(" | ");
    if (std::count(line.begin(), line.end(), '|') != 3 || bar + 3 >= line.size())
      throw std::runtime_error(path + ": not \"area | case | peer | reason\": " + line);
    accepted.insert(line.substr(0, bar));
  }
  if (accepted.size() > kMostAccepted)
    throw std::runtime_error(path + ": no more than " + std::to_string(kMostAccepted) + " rows can be accepted");
  return accepted;
}

bool write(const std::string& path, const std::vector<Row>& rows, const std::set<std::string>& accepted) {
  auto list = nlohmann::ordered_json::array();
  for (const Row& row : rows) {
    list.push_back({{"area", row.area},
                    {"case", row.name},
                    {"peer", row.peer},
                    {"ours", row.ours},
                    {"theirs", row.theirs},
                    {"unit", row.unit},
                    {"ratio", row.ratio},
                    {"low", row.low},
                    {"high", row.high},
                    {"wanted", row.wanted},
                    {"steady", row.isSteady},
                    {"missed", row.isMissed()},
                    {"faulty", row.isFaulty()},
                    {"accepted", accepted.count(keyOf(row)) != 0}});
  }
  char date[16];
  const std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof date, "%Y-%m-%d", std::localtime(&now));
  std::ofstream file(path);
  file << nlohmann::ordered_json{{"date", date}, {"rows", list}}.dump(2) << '\n';
  return file.good();
}

std::vector<const Area*> allAreas() {
  std::vector<const Area*> areas;
  for (const Area* area = Area::first; area; area = area->next) areas.push_back(area);
  std::sort(areas.begin(), areas.end(),
            [](const Area* a, const Area* b) { return std::string_view(a->name) < b->name; });
  return areas;
}

int run(const std::vector<std::string>& wanted, const std::string& json, const std::string& acceptedPath) {
  const std::vector<const Area*> areas = allAreas();
  for (const std::string& name : wanted) {
    if (std::none_of(areas.begin(), areas.end(), [&](const Area* area) { return name == area->name; }))
      throw std::runtime_error("there is no area \"" + name + "\"");
  }
  const std::set<std::string> accepted = readAccepted(acceptedPath);

  Report report;
  for (const Area* area : areas) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), area->name) == wanted.end()) continue;
    report.startArea(area->name);
    area->run(report);
  }
  const auto countOf = [&](auto is) { return std::count_if(report.rows().begin(), report.rows().end(), is); };
  const auto isAccepted = [&](const Row& row) { return accepted.count(keyOf(row)) != 0; };
  const auto faulty = countOf([](const Row& row) { return row.isFaulty(); });
  const auto missed = countOf([&](const Row& row) { return row.isMissed() && !isAccepted(row); });
  const auto let = countOf([&](const Row& row) { return row.isMissed() && isAccepted(row); });
  const auto restless = countOf([](const Row& row) { return !row.isSteady; });
  std::cout << '\n'
            << report.rows().size() << " rows, " << missed << " above the wanted ratio beyond their spread, " << let
            << " more accepted, " << restless << " never steady, " << faulty << " without a figure\n";
  if (!json.empty() && !write(json, report.rows(), accepted)) throw std::runtime_error("cannot write " + json);
  return faulty || missed ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Measures Corvix against what one would use instead. Ratios are ours / peer: less is better. Ends with 1 when a\n"
      "wanted ratio is missed by more than the rounds differ, unless bench/accepted.txt names the row."};
  std::string json;
  std::string accepted = CORVIX_BENCH_ACCEPTED;
  std::vector<std::string> wanted;
  app.add_option("--json", json, "Also write the rows to this file");
  app.add_option("--area", wanted, "Only these areas");
  app.add_option("--accepted", accepted, "The rows that may miss");
  bool listsAreas = false;
  app.add_flag("--areas", listsAreas, "Only say which areas there are");
  CLI11_PARSE(app, argc, argv);
  if (listsAreas) {
    for (const Area* area : allAreas()) std::cout << area->name << '\n';
    return 0;
  }
  try {
    return run(wanted, json, accepted);
  } catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 2;
  }
}
