#include "tools/xmlbinc/DescriptorRules.h"

#include "shell/menus/KeyNames_p.h"
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

/// Those who look for a family compare its prefix exactly.
void checkFamily(const Element& element, Findings& findings);

void checkInterface(const Element& element, Findings& findings) {
  checkFamily(element, findings);
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

void checkPattern(const Attribute& attribute, Findings& findings) {
  for (const std::string_view one : split(attribute.value, ';')) {
    if (one.empty() || one.find_first_of("\\/:|<>\" ") != one.npos) {
      findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                          " is not file names with * and ?, such as \"*.jpg;*.jpeg\"");
      return;
    }
  }
}

// Bytes of two hexadecimal digits, or ".." for any; no more than the library compares.
bool isMagic(std::string_view text) {
  constexpr std::size_t kMostDigits = 128;
  if (text.empty() || text.size() % 2 != 0 || text.size() > kMostDigits) return false;
  bool tells = false;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    if (text.substr(i, 2) == "..") continue;
    if (text.substr(i, 2).find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos) return false;
    tells = true;
  }
  return tells;
}

void checkMagic(const Attribute& attribute, Findings& findings) {
  std::string_view rest = attribute.value;
  for (;;) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    if (!isMagic(rest.substr(0, end))) {
      findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                          " is not 1 to 64 bytes of two hexadecimal digits each, such as \"89504E47\"");
      return;
    }
    if (end == rest.size()) return;
    rest.remove_prefix(end + 1);
  }
}

void checkOneOf(const Attribute& attribute, std::span<const std::string_view> words, Findings& findings) {
  if (contains(words, attribute.value)) return;
  std::string all;
  for (const std::string_view word : words) all += (all.empty() ? "" : ", ") + quoted(word);
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) + " is none of " + all +
                                      suggestion(attribute.value, words));
}

void checkAccess(const Attribute& attribute, Findings& findings) {
  static constexpr std::string_view kWords[] = {"r", "w", "rw"};
  checkOneOf(attribute, kWords, findings);
}

void checkScheme(const Element& element, Findings& findings) {
  const std::string_view name = element.value("Name");
  if (lowered(name.substr(name.find('.') + 1)) != name.substr(name.find('.') + 1))
    findings.warn(element.find("Name")->offset,
                  "the scheme of " + quoted(name) + " has capital letters: suppliers are asked for in small ones");
}

constexpr AttributeRule kFormatAttributes[] = {
    {"Pattern", "", checkPattern},
    {"Magic", "", checkMagic},
    {"Access", "no one knows whether it reads or writes: \"r\", \"w\" or \"rw\"", checkAccess},
};

void checkWholeNumber(const Attribute& attribute, Findings& findings) {
  if (isInteger(attribute.value)) return;
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) + " is not a whole number");
}

/// Words with "and" between, each with "!" before it or not.
void checkWhen(const Attribute& attribute, Findings& findings) {
  bool wantsWord = true;
  for (std::string_view word : split(attribute.value, ' ')) {
    if (word.empty()) continue;
    const bool isAnd = word == "and";
    if (word.starts_with('!')) word.remove_prefix(1);
    if (isAnd == wantsWord || word.empty() || word.find_first_of("!&|()") != word.npos) {
      findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                          " is not words with \"and\" between, such as \"document.paged and !busy\"");
      return;
    }
    wantsWord = isAnd;
  }
  if (wantsWord) findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) + " ends too early");
}

void checkSide(const Attribute& attribute, Findings& findings) {
  static constexpr std::string_view kSides[] = {"left", "right", "top", "bottom"};
  checkOneOf(attribute, kSides, findings);
}

void checkTruth(const Attribute& attribute, Findings& findings) {
  static constexpr std::string_view kWords[] = {"true", "false"};
  checkOneOf(attribute, kWords, findings);
}

constexpr AttributeRule kViewFamily[] = {
    {"For", "", checkWhen},
};

constexpr AttributeRule kPanelFamily[] = {
    {"Text", "", checkFilled}, {"Side", "", checkSide},   {"Size", "", checkWholeNumber},
    {"When", "", checkWhen},   {"Shown", "", checkTruth},
};

