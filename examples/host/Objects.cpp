#include "examples/host/Objects.h"

#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "tools/xmlbinc/Suggestion.h"

#include <algorithm>

namespace host {

using namespace corvix;

namespace {

// Every class that an object is one of, in the order of a query that finds nothing.
class Classes final : public QueryVisitor {
 public:
  explicit Classes(IBSmartObject& object) { object.query(PlainIdentifier(ClassWords{}), this); }
  void enter(const stype_info& info, void*) override {
    const bool isKnown = std::any_of(found.begin(), found.end(), [&](const auto* other) { return *other == info; });
    if (!isKnown) found.push_back(&info);
  }
  void leave() override {}

  std::vector<const stype_info*> found;
};

// One object of a name, and who made it.
struct Made {
  IPluginInterface* entry = nullptr;
  Ref<IBSmartObject> object;
};

Made makeFirst(IPluginManager& manager, const std::wstring& name) {
  const auto entries = Ref<IBCollection>::adopt(manager.findByName(name.c_str()));
  for (i32 i = 0; entries && i < entries->count(); ++i) {
    IPluginInterface& entry = *query<IPluginInterface>(entries->item(i));
    if (auto object = Ref<IBSmartObject>::adopt(entry.createObject())) return {&entry, std::move(object)};
  }
  return {};
}

// The names under which modules declare what the object answers to.
std::string declaredNames(IPluginManager& manager, IBSmartObject& object) {
  std::string names;
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    const IPluginInterface& other = *manager.interfaceAt(i);
    if (object.query(other.identifier())) names += (names.empty() ? "" : ", ") + shown(other.name());
  }
  return names;
}

void printMade(const Made& made) {
  std::printf("%s, a %s, made by %s\n", shown(made.entry->name()).c_str(),
              shown(made.object->typeInfo().classNameW()).c_str(), fileName(made.entry->module()->path()).c_str());
}

int createNamed(IPluginManager& manager, const std::wstring& name) {
  Made made = makeFirst(manager, name);
  if (!made.entry) {
    explainNoObject(manager, name.c_str());
    return 1;
  }
  printMade(made);
  Table table({"It answers to", "Identifier"});
  for (const stype_info* info : Classes(*made.object).found) table.add({info->className(), identifierText(*info)});
  table.print();
  const std::string names = declaredNames(manager, *made.object);
  if (!names.empty()) std::printf("  It answers to the identifiers declared for %s.\n", names.c_str());
  if (!made.object->query(made.entry->identifier()))
    std::printf("  It does not answer to its own declared identifier, %s.\n",
                identifierText(made.entry->identifier()).c_str());
  std::printf("  Released, it is %s.\n",
              made.object.detach()->release() ? "gone" : "kept by others, as what there is only one of");
  return 0;
}

// `interfaceName` is that of a class, an identifier, or what a module declares.
bool answersTo(IPluginManager& manager, IBSmartObject& object, const std::wstring& interfaceName) {
  const auto& classes = Classes(object).found;
  if (std::any_of(classes.begin(), classes.end(),
                  [&](const auto* info) { return info->classNameW() == interfaceName; }))
    return true;
  if (const auto words = parseClassWords(interfaceName.c_str(), interfaceName.size()))
    return object.query(PlainIdentifier(*words)) != nullptr;
  const auto entries = Ref<IBCollection>::adopt(manager.findByName(interfaceName.c_str()));
  for (i32 i = 0; entries && i < entries->count(); ++i) {
    if (object.query(query<IPluginInterface>(entries->item(i))->identifier())) return true;
  }
  return false;
}

int explain(IPluginManager& manager, const std::wstring& name, const std::wstring& interfaceName) {
  const Made made = makeFirst(manager, name);
  if (!made.entry) {
    explainNoObject(manager, name.c_str());
    return 1;
  }
  printMade(made);
  if (interfaceName.empty() || answersTo(manager, *made.object, interfaceName)) {
    std::printf("  All is well%s.\n", interfaceName.empty() ? "" : ": it answers to that interface");
    return 0;
  }
  std::string classes;
  for (const stype_info* info : Classes(*made.object).found)
    classes += (classes.empty() ? "" : ", ") + std::string(info->className());
  std::fprintf(stderr, "corvix-host: the object answers to no %s, only to: %s.\n", shown(interfaceName).c_str(),
               classes.c_str());
  return 1;
}

}  // namespace

std::string fileName(const wchar_t* path) {
  const std::wstring_view text = path;
  return shown(text.substr(text.find_last_of(L"\\/") + 1));
}

std::string whyNot(IPluginInterface& entry) {
  const ICreationReport* const report = query<ICreationReport>(&entry);
  return report ? shown(report->reason(), kSentence) : "";
}

std::string identifierText(const stype_info& identifier) {
  std::string text = identifier.text();
  text.pop_back();  // the blank at the end
  return text;
}

void explainNoObject(IPluginManager& manager, const wchar_t* name) {
  if (const auto entries = Ref<IBCollection>::adopt(manager.findByName(name))) {
    std::fprintf(stderr, "corvix-host: no object \"%s\" can be made.\n", shown(name).c_str());
    for (i32 i = 0; i < entries->count(); ++i) {
      IPluginInterface& entry = *query<IPluginInterface>(entries->item(i));
      std::fprintf(stderr, "  %s: %s\n", shown(entry.module()->path(), kSentence).c_str(), whyNot(entry).c_str());
    }
    return;
  }
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(manager.interfaceCount()));
  for (i32 i = 0; i < manager.interfaceCount(); ++i) names.push_back(shown(manager.interfaceAt(i)->name()));
  const std::vector<std::string_view> known(names.begin(), names.end());
  std::fprintf(stderr, "corvix-host: no module declares \"%s\"%s\n", shown(name).c_str(),
               xmlbinc::suggestion(utf8(name), known).c_str());
  std::fprintf(stderr,
               "  \"corvix-host list\" shows all names. Is the plug-in in the folder \"plugins\" beside the "
               "program, or in one given with --plugins?\n");
  for (i32 i = 0; i < manager.moduleCount(); ++i) {
    const IPluginModule& module = *manager.moduleAt(i);
    if (module.state() == ModuleState::Failed)
      std::fprintf(stderr, "  What %s declares is unknown: %s\n", fileName(module.path()).c_str(),
                   shown(module.reason(), kSentence).c_str());
  }
}

const Command createCommand("create", "Make an object by its name and show what it answers to",
                            {{"name", "As a module declares it: \"create Example.Greeter\""}},
                            [](Host& host, const Texts& given) { return createNamed(host.manager(), wide(given[0])); });
const Command explainCommand(
    "explain", "Say why there is no object of a name, or not of that interface",
    {{"name", "As a module declares it"},
     {"interface", "A class such as IGreeter, an identifier, or a declared name", Argument::Optional}},
    [](Host& host, const Texts& given) { return explain(host.manager(), wide(given[0]), wide(given[1])); });

}  // namespace host
