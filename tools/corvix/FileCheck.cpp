#include "tools/corvix/FileCheck.h"

#include "shell/modules/Contract_p.h"
#include "tools/corvix/Text.h"
#include "tools/xmlbinc/DescriptorCheck.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/XmlWriter.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>

#include <windows.h>

namespace corvix::tool {

namespace {

namespace fs = std::filesystem;

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// Where the system looks for what a plug-in imports.
std::array<fs::path, 3> searchFolders(const std::wstring& path) {
  std::wstring program(32768, L'\0'), system(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  system.resize(GetSystemDirectoryW(system.data(), static_cast<UINT>(system.size())));
  return {fs::path(path).parent_path(), fs::path(program).parent_path(), fs::path(system)};
}

// Which names a module has under which no file stands.
bool isVirtual(const std::string& module) {
  const std::string name = lowered(module);
  return name.starts_with("api-ms-") || name.starts_with("ext-ms-");
}

// What of a module others need to know; read once, as many import from the same few.
struct ImportedModule {
  std::optional<ModuleImage::Fault> fault;
  std::set<std::string> exports;
  std::vector<ModuleImage::Import> imports;
};

const ImportedModule& importedModule(const fs::path& path) {
  static std::map<fs::path, ImportedModule> known;
  const auto [place, isNew] = known.try_emplace(path);
  ModuleImage image;
  if (isNew && image.open(path.wstring())) place->second = {image.fault(), image.exports(), image.imports()};
  return place->second;
}

class FileCheck {
 public:
  FileCheck(const std::wstring& path, const ModuleImage& image) : path_(path), image_(image) {}

  FileReport run() {
    if (const auto fault = image_.fault()) {
      const bool hasTool = image_.isForX86() && std::string_view(fault->rule) == "other-machine";
      add(fault->rule,
          fault->detail + (hasTool ? " A corvix.exe of its word size can check it: that of 64 bits is in x64." : ""));
      return std::move(report_);
    }
    checkDescriptor();
    checkStamp();
    checkImports();
    if (!image_.exports().contains("queryClassFactoryLocal")) add("no-factory", "");
    report_.mayBeTried =
        report_.findings.empty() || std::all_of(report_.findings.begin(), report_.findings.end(), isHarmless);
    checkRuntime();
    if (image_.buildIdentifier().empty() && !image_.hasSymbols()) add("no-build-identifier", "");
    if (!image_.hasVersionInformation()) add("no-version-information", "");
    return std::move(report_);
  }

 private:
  static bool isHarmless(const Finding& finding) { return std::string_view(finding.rule->id) == "descriptor-doubtful"; }

  void add(const char* rule, const std::string& detail) { report_.findings.push_back({&ruleOf(rule), detail}); }

  void checkDescriptor() {
    if (!image_.descriptor()) return add("no-descriptor", "");
    try {
      Descriptor descriptor = readDescriptor(*image_.descriptor());
      xmlbinc::writeXml(descriptor.tree);
      for (const xmlbinc::Warning& warning : xmlbinc::check(descriptor.tree, *xmlbinc::formOf("PLUGININFO")))
        add("descriptor-doubtful", warning.message + '.');
      report_.descriptor = std::move(descriptor);
    } catch (const xmlbinc::InputError& error) {
      add("descriptor-malformed", "Byte " + std::to_string(error.offset()) + ": " + error.what() + '.');
    }
  }

  // A module without a stamp was made by other means, and may be good.
  void checkStamp() {
    if (!report_.descriptor) return;
    const Element& plugin = report_.descriptor->plugin;
    const std::wstring version = wide(plugin.value("SdkVersion")), compiler = wide(plugin.value("SdkCompiler")),
                       bits = wide(plugin.value("SdkBits"));
    const std::wstring why = whyOtherContract({version, compiler, bits});
    if (!why.empty()) add("sdk-mismatch", utf8(why));
  }

  // Those of the module, then those of what it imports from, and so on; what is the system's is complete.
  void checkImports() {
    struct Importer {
      std::string name;  // empty: the module itself
      const std::vector<ModuleImage::Import>* imports;
    };
    const auto folders = searchFolders(path_);
    std::vector<Importer> importers{{"", &image_.imports()}};
    std::set<std::string> seen;
    for (std::size_t at = 0; at < importers.size(); ++at) {
      const Importer importer = importers[at];
      const std::string needed = importer.name.empty() ? "" : ", which " + importer.name + " needs,";
      for (const ModuleImage::Import& import : *importer.imports) {
        if (isVirtual(import.module)) continue;
        const bool isNew = seen.insert(lowered(import.module)).second;
        const auto folder = std::find_if(folders.begin(), folders.end(), [&](const fs::path& place) {
          std::error_code ignored;
          return fs::is_regular_file(place / wide(import.module), ignored);
        });
        if (folder == folders.end()) {
          if (isNew)
            add("missing-dll",
                import.module + needed + " is neither beside the module, nor beside this program, nor in the system.");
          continue;
        }
        const ImportedModule& module = importedModule(*folder / wide(import.module));
        if (module.fault && isNew)
          add("unusable-dll", import.module + needed + " cannot be used: " + module.fault->detail);
        if (module.fault) continue;
        checkFunctions(import, module.exports);
        if (isNew && folder != folders.end() - 1) importers.push_back({import.module, &module.imports});
      }
    }
  }

  void checkFunctions(const ModuleImage::Import& import, const std::set<std::string>& exports) {
    if (exports.empty()) return;
    for (const std::string& function : import.functions) {
      if (!exports.contains(function)) add("missing-function", import.module + " has no " + function + '.');
    }
  }

  // These classes' names stand in the run-time library itself and nowhere else.
  void checkRuntime() {
    const auto& imports = image_.imports();
    const bool shared = std::any_of(imports.begin(), imports.end(), [](const auto& import) {
      return lowered(import.module).starts_with("libstdc++") || lowered(import.module).starts_with("libc++");
    });
    const bool isRuntime = image_.contains("N10__cxxabiv117__class_type_infoE");
    if (!shared && isRuntime)
      add("static-runtime", "It does not import libstdc++-6.dll and holds what that has in it.");
  }

  const std::wstring& path_;
  const ModuleImage& image_;
  FileReport report_;
};

}  // namespace

FileReport checkFile(const std::wstring& path, const ModuleImage& image) { return FileCheck(path, image).run(); }

}  // namespace corvix::tool