constexpr FamilyRule kFamilies[] = {
    {"Actions.", {}},
    {"CommandLine.", {}},
    {"Dialog.", {}},
    {"DocFormat.", kFormatAttributes},
    {"DocumentView.", kViewFamily},
    {"GlobalEvent.", {}},
    {"LangPackage.", {}},
    {"Panel.", kPanelFamily},
    {"Supplier.", {}, checkScheme},
};

void checkFamily(const Element& element, Findings& findings) {
  const std::string_view name = element.value("Name");
  const std::size_t dot = name.find('.');
  if (dot == name.npos) return;
  const std::string_view prefix = name.substr(0, dot + 1);
  for (const FamilyRule& family : kFamilies) {
    if (prefix == family.prefix) {
      if (name.size() == prefix.size())
        findings.warn(element.find("Name")->offset, "Name " + quoted(name) + " lacks what follows the dot");
      if (family.check != nullptr) family.check(element, findings);
    } else if (lowered(prefix) == lowered(family.prefix)) {
      findings.warn(element.find("Name")->offset, "Name " + quoted(name) + " is not found by who looks for " +
                                                      quoted(family.prefix) + ": letter case counts");
    }
  }
}

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

constexpr ElementRule kDescriptorRules[] = {
    {"CorvixRC", "", "", kRootAttributes},
    {"Plugin", "CorvixRC", "nothing will be registered", kPluginAttributes},
    {"Interface", "Plugin", "", kInterfaceAttributes, checkInterface},
    {"Setting", "Plugin", "", kSettingAttributes, checkSetting},
    {"Requires", "Plugin", "", kRequiresAttributes},
};

void checkAction(const Attribute& attribute, Findings& findings) {
  constexpr std::string_view kPrefix = "Actions.";
  if (attribute.value.starts_with(kPrefix) && attribute.value.size() > kPrefix.size()) return;
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) + " is not \"Actions.\" and a name");
}

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

void checkKey(const Attribute& attribute, Findings& findings) {
  const auto isIn = [](std::span<const std::string_view> names, std::string_view name) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view one) { return lowered(one) == lowered(name); });
  };
  const auto isKey = [&](std::string_view name) {
    if (name.size() == 1) return name.find_first_not_of(kAlphabet) == name.npos;
    const auto number = lowered(name.substr(0, 1)) == "f" ? parseNumber(name.substr(1)) : std::nullopt;
    if (number && number->length + 1 == name.size() && name[1] >= '1' && name[1] <= '9')
      return number->value <= kFunctionKeys;
    return isIn(kKeyNames, name);
  };
  const auto parts = split(attribute.value, '+');
  const bool isRight = std::all_of(parts.begin(), parts.end() - 1, [&](auto one) { return isIn(kModifierNames, one); });
  if (isRight && isKey(parts.back())) return;
  findings.warn(attribute.offset, attribute.name + ' ' + quoted(attribute.value) +
                                      " is not a key behind Ctrl+, Alt+ or Shift+, such as \"Ctrl+Plus\"" +
                                      suggestion(parts.back(), kKeyNames));
}

/// Two items of one action may say the same key.
void checkItem(const Element& element, Findings& findings) {
  const Attribute* key = element.find("Key");
  if (key == nullptr) return;
  const std::string claim = "key " + lowered(key->value);
  const bool isNew = findings.seen.insert("of " + std::string(element.value("Action")) + ' ' + claim).second;
  if (isNew && !findings.seen.insert(claim).second)
    findings.warn(key->offset, "the key " + quoted(key->value) + " belongs to an item before this one");
}

constexpr AttributeRule kMenuAttributes[] = {
    {"Name", "no one can ask for it", checkFilled},
};

constexpr AttributeRule kPopupAttributes[] = {
    {"Id", "it is left out", checkFilled},
    {"Text", ""},
    {"Order", "", checkWholeNumber},
    {"Group", "", checkWholeNumber},
    {"When", "", checkWhen},
};

constexpr AttributeRule kItemAttributes[] = {
    {"Action", "it is left out", checkAction},
    {"Text", ""},
    {"Icon", "", checkFilled},
    {"Key", "", checkKey},
    {"Order", "", checkWholeNumber},
    {"Group", "", checkWholeNumber},
    {"When", "", checkWhen},
};

constexpr ElementRule kMenuRules[] = {
    {"CorvixRC", "", "", kRootAttributes},
    {"Menu", "CorvixRC", "", kMenuAttributes},
    {"Toolbar", "CorvixRC", "", kMenuAttributes},
    {"Popup", "Menu Popup", "", kPopupAttributes},
    {"Item", "Menu Toolbar Popup", "", kItemAttributes, checkItem},
};

