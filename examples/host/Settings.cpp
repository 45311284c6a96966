#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/ShellDisplay.h"

#include <CLI/CLI.hpp>

#include <optional>

namespace host {

using namespace corvix;

namespace {

struct Setting {
  IBSettings& settings;
  std::wstring group;
  std::wstring item;

  std::string attribute(const wchar_t* name) const {
    WideString text;
    settings.getAttribute(group.c_str(), item.c_str(), name, text);
    return utf8(text);
  }

  std::vector<std::string> choices() const {
    return attribute(L"Type") == "enum" ? CLI::detail::split(attribute(L"Values"), '|') : std::vector<std::string>{};
  }

  // As a user would write it.
  std::string show(const Variant& value) const {
    const std::vector<std::string> items = choices();
    const auto number = static_cast<std::size_t>(value.integer());
    if (value.tag() == Variant::Tag::Bool) return value.truth() ? "true" : "false";
    if (value.tag() == Variant::Tag::Integer && number >= 1 && number <= items.size()) return items[number - 1];
    return utf8(value.toText());
  }

  std::optional<Variant> current() const {
    Variant value;
    return settings.getValue(group.c_str(), item.c_str(), value) ? std::optional(value) : std::nullopt;
  }
};

std::string join(const std::vector<std::string>& texts) { return CLI::detail::join(texts, ", "); }

// What a text means for the setting's type; nothing, and a message, when it means nothing.
std::optional<Variant> parse(const Setting& setting, const std::string& text) {
  const std::string type = setting.attribute(L"Type");
  const std::vector<std::string> items = setting.choices();
  std::string wanted;
  if (type == "bool") {
    if (text == "true" || text == "false") return Variant(text == "true");
    wanted = "true or false";
  } else if (type == "enum") {
    const auto found = std::find(items.begin(), items.end(), text);
    if (found != items.end()) return Variant(static_cast<i32>(found - items.begin()) + 1);
    wanted = "one of: " + join(items);
  } else if (type == "integer") {
    i32 number = 0;
    if (CLI::detail::lexical_cast(text, number)) return Variant(number);
    wanted = "a whole number of at most 32 bits";
  } else if (type == "float") {
    double number = 0;
    if (CLI::detail::lexical_cast(text, number)) return Variant(number);
    wanted = "a number";
  } else {
    return Variant(wide(text));
  }
  std::fprintf(stderr, "corvix-host: \"%s\" is no value for %s\\%s, which takes %s.\n", text.c_str(),
               utf8(setting.group).c_str(), utf8(setting.item).c_str(), wanted.c_str());
  return std::nullopt;
}

int unknown(const Setting& setting) {
  std::fprintf(stderr, "corvix-host: there is no setting %s\\%s; \"corvix-host settings list\" shows them all.\n",
               utf8(setting.group).c_str(), utf8(setting.item).c_str());
  return 1;
}

int listSettings(IShell& shell) {
  IBSettings& settings = *shell.settings();
  Table table({"Group", "Item", "Type", "Value", "Default", "Choices", "Comment"});
  for (i32 g = 0; g < settings.groupCount(); ++g) {
    const wchar_t* const group = settings.groupAt(g);
    for (i32 i = 0; i < settings.itemCount(group); ++i) {
      const Setting setting{settings, group, settings.itemAt(group, i)};
      Variant standard;
      settings.getDefault(setting.group.c_str(), setting.item.c_str(), standard);
      const auto cell = [](const std::string& text) { return shown(wide(text), 200); };
      table.add({shown(setting.group), shown(setting.item), cell(setting.attribute(L"Type")),
                 cell(setting.show(setting.current().value_or(Variant()))), cell(setting.show(standard)),
                 cell(join(setting.choices())), cell(setting.attribute(L"comment"))});
    }
  }
  table.print();
  return 0;
}

int getSetting(IShell& shell, const std::string& group, const std::string& item) {
  const Setting setting{*shell.settings(), wide(group), wide(item)};
  const std::optional<Variant> value = setting.current();
  if (!value) return unknown(setting);
  std::printf("%s\n", setting.show(*value).c_str());
  return 0;
}

int saveSettings(IShell& shell) {
  const IBSettings& settings = *shell.settings();
  i32 count = 0;
  for (i32 g = 0; g < settings.groupCount(); ++g) count += settings.itemCount(settings.groupAt(g));
  const i32 saved = shell.pluginManager()->saveSettings();
  std::printf("%d settings saved\n", saved);
  if (saved >= count) return 0;
  std::fprintf(stderr,
               "corvix-host: %d settings could not be written to the registry. Is the program's path longer than 255 "
               "characters, or is the user not allowed to write there?\n",
               count - saved);
  return 1;
}

int setSetting(IShell& shell, const std::string& group, const std::string& item, const std::string& text) {
  const ShellDisplay display(shell);
  const Setting setting{*shell.settings(), wide(group), wide(item)};
  if (!setting.current()) return unknown(setting);
  const std::optional<Variant> value = parse(setting, text);
  if (!value) return 1;
  setting.settings.onStartChanges();
  setting.settings.setValue(setting.group.c_str(), setting.item.c_str(), *value);
  setting.settings.onFinishChanges();
  return saveSettings(shell);
}

// Nothing in `group` or `item`: all of them.
int resetSettings(IShell& shell, const std::string& group, const std::string& item) {
  const ShellDisplay display(shell);
  IBSettings& settings = *shell.settings();
  i32 found = 0, changed = 0;
  settings.onStartChanges();
  for (i32 g = 0; g < settings.groupCount(); ++g) {
    const wchar_t* const groupName = settings.groupAt(g);
    if (!group.empty() && wide(group) != groupName) continue;
    for (i32 i = 0; i < settings.itemCount(groupName); ++i) {
      const Setting setting{settings, groupName, settings.itemAt(groupName, i)};
      if (!item.empty() && wide(item) != setting.item) continue;
      ++found;
      Variant standard;
      if (!settings.getDefault(groupName, setting.item.c_str(), standard) || setting.current() == standard) continue;
      settings.setValue(groupName, setting.item.c_str(), standard);
      ++changed;
    }
  }
  settings.onFinishChanges();
  if (!found && !group.empty()) return unknown({settings, wide(group), item.empty() ? L"..." : wide(item)});
  std::printf("%d of %d settings had another value than their default\n", changed, found);
  return saveSettings(shell);
}

}  // namespace

const Argument kGroup{"group", "Its group"}, kItem{"item", "Its name in the group"};
const Argument kValue{"value", "true or false, a number, one of the choices, or a text; as the type has it"};

const Command settingsCommand("settings", "The user's options, kept in the registry");
const Command listCommand("settings list", "Every setting with its value, its default and its choices", {},
                          [](Host& host, const Texts&) { return listSettings(host.shell()); });
const Command getCommand("settings get", "The value of one setting", {kGroup, kItem},
                         [](Host& host, const Texts& given) { return getSetting(host.shell(), given[0], given[1]); });
const Command setCommand("settings set", "Change one setting and save", {kGroup, kItem, kValue},
                         [](Host& host, const Texts& given) {
                           return setSetting(host.shell(), given[0], given[1], given[2]);
                         });
const Command resetCommand("settings reset",
                           "Change one setting, those of a group, or all, back to the defaults and save",
                           {{"group", "Only those of this group", Argument::Optional},
                            {"item", "Only this one of the group", Argument::Optional}},
                           [](Host& host, const Texts& given) {
                             return resetSettings(host.shell(), given[0], given[1]);
                           });
const Command saveCommand("settings save", "Write all settings", {},
                          [](Host& host, const Texts&) { return saveSettings(host.shell()); });

}  // namespace host
