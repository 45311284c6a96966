#include "tools/xmlbinc/DescriptorRules.h"

#include "tools/xmlbinc/NumberText.h"
#include "tools/xmlbinc/Suggestion.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>

namespace corvix::xmlbinc {

namespace {

bool contains(std::span<const std::string_view> words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> items;
  for (std::size_t start = 0;;) {
    const std::size_t end = text.find(separator, start);
    items.push_back(text.substr(start, end - start));
    if (end == text.npos) return items;
    start = end + 1;
  }
}

struct Identifier {
  std::vector<std::int64_t> words;
  std::string_view rest;  ///< what was not read
};

/// Four numbers at most, separated by commas; blanks may stand before a number but not before a comma.
Identifier parseIdentifier(std::string_view text) {
  Identifier identifier{{}, text};
  while (const auto number = parseNumber(identifier.rest)) {
    identifier.words.push_back(number->value);
    identifier.rest.remove_prefix(number->length);
    if (identifier.words.size() == 4 || !identifier.rest.starts_with(',')) break;
    identifier.rest.remove_prefix(1);
  }
  return identifier;
}

void checkFilled(const Attribute& attribute, Findings& findings) {
  if (attribute.value.empty()) findings.warn(attribute.offset, attribute.name + " is empty");
}

void checkIdentifier(const Attribute& attribute, Findings& findings) {
  const Identifier identifier = parseIdentifier(attribute.value);
  const std::string label = attribute.name + ' ' + quoted(attribute.value);
  for (std::size_t i = 0; i < identifier.words.size(); ++i) {
    const std::int64_t word = identifier.words[i];
    if (word >= std::numeric_limits<std::int32_t>::min() && word <= std::numeric_limits<std::uint32_t>::max()) continue;
    findings.warn(attribute.offset, label + ": number " + std::to_string(i + 1) + " does not fit 32 bits");
  }
  if (identifier.words.size() == 4) {
    if (isXmlSpace(identifier.rest)) return;
    findings.warn(attribute.offset, label + ": what follows the fourth number is ignored");
    return;
  }
  const std::size_t comma = identifier.rest.find_first_not_of(" \t\n\r");
  const bool blankBeforeComma = comma != 0 && comma != identifier.rest.npos && identifier.rest[comma] == ',';
  findings.warn(attribute.offset,
                label + ": " + std::to_string(identifier.words.size()) +
                    (identifier.words.size() == 1 ? " number" : " numbers") +
                    " can be read, four are needed, separated by commas; without them the entry is skipped" +
                    (blankBeforeComma ? " (no blank may stand before a comma)" : ""));
}

void checkOrder(const Attribute& attribute, Findings& findings) {
  // "Hight" is the framework's own spelling.
  static constexpr std::string_view kWords[] = {"Low", "Default", "Hight"};
  for (const std::string_view word : kWords) {
    if (lowered(word) == lowered(attribute.value)) return;
  }
  if (isInteger(attribute.value)) return;
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                      " is neither \"Low\", \"Default\" or \"Hight\" nor a number" +
                                      suggestion(attribute.value, kWords));
}

void checkVersion(const Attribute& attribute, Findings& findings) {
  const auto parts = split(attribute.value, '.');
  const bool isVersion = std::all_of(parts.begin(), parts.end(), [](std::string_view part) {
    return !part.empty() && part.find_first_not_of("0123456789") == part.npos;
  });
  if (isVersion) return;
  findings.warn(attribute.offset,
                attribute.name + ' ' + quoted(attribute.value) + " is not numbers with dots between, such as \"1.2\"");
}

void checkSettingType(const Attribute& attribute, Findings& findings) {
  static constexpr std::string_view kTypes[] = {"integer", "float", "bool", "enum", "string", "int"};
  if (contains(kTypes, attribute.value)) return;
  findings.warn(attribute.offset, "unknown setting type " + quoted(attribute.value) +
                                      ", the value will be kept as text" + suggestion(attribute.value, kTypes));
}

void checkVisible(const Attribute& attribute, Findings& findings) {
  static constexpr std::string_view kKinds[] = {"check", "List", "text", "false"};
  if (contains(kKinds, attribute.value)) return;
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                      " is none of \"check\", \"List\", \"text\" and \"false\"" +
                                      suggestion(attribute.value, kKinds));
}

void checkInterface(const Element& element, Findings& findings) {
  const Identifier identifier = parseIdentifier(element.value("GUID"));
  if (identifier.words.size() != 4) return;
  std::string key = "interface " + std::string(element.value("Name"));
  for (const std::int64_t word : identifier.words) key += ',' + std::to_string(static_cast<std::uint32_t>(word));
  if (findings.seen.insert(key).second) return;
  findings.warn(element.offset,
                "the interface " + quoted(element.value("Name")) + " is declared twice with the same identifier");
}

