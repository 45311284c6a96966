#include "tools/corvix/Info.h"

#include "tools/corvix/Descriptor.h"
#include "tools/corvix/ModuleImage.h"
#include "tools/corvix/Text.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/XmlWriter.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace corvix::tool {

namespace {

using nlohmann::ordered_json;

int failed(const std::string& path, const std::string& why) {
  std::fprintf(stderr, "corvix: %s: %s\n", path.c_str(), why.c_str());
  return 1;
}

void print(const char* heading, const Element& element) {
  std::printf("%s\n", heading);
  for (const auto& [name, value] : element.attributes)
    std::printf("  %-13s %s\n", shown(name).c_str(), shown(value).c_str());
}

ordered_json asJson(const Element& element) {
  ordered_json object = ordered_json::object();
  for (const auto& [name, value] : element.attributes) object[name] = value;
  return object;
}

void printTable(const Descriptor& descriptor, const ModuleImage& image) {
  print("Plugin", descriptor.plugin);
  for (const DeclaredInterface& one : descriptor.interfaces) print("Interface", one);
  for (const Element& one : descriptor.settings) print("Setting", one);
  for (const Element& one : descriptor.requirements) print("Requires", one);
  std::printf("File\n");
  if (image.fault()) std::printf("  %-13s %s\n", "other-machine", image.fault()->detail.c_str());
  for (const auto& import : image.imports()) std::printf("  %-13s %s\n", "imports", shown(import.module).c_str());
  if (!image.buildIdentifier().empty()) std::printf("  %-13s %s\n", "build", image.buildIdentifier().c_str());
}

void printJson(const std::string& path, const Descriptor& descriptor, const ModuleImage& image) {
  ordered_json all{{"module", path}, {"plugin", asJson(descriptor.plugin)}};
  for (const char* const list : {"interfaces", "settings", "requires", "imports"}) all[list] = ordered_json::array();
  for (const DeclaredInterface& one : descriptor.interfaces) all["interfaces"].push_back(asJson(one));
  for (const Element& one : descriptor.settings) all["settings"].push_back(asJson(one));
  for (const Element& one : descriptor.requirements) all["requires"].push_back(asJson(one));
  for (const auto& import : image.imports()) all["imports"].push_back(import.module);
  all["build"] = image.buildIdentifier();
  all["versionInformation"] = image.hasVersionInformation();
  std::printf("%s\n", all.dump(2, ' ', true, ordered_json::error_handler_t::replace).c_str());
}

}  // namespace

int info(const std::string& path, InfoForm form) {
  ModuleImage image;
  if (!image.open(wide(path))) return failed(path, "the file cannot be read");
  // What is made for another word size can be shown as well.
  if (const auto fault = image.fault(); fault && !image.descriptor()) return failed(path, fault->detail);
  if (!image.descriptor()) return failed(path, "it has no descriptor");
  try {
    const Descriptor descriptor = readDescriptor(*image.descriptor());
    if (form == InfoForm::Xml) std::printf("%s", xmlbinc::writeXml(descriptor.tree).c_str());
    if (form == InfoForm::Json) printJson(path, descriptor, image);
    if (form == InfoForm::Table) printTable(descriptor, image);
  } catch (const xmlbinc::InputError& error) {
    return failed(path, "its descriptor is malformed at byte " + std::to_string(error.offset()) + ": " + error.what());
  }
  return 0;
}

}  // namespace corvix::tool
