#include "tools/corvix/Check.h"

#include "shell/modules/Contract_p.h"
#include "tools/corvix/FileCheck.h"
#include "tools/corvix/Text.h"
#include "tools/corvix/Trial.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include <windows.h>

namespace corvix::tool {

namespace {

using nlohmann::json;

struct ModuleReport {
  std::string path;
  std::vector<Finding> findings;
  std::optional<Descriptor> descriptor;
  std::size_t declared = 0;
  std::size_t made = 0;
  bool tried = false;
  std::string failure;  // why it was not tried, though nothing was found

  bool holds() const {
    return std::none_of(findings.begin(), findings.end(),
                        [](const Finding& one) { return one.rule->weight == Weight::Fault; });
  }
  int exit() const { return !holds() ? kFindings : tried ? kHolds : kNotTried; }
};

// A file's path in the one spelling that the system has for it; as it is given when it cannot be opened.
std::wstring ownSpelling(const std::string& path) {
  std::wstring given = std::filesystem::absolute(wide(path)).wstring();
  HANDLE const file = CreateFileW(given.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return given;
  std::wstring spelling(32768, L'\0');
  spelling.resize(GetFinalPathNameByHandleW(file, spelling.data(), static_cast<DWORD>(spelling.size()), 0));
  CloseHandle(file);
  return spelling.empty() ? given : spelling;
}

ModuleReport checkModule(const std::string& path, unsigned timeoutSeconds) {
  ModuleReport report;
  report.path = path;
  const std::wstring place = std::filesystem::absolute(wide(path)).wstring();
  ModuleImage image;
  if (!image.open(place)) {
    report.failure = "the file cannot be read";
    return report;
  }
  FileReport file = checkFile(place, image);
  report.findings = std::move(file.findings);
  if (!file.descriptor) return report;
  report.descriptor = std::move(file.descriptor);
  report.declared = report.descriptor->interfaces.size();
  if (!file.mayBeTried) return report;
  Trial trial = tryModule(place, image, *report.descriptor, timeoutSeconds);
  report.findings.insert(report.findings.end(), trial.findings.begin(), trial.findings.end());
  report.made = trial.made;
  report.tried = trial.loaded && (report.made || !report.declared);
  report.failure = trial.failure;
  if (report.failure.empty() && !report.tried && report.holds()) report.failure = "nothing of it could be tried";
  if (!report.declared) report.findings.push_back({&ruleOf("nothing-declared"), ""});
  return report;
}

void findDuplicates(std::vector<ModuleReport>& reports) {
  std::map<std::string, std::string> seen;
  for (ModuleReport& report : reports) {
    if (!report.descriptor || !report.descriptor->identifier) continue;
    const auto [first, isNew] = seen.emplace(textOf(*report.descriptor->identifier), report.path);
    if (isNew) continue;
    report.findings.push_back(
        {&ruleOf("duplicate-identifier"), fileNameOf(first->second) + " has " + first->first + " as well."});
  }
}

// What the modules need of each other, and of the library.
class RequirementCheck {
 public:
  explicit RequirementCheck(std::vector<ModuleReport>& reports) : reports_(reports) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(GetModuleHandleW(L"corvix.dll"), path, MAX_PATH);
    ModuleImage image;
    if (image.open(path) && !image.fault() && image.descriptor())
      modules_.push_back({"corvix.dll", readDescriptor(*image.descriptor())});
    for (const ModuleReport& report : reports)
      modules_.push_back({fileNameOf(report.path), report.descriptor.value_or(Descriptor())});
  }

  void run() {
    const std::size_t first = modules_.size() - reports_.size();
    for (std::size_t i = first; i < modules_.size(); ++i) {
      std::vector<Finding>& findings = reports_[i - first].findings;
      for (const Element& required : modules_[i].descriptor.requirements) {
        check(required, findings);
        if (providersOf(required) == std::vector<std::size_t>{i})
          findings.push_back({&ruleOf("requirement-own"), "It needs \"" + required.value("Interface") + "\"."});
      }
      if (const std::string way = circleFrom(i); !way.empty()) findings.push_back({&ruleOf("requirement-circle"), way});
    }
  }

 private:
  struct Module {
    std::string name;
    Descriptor descriptor;
  };

  std::vector<std::size_t> providersOf(const Element& required) const {
    std::vector<std::size_t> providers;
    for (std::size_t i = 0; i < modules_.size(); ++i) {
      const auto& declared = modules_[i].descriptor.interfaces;
      if (std::any_of(declared.begin(), declared.end(),
                      [&](const DeclaredInterface& one) { return one.name == required.value("Interface"); }))
        providers.push_back(i);
    }
    return providers;
  }

  void check(const Element& required, std::vector<Finding>& findings) const {
    const std::string name = '"' + required.value("Interface") + '"', wanted = required.value("MinVersion");
    const auto version = [&](std::size_t i) { return modules_[i].descriptor.plugin.value("Version"); };
    const std::vector<std::size_t> providers = providersOf(required);
    if (providers.empty()) {
      findings.push_back({&ruleOf("requirement-unseen"), "It needs " + name + '.'});
    } else if (std::none_of(providers.begin(), providers.end(),
                            [&](std::size_t i) { return compareVersions(wide(version(i)), wide(wanted)) >= 0; })) {
      const std::string has = version(providers.front());
      findings.push_back({&ruleOf("requirement-too-old"), "It needs " + name + " of version " + wanted + ", and " +
                                                              modules_[providers.front()].name + " has " +
                                                              (has.empty() ? "no version" : has) + '.'});
    }
  }

  // The way from a module over what it needs back to it, as a sentence; empty when there is none.
  std::string circleFrom(std::size_t start) const {
    std::map<std::size_t, std::size_t> neededBy;
    std::vector<std::size_t> reached{start};
    for (std::size_t at = 0; at < reached.size(); ++at) {
      for (const Element& required : modules_[reached[at]].descriptor.requirements) {
        const std::vector<std::size_t> providers = providersOf(required);
        if (providers.size() == 1 && providers.front() != reached[at] &&
            neededBy.try_emplace(providers.front(), reached[at]).second)
          reached.push_back(providers.front());
      }
    }
    if (!neededBy.contains(start)) return {};
    std::string way = modules_[start].name + '.';
    std::size_t at = start;
    do {
      at = neededBy.at(at);
      way.insert(0, modules_[at].name + " needs ");
    } while (at != start);
    return way;
  }

  std::vector<ModuleReport>& reports_;
  std::vector<Module> modules_;
};

const char* weightName(Weight weight) { return weight == Weight::Note ? "note" : "fault"; }

void print(const ModuleReport& report) {
  const std::string verdict = !report.failure.empty() ? "not tried: " + report.failure
                              : report.holds()        ? "holds"
                                                      : "has faults";
  std::printf("%s: %s; %zu of %zu interfaces made\n", report.path.c_str(), verdict.c_str(), report.made,
              report.declared);
  for (const Finding& finding : report.findings) {
    std::printf("  %s [%s] %s %s\n", weightName(finding.rule->weight), finding.rule->id, finding.rule->what,
                shown(finding.detail, 4000).c_str());
    std::printf("    %s\n", finding.rule->todo);
  }
}

json asJson(const ModuleReport& report) {
  json findings = json::array();
  for (const Finding& finding : report.findings) {
    findings.push_back({{"rule", finding.rule->id},
                        {"weight", weightName(finding.rule->weight)},
                        {"what", finding.rule->what},
                        {"detail", finding.detail},
                        {"todo", finding.rule->todo}});
  }
  return {{"module", report.path},
          {"holds", report.tried && report.holds()},
          {"tried", report.tried},
          {"failure", report.failure},
          {"made", report.made},
          {"declared", report.declared},
          {"findings", std::move(findings)}};
}

}  // namespace

int check(const CheckOptions& options) {
  std::vector<ModuleReport> reports;
  std::set<std::wstring> seen;
  for (const std::string& module : options.modules) {
    if (!seen.insert(ownSpelling(module)).second) continue;
    if (!options.json && options.modules.size() > 3)
      std::fprintf(stderr, "%zu/%zu %s\n", reports.size() + 1, options.modules.size(), module.c_str());
    reports.push_back(checkModule(module, options.timeoutSeconds));
  }
  findDuplicates(reports);
  RequirementCheck(reports).run();
  int worst = kHolds;
  json all = json::array();
  for (const ModuleReport& report : reports) {
    // A fault says more than that something was not tried.
    if (report.exit() != kHolds && worst != kFindings) worst = report.exit();
    if (options.json) {
      all.push_back(asJson(report));
    } else {
      print(report);
    }
  }
  if (options.json)
    std::printf(
        "%s\n",
        json{{"modules", std::move(all)}, {"exit", worst}}.dump(2, ' ', true, json::error_handler_t::replace).c_str());
  return worst;
}

int listRules(bool asJsonText) {
  json all = json::array();
  for (const Rule& rule : allRules()) {
    all.push_back({{"rule", rule.id}, {"weight", weightName(rule.weight)}, {"what", rule.what}, {"todo", rule.todo}});
    if (!asJsonText) std::printf("%s (%s): %s\n  %s\n", rule.id, weightName(rule.weight), rule.what, rule.todo);
  }
  if (asJsonText) std::printf("%s\n", all.dump(2).c_str());
  return 0;
}

}  // namespace corvix::tool