void checkEnum(const Element& element, const Attribute& values, Findings& findings) {
  const auto items = split(values.value, '|');
  const std::string label = "Values " + quoted(values.value) + ": ";
  std::unordered_set<std::string_view> before;
  for (const std::string_view item : items) {
    if (item.empty()) {
      findings.warn(values.offset, label + "an item is empty");
    } else if (!before.insert(item).second) {
      findings.warn(values.offset, label + quoted(item) + " is given twice");
    } else if (isXmlSpace(item.front()) || isXmlSpace(item.back())) {
      findings.warn(values.offset, label + "the blanks of " + quoted(item) + " belong to the item");
    }
  }
  const Attribute* data = element.find("Data");
  if (data == nullptr || contains(items, data->value)) return;
  findings.warn(data->offset, "the enum's Data " + quoted(data->value) + " is not among its Values " +
                                  quoted(values.value) + suggestion(data->value, items));
}

bool isBool(std::string_view text) { return text == "true" || text == "false"; }

void checkSetting(const Element& element, Findings& findings) {
  struct TypeRow {
    std::string_view type;
    bool (*holds)(std::string_view);
    std::string_view wanted;
  };
  static constexpr TypeRow kRows[] = {{"integer", isInteger, "a 32-bit number, decimal, or hexadecimal after \"0x\""},
                                      {"float", isFloat, "a decimal number"},
                                      {"bool", isBool, "\"true\" or \"false\", in small letters"},
                                      {"enum", nullptr, ""}};
  const std::string_view type = element.value("Type");
  const Attribute* data = element.find("Data");
  for (const TypeRow& row : kRows) {
    if (row.type != type) continue;
    if (data == nullptr) {
      findings.warn(element.offset, "a setting of type " + quoted(type) + " without Data has no default");
    } else if (row.holds != nullptr && !row.holds(data->value)) {
      findings.warn(data->offset, "Data " + quoted(data->value) + " is not " + std::string(row.wanted) +
                                      ", as the type " + quoted(type) + " needs it");
    }
  }
  if (type == "enum") {
    const Attribute* values = element.find("Values");
    if (values != nullptr && !values->value.empty()) {
      checkEnum(element, *values, findings);
    } else {
      findings.warn(element.offset, "a setting of type \"enum\" needs Values, such as \"Fast|Normal|Best\"");
    }
  }

  const std::string_view group = element.value("Group");
  const std::string_view item = element.value("Item");
  if (group.empty() || item.empty()) return;
  // Settings are kept in registry keys, which do not tell capital from small letters.
  if (findings.seen.insert("setting " + lowered(group) + '\n' + lowered(item)).second) return;
  findings.warn(element.offset, "the setting " + quoted(item) + " of the group " + quoted(group) +
                                    " is declared twice (capital and small letters count as the same)");
}

constexpr AttributeRule kRootAttributes[] = {
    {"Version", "\"1.00\" is the current one"},
};

constexpr AttributeRule kPluginAttributes[] = {
    {"GUID", "the plug-in will not be registered", checkIdentifier},
    {"Manufacturer", "users cannot tell whose plug-in it is"},
    {"Name", ""},
    {"Version", ""},
    {"SdkVersion", ""},  // these three are set by the build
    {"SdkCompiler", ""},
    {"SdkBits", ""},
};

constexpr AttributeRule kInterfaceAttributes[] = {
    {"Name", "no one can ask for the interface", checkFilled},
    {"GUID", "the interface will be skipped", checkIdentifier},
    {"sHumanName", ""},
    {"Order", "", checkOrder},
};

constexpr AttributeRule kRequiresAttributes[] = {
    {"Interface", "nothing will be required", checkFilled},
    {"MinVersion", "", checkVersion},
};

constexpr AttributeRule kSettingAttributes[] = {
    {"Group", "it counts as empty", checkFilled},
    {"Item", "it counts as empty", checkFilled},
    {"Type", "the value will be kept as text", checkSettingType},
    {"Values", ""},
    {"Data", ""},
    {"Visible", "", checkVisible},
    {"path", ""},
    {"comment", ""},
};

constexpr ElementRule kRules[] = {
    {"CorvixRC", "", "", kRootAttributes},
    {"Plugin", "CorvixRC", "nothing will be registered", kPluginAttributes},
    {"Interface", "Plugin", "", kInterfaceAttributes, checkInterface},
    {"Setting", "Plugin", "", kSettingAttributes, checkSetting},
    {"Requires", "Plugin", "", kRequiresAttributes},
};

}  // namespace

const Attribute* Element::find(std::string_view attribute) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [attribute](const Attribute& candidate) { return candidate.name == attribute; });
  return found == attributes.end() ? nullptr : &*found;
}

std::string_view Element::value(std::string_view attribute) const {
  const Attribute* found = find(attribute);
  return found == nullptr ? std::string_view() : found->value;
}

std::span<const ElementRule> descriptorRules() { return kRules; }

}  // namespace corvix::xmlbinc
