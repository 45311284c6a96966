#include "tools/corvix/Text.h"
#include "tools/corvix/Trial.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>

#include <windows.h>

namespace corvix::tool {

namespace {

using nlohmann::json;

constexpr DWORD kAborted = 3;  // how abort ends a process, and with it an exception that nobody catches

// A file of its own for the child's lines, gone at the end.
class RecordFile {
 public:
  RecordFile()
      : path_(std::filesystem::temp_directory_path() / ("corvix-trial-" + std::to_string(GetCurrentProcessId()) + '-' +
                                                        std::to_string(std::random_device{}()))) {
    std::ofstream(path_, std::ios::binary).close();
  }
  ~RecordFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  RecordFile(const RecordFile&) = delete;
  RecordFile& operator=(const RecordFile&) = delete;

  const std::filesystem::path& path() const { return path_; }

  std::vector<json> lines() const {
    std::vector<json> all;
    std::ifstream file(path_, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
      json value = json::parse(line, nullptr, false);
      if (value.is_object()) all.push_back(std::move(value));
    }
    return all;
  }

 private:
  std::filesystem::path path_;
};

struct Ending {
  bool started = false;
  bool timedOut = false;
  DWORD exitCode = 0;
};

std::wstring ownPath() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

// Ends with its grandchildren when the handle goes.
HANDLE makeJob() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

Ending runChild(const std::wstring& module, const std::filesystem::path& record, std::size_t first,
                unsigned timeoutSeconds) {
  std::wstring command =
      L"\"" + ownPath() + L"\" try-module \"" + module + L"\" \"" + record.wstring() + L"\" " + std::to_wstring(first);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;  // none: what a module prints is not our output
  PROCESS_INFORMATION process{};
  Ending ending;
  const HANDLE job = makeJob();
  ending.started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW | CREATE_SUSPENDED,
                                  nullptr, nullptr, &startup, &process);
  if (ending.started) {
    AssignProcessToJobObject(job, process.hProcess);
    ResumeThread(process.hThread);
    ending.timedOut = WaitForSingleObject(process.hProcess, timeoutSeconds * 1000) != WAIT_OBJECT_0;
    if (ending.timedOut) {
      TerminateProcess(process.hProcess, 1);
      WaitForSingleObject(process.hProcess, 5000);
    }
    GetExitCodeProcess(process.hProcess, &ending.exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(job);
  return ending;
}

// What the children's lines come to.
class Reading {
 public:
  Reading(const ModuleImage& image, const Descriptor& descriptor, Trial& trial)
      : image_(image), interfaces_(descriptor.interfaces), trial_(trial) {}

  // The number of the interface to go on with; nothing when all was tried or nothing more can be.
  std::optional<std::size_t> read(const std::vector<json>& lines, const Ending& ending) {
    std::string phase, name;
    std::optional<std::uint32_t> crash;
    bool done = false;
    for (const json& line : lines) {
      if (line.contains("phase")) {
        phase = line["phase"].get<std::string>();
        name = line["interface"].get<std::string>();
      }
      if (line.contains("finding")) add(line["finding"].get<std::string>(), line["detail"].get<std::string>());
      if (line.contains("null")) addNull(line["null"].get<std::string>());
      if (line.contains("made")) made_.insert(line["made"].get<std::size_t>());
      if (line.contains("answers")) answers_[line["answers"].get<std::size_t>()] = line;
      if (line.contains("crash")) crash = line["crash"].get<std::uint32_t>();
      trial_.loaded = trial_.loaded || line.contains("loaded");
      done = done || line.contains("done");
    }
    if (phase.empty()) {
      trial_.failure = "the process that tries it did not start";
      return std::nullopt;
    }
    if (done && !ending.timedOut && !ending.exitCode) return std::nullopt;
    addEnding(done ? "end" : phase, name, crash, ending);
    if (done || !trial_.loaded || name.empty()) return std::nullopt;
    const auto at =
        std::find_if(interfaces_.begin(), interfaces_.end(), [&](const auto& one) { return one.name == name; });
    const auto next = static_cast<std::size_t>(at - interfaces_.begin()) + 1;
    return next < interfaces_.size() ? std::optional(next) : std::nullopt;
  }

  // Once all children have ended.
  void finish() {
    trial_.made = made_.size();
    for (const auto& [index, line] : answers_) {
      const auto& to = line["to"];
      if (std::find(to.begin(), to.end(), index) == to.end()) addMismatch(index, line);
    }
  }

 private:
  void add(const std::string& rule, const std::string& detail) { trial_.findings.push_back({&ruleOf(rule), detail}); }

  // A name in the code that is nearly the declared one was meant to be it.
  void addNull(const std::string& name) {
    const std::wstring wanted = wide(name);
    const std::u16string units(wanted.begin(), wanted.end());
    const std::size_t tolerance = std::max<std::size_t>(1, std::min<std::size_t>(3, units.size() / 5));
    std::u16string meant;
    for (const std::u16string& candidate : image_.names()) {
      if (candidate == units) return add("makes-nothing", "The class factory returned nothing for " + name + ".");
      const bool isDeclared = std::any_of(interfaces_.begin(), interfaces_.end(),
                                          [&](const auto& one) { return one.name == utf8(candidate); });
      if (!isDeclared && distance(candidate, units) <= tolerance) meant = candidate;
    }
    if (meant.empty()) return add("row-missing", name + " is declared, and the code does not name it.");
    add("name-typo", "plugin.xml declares " + name + ", and the code names " + utf8(meant) + ".");
  }

  void addMismatch(std::size_t index, const json& line) {
    const DeclaredInterface& declared = interfaces_[index];
    std::string is = declared.name + " gives an object of the class " + line["class"].get<std::string>();
    const auto& to = line["to"];
    const auto takesPlaceOf = std::find_if(to.begin(), to.end(), [&](const json& other) {
      return !(interfaces_[other.get<std::size_t>()].words == declared.words);
    });
    if (takesPlaceOf != to.end())
      return add("wrong-object", is + ", which answers to the identifier of " +
                                     interfaces_[takesPlaceOf->get<std::size_t>()].name + " instead.");
    for (const auto& [other, answer] : answers_) {
      if (other != index && std::find(answer["to"].begin(), answer["to"].end(), index) != answer["to"].end())
        return add("wrong-object", is + "; the object of " + interfaces_[other].name + " answers to its identifier.");
    }
    is += ", which answers to ";
    for (const auto& one : line["classes"]) is += one.get<std::string>() + ", ";
    add("identifier-differs", is + "none of which has the declared words " + textOf(declared.words) + ".");
  }

  void addEnding(const std::string& phase, const std::string& name, std::optional<std::uint32_t> crash,
                 const Ending& ending) {
    struct Phase {
      const char* name;
      const char* doing;
      const char* rule;
    };
    static constexpr Phase kPhases[] = {
        {"load", "while it was loaded", "crash-on-load"},
        {"factory", "in queryClassFactoryLocal", "factory-fails"},
        {"make", "while it made ", "crash-in-constructor"},
        {"query", "while it was asked for ", "crash-in-query"},
        {"release", "while it released ", "crash-on-release"},
        {"threads", "after all objects were gone", "crash-on-release"},
        {"end", "while the process ended", "crash-on-release"},
    };
    const auto* const found =
        std::find_if(std::begin(kPhases), std::end(kPhases), [&](const Phase& one) { return phase == one.name; });
    const Phase& where = found == std::end(kPhases) ? kPhases[0] : *found;
    const std::string doing = where.doing + name;
    if (ending.timedOut) return add("hang", "It was still busy " + doing + '.');
    const bool systemCode = ending.exitCode >= 0xC0000000;
    if (crash || systemCode)
      return add(where.rule, "Exception " + hexadecimal(crash.value_or(ending.exitCode)) + ' ' + doing + '.');
    if (ending.exitCode == kAborted)
      return add(phase == "load" ? "static-constructor-throws" : where.rule,
                 "The process was aborted " + doing + ", as by an exception that nobody can catch.");
    add("ended-process", "It ended with exit code " + std::to_string(ending.exitCode) + ' ' + doing + '.');
  }

  const ModuleImage& image_;
  const std::vector<DeclaredInterface>& interfaces_;
  Trial& trial_;
  std::set<std::size_t> made_;
  std::map<std::size_t, json> answers_;
};

}  // namespace

Trial tryModule(const std::wstring& path, const ModuleImage& image, const Descriptor& descriptor,
                unsigned timeoutSeconds) {
  Trial trial;
  Reading reading(image, descriptor, trial);
  std::optional<std::size_t> next = 0;
  while (next) {
    const RecordFile record;
    const Ending ending = runChild(path, record.path(), *next, timeoutSeconds);
    if (!ending.started) {
      trial.failure = "no process could be started to try it in";
      break;
    }
    next = reading.read(record.lines(), ending);
  }
  reading.finish();
  return trial;
}

}  // namespace corvix::tool
