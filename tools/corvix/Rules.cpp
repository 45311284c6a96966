#include "tools/corvix/Rules.h"

#include <algorithm>
#include <stdexcept>

namespace corvix::tool {

namespace {

// By where they are found: in the file, while loading, while making objects, between modules.
constexpr Rule kRules[] = {
    {"not-a-module", Weight::Fault, "The file is no Windows library.", "Name a DLL that was built as a plug-in."},
    {"other-machine", Weight::Fault, "The module is made for another processor.",
     "Build it for the processor of its hosts, in their word size."},
    {"no-descriptor", Weight::Fault, "The module has no descriptor.",
     "Build it with corvix_add_plugin(), or give it the resource PLUGININFO of type PLUGININFO that xmlbinc makes."},
    {"descriptor-malformed", Weight::Fault, "The descriptor cannot be read.", "Compile it anew with xmlbinc."},
    {"descriptor-doubtful", Weight::Fault, "The descriptor says something that its author hardly means.",
     "Correct plugin.xml; xmlbinc --check shows the place."},
    {"sdk-mismatch", Weight::Fault, "The module is built for another SDK.", "Build it anew with this one."},
    {"missing-dll", Weight::Fault, "A module that it imports from is nowhere to be found.",
     "Put that module beside the plug-in or beside the program."},
    {"unusable-dll", Weight::Fault, "A module that it imports from cannot be used.",
     "Put one of its own word size in that place, whole."},
    {"missing-function", Weight::Fault, "A function that it imports is not in the module that should have it.",
     "Build both against each other, or ship the version of that module that the plug-in was built with."},
    {"static-runtime", Weight::Fault, "The compiler's run-time library is linked into the module.",
     "Link the shared one, as corvix_add_plugin() does: no -static, no -static-libstdc++. An exception that crosses "
     "modules would else end the program."},
    {"no-factory", Weight::Fault, "The module does not export queryClassFactoryLocal.",
     "Write CORVIX_PLUGIN(...) once, with a row for each interface."},
    {"load-refused", Weight::Fault, "The system cannot load the module.", "See what its DllMain does."},
    {"crash-on-load", Weight::Fault, "The module crashes while it is loaded.",
     "Look at its DllMain and at the constructors of its static objects."},
    {"static-constructor-throws", Weight::Fault, "An exception leaves the module while it is loaded.",
     "Most likely an exception leaves the constructor of a static object: catch it there, or make the object on first "
     "use."},
    {"factory-fails", Weight::Fault, "queryClassFactoryLocal gives no class factory.",
     "Let CORVIX_PLUGIN(...) write it."},
    {"row-missing", Weight::Fault, "A declared interface has no row in CORVIX_PLUGIN.",
     "Add the row, or take the Interface out of plugin.xml."},
    {"name-typo", Weight::Fault, "A row's name and the declared one differ by a little.",
     "Spell both alike: capital and small letters count."},
    {"makes-nothing", Weight::Fault, "The class factory knows the name but makes no object.",
     "Return the object, or throw what says why not."},
    {"exception-in-constructor", Weight::Fault, "Making an object throws.",
     "An object must be made on any machine: fail when it is used, with a result that says so."},
    {"crash-in-constructor", Weight::Fault, "Making an object crashes.", "Debug the object's constructor."},
    {"identifier-differs", Weight::Fault, "The object does not answer to the identifier that the descriptor declares.",
     "Write the same four words in the Interface's GUID and in CORVIX_IDENTITY of the interface, and name the "
     "interface among "
     "the bases of the object's own CORVIX_IDENTITY."},
    {"wrong-object", Weight::Fault, "The object is that of another interface.",
     "See which class stands in which row of CORVIX_PLUGIN."},
    {"reference-leaked", Weight::Fault,
     "A released object stays: somebody holds a reference and nobody will let it go.",
     "A new object has one owner, the caller: do not addRef what is returned, and let Ref hold what is kept."},
    {"released-twice", Weight::Fault, "An object is released more often than it is held.",
     "A factory that hands out one object several times calls addRef each time; an object does not release itself."},
    {"crash-on-release", Weight::Fault, "Releasing an object crashes.", "Debug its destructor."},
    {"crash-in-query", Weight::Fault, "Asking an object for its interface crashes.",
     "The object may be gone already, or its CORVIX_IDENTITY names bases that it does not have."},
    {"memory-leaked", Weight::Fault, "Every object that is made and released leaves memory behind.",
     "Look at what its constructor allocates and its destructor forgets."},
    {"thread-left", Weight::Fault, "Threads of the module still run after its objects are gone.",
     "End a thread in the destructor of the object that started it, and wait for it."},
    {"hang", Weight::Fault, "The module did not come back in time.",
     "Do not wait in DllMain and constructors; --timeout gives more time."},
    {"ended-process", Weight::Fault, "The module ended the process.", "A plug-in does not call exit."},
    {"duplicate-identifier", Weight::Fault, "Two modules have one identifier.",
     "Give each its own: xmlbinc --new-identifier prints one."},
    {"requirement-too-old", Weight::Fault, "What it needs is there in an older version only.",
     "Ship that plug-in in a newer version, or ask for less in MinVersion."},
    {"requirement-circle", Weight::Fault, "Modules need each other in a circle, and none of them can run.",
     "Take one of their Requires out of its plugin.xml."},
    {"requirement-own", Weight::Fault, "The module needs what it alone declares, and cannot run.",
     "Take that Requires out of its plugin.xml."},
    {"requirement-unseen", Weight::Note, "None of the modules named here declares what it needs.",
     "Name the plug-in that does as well: corvix check A.dll B.dll."},
    {"nothing-declared", Weight::Note, "The module declares no interface, so no object could be tried.",
     "Declare what it offers in plugin.xml."},
    {"no-build-identifier", Weight::Note, "The module has neither symbols nor a build identifier.",
     "Link with -Wl,--build-id, as corvix_add_plugin() does, so that a crash report can be read."},
    {"no-version-information", Weight::Note, "The module has no version information.",
     "Build it with corvix_add_plugin(), which takes it from the descriptor."},
};

}  // namespace

std::span<const Rule> allRules() { return kRules; }

const Rule& ruleOf(std::string_view id) {
  const auto found =
      std::find_if(std::begin(kRules), std::end(kRules), [id](const Rule& rule) { return id == rule.id; });
  if (found == std::end(kRules)) throw std::logic_error("no such rule: " + std::string(id));
  return *found;
}

}  // namespace corvix::tool