constexpr AttributeRule kViewAttributes[] = {
    {"Name", "no one can ask for it", checkFilled},
    {"For", "", checkWhen},
};

constexpr AttributeRule kPanelAttributes[] = {
    {"Name", "no one can ask for it", checkFilled},
    {"Text", "it has no caption", checkFilled},
    {"Side", "", checkSide},
    {"Size", "", checkWholeNumber},
    {"When", "", checkWhen},
    {"Shown", "", checkTruth},
};

constexpr ElementRule kViewRules[] = {
    {"CorvixRC", "", "", kRootAttributes},
    {"View", "CorvixRC", "", kViewAttributes},
    {"Panel", "CorvixRC", "", kPanelAttributes},
};

void checkLanguageCode(const Attribute& attribute, Findings& findings) {
  constexpr std::size_t kLongest = 32;
  const std::string_view code = attribute.value;
  const bool isCode = code.find_first_not_of(std::string(kAlphabet) + '-') == code.npos;
  if (isCode && !code.empty() && code.front() != '-' && code.back() != '-' && code.size() <= kLongest) return;
  findings.warn(attribute.offset,
                attribute.name + ' ' + quoted(code) + " is no language's, such as \"de\" or \"de-AT\"");
}

// "%1" to "%9" in a text, as digits in order.
std::string placesIn(std::string_view text) {
  std::string places;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] == '%' && text[i + 1] >= '1' && text[i + 1] <= '9') places += text[i + 1];
  }
  std::sort(places.begin(), places.end());
  return places;
}

void checkTranslation(const Element& element, Findings& findings) {
  const std::string_view from = element.value("From"), in = element.value("In"), to = element.value("To");
  if (!to.empty() && placesIn(from) != placesIn(to))
    findings.warn(element.offset, "the translation " + quoted(to) + " has other places (\"%1\") than " + quoted(from) +
                                      ", and is not used");
  if (from.empty() || findings.seen.insert("text " + std::string(in) + '\n' + std::string(from)).second) return;
  findings.warn(element.offset, "the text " + quoted(from) + (in.empty() ? "" : " in " + quoted(in)) +
                                    " is translated before; only the first is read");
}

constexpr AttributeRule kLanguageAttributes[] = {
    {"Code", "nobody knows which language it is", checkLanguageCode},
    {"Name", "users are shown its code", checkFilled},
    {"Manufacturer", ""},
    {"Version", ""},
};

constexpr AttributeRule kTextAttributes[] = {
    {"From", "it is left out", checkFilled},
    {"To", "it is left out", checkFilled},
    {"In", "", checkFilled},
};

constexpr ElementRule kLanguageRules[] = {
    {"CorvixRC", "", "", kRootAttributes},
    {"Language", "CorvixRC", "there are no texts", kLanguageAttributes},
    {"Text", "Language", "", kTextAttributes, checkTranslation},
};

constexpr Form kForms[] = {
    {"PLUGININFO", kDescriptorRules},
    {"LANGUAGE", kLanguageRules},
    {"MENUTEMPL", kMenuRules},
    {"VIEWTEMPLATES", kViewRules},
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

bool ElementRule::belongsIn(std::string_view parent) const { return contains(split(parents, ' '), parent); }

const Form* formOf(std::string_view resource) {
  const auto found =
      std::find_if(std::begin(kForms), std::end(kForms), [=](const Form& form) { return form.resource == resource; });
  return found == std::end(kForms) ? nullptr : found;
}

const Form& formWith(std::string_view element) {
  const auto hasIt = [=](const Form& form) {
    return std::any_of(form.rules.begin(), form.rules.end(), [&](const ElementRule& rule) {
      return rule.name == element && rule.belongsIn(form.rules.front().name);
    });
  };
  const auto found = std::find_if(std::begin(kForms), std::end(kForms), hasIt);
  return found == std::end(kForms) ? kForms[0] : *found;
}

const FamilyRule* familyOf(std::string_view interfaceName) {
  const auto found = std::find_if(std::begin(kFamilies), std::end(kFamilies),
                                  [=](const FamilyRule& family) { return interfaceName.starts_with(family.prefix); });
  return found == std::end(kFamilies) ? nullptr : found;
}

}  // namespace corvix::xmlbinc
