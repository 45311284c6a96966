#!/usr/bin/env python3
"""Checks who includes whom: check_layers.py CHECKOUT

Includes point down the layers and, in the base library, down its floors; no folders include each other in a circle. A
header is public, and installed, unless it is called X_p.h; an X_p.h is private to its folder unless it is listed here.
What is outside the library includes public headers, but for those whose sources it compiles into itself.
Every source is in a build list. None asks for the compiler's type information, and one header alone has operators for
`new`.
"""
import collections
import pathlib
import re
import sys

# What each folder may include besides itself; the longest matching folder counts.
ALLOWED = {
    "core/baselib": [],
    "core/xml": ["core/baselib"],
    "core/settings": ["core/baselib", "core/xml"],
    "core/suppliers": ["core/baselib", "core/xml"],
    "graphics": ["core"],
    "shell": ["core"],
    # What the library is put together from: the only place that knows the layers on both sides.
    "library": ["core", "shell", "graphics"],
}
# Each of these stands on those before it.
FLOORS = ["core/baselib/" + room for room in
          ("heap", "text", "identity", "system", "objects", "threads", "streams", "memory")]
# Private headers that other rooms of the library need.
SHARED = """
    core/baselib/heap/AddressIndex_p.h core/baselib/memory/MemoryShell_p.h core/baselib/objects/GlobalData_p.h core/baselib/system/ApplicationKey_p.h
    core/baselib/system/FileWindow_p.h core/baselib/system/ForeignCall_p.h core/baselib/system/ProcessEnd_p.h
    core/baselib/system/KernelFile_p.h core/baselib/system/NativeSection_p.h core/baselib/system/OwningHandle_p.h core/baselib/system/PartFile_p.h core/baselib/system/UserData_p.h
    core/baselib/system/RegistryKey_p.h core/baselib/text/LatelyFound_p.h core/baselib/text/NameTable_p.h
    core/settings/BSettings_p.h core/settings/SettingsRegistry_p.h core/suppliers/InternetAgent_p.h core/suppliers/KFileSupplier_p.h
    core/suppliers/KHTTPSupplier_p.h core/suppliers/KIStreamSupplier_p.h core/xml/Attributes_p.h
    graphics/contexts/MemoryContexts_p.h graphics/creators/QuillCreators_p.h graphics/fonts/FMFontMachine_p.h
    graphics/fonts/FakeFonts_p.h graphics/fonts/FallbackFonts_p.h graphics/fonts/FontSettings_p.h graphics/fonts/GlyphCache_p.h
    graphics/gdi/Gdi_p.h graphics/gdiplus/ClipStack_p.h graphics/gdiplus/Wrappers_p.h graphics/images/AGImage_p.h
    graphics/images/ImageBits_p.h graphics/images/ImageFiles_p.h graphics/images/Recolor_p.h graphics/path/PathClip_p.h graphics/quality/Quality_p.h
    graphics/quality/QualityListener_p.h shell/actions/KActionManager_p.h
    shell/guard/EarlierStarts_p.h shell/guard/GuardedModule_p.h shell/guard/StartSentinel_p.h
    shell/guard/UserAlert_p.h shell/modules/KClassFactoryLocal_p.h
    shell/documents/manager/KDocManager_p.h shell/history/KStateHistory_p.h
    shell/language/KTranslator_p.h shell/menus/KMenuManager_p.h shell/modules/KPluginManager_p.h shell/modules/ModuleFile_p.h
    shell/services/KReport_p.h shell/services/KSecretary_p.h shell/services/KSelfReg_p.h""".split()
# What is outside the library, and the private headers, or folders of them, that it compiles the sources of into itself.
OUTSIDE = {
    "bench": [], "examples": [], "plugins": [], "sdk": [], "tools": [],
    "plugins/smooth": ["graphics"],
    "tools/corvix": ["shell/guard/KeptStack_p.h", "shell/modules/Contract_p.h"],
    "tools/xmlbinc": ["shell/menus/KeyNames_p.h"],
}
# Code that is to run anywhere, and public headers, do not name the system: its headers end in ".h", the language's do not.
PORTABLE = ["core/baselib/identity", "core/baselib/text", "core/xml"]

# Identity is ours, and so is the heap, without a word to other modules.
NOT_OURS = re.compile(r"\b(dynamic_cast\b|typeid\b|operator (new|delete)\b)")
HAS_OPERATORS = "core/baselib/heap/HeapAllocated.h"

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^">]+)[">]')


def folder_of(path):
    return path.rpartition("/")[0]


def inside(path, folder):
    return path == folder or path.startswith(folder + "/")


def room(path, rooms):
    """The longest of the rooms that the path is inside."""
    return max((folder for folder in rooms if inside(path, folder)), key=len, default=None)


def is_public(path):
    return path.endswith(".h") and not path.endswith("_p.h")


def is_above(path, target):
    """Whether the target stands on a higher floor than the includer."""
    own, other = room(path, FLOORS), room(target, FLOORS)
    return bool(own and other) and FLOORS.index(other) > FLOORS.index(own)


def listed_headers(checkout):
    """The headers that the rooms' build lists name."""
    for lists in checkout.glob("*/**/CMakeLists.txt"):
        found = re.search(r"HEADERS\s([^)]*?)(SOURCES|DRAWING|\))", lists.read_text(encoding="utf-8"))
        if found and lists.read_text(encoding="utf-8").startswith("corvix_room"):
            folder = lists.parent.relative_to(checkout).as_posix()
            yield from (f"{folder}/{name}" for name in found.group(1).split())


def circles(arrows):
    """The first circle among the folders, as a list of them; empty when there is none."""
    done, way = set(), []

    def walk(folder):
        if folder in way:
            return way[way.index(folder):] + [folder]
        if folder in done:
            return []
        way.append(folder)
        for target in sorted(arrows[folder]):
            if found := walk(target):
                return found
        done.add(way.pop())
        return []

    for folder in sorted(arrows):
        if found := walk(folder):
            return found
    return []


def sources(checkout, *folders):
    """Their paths from the root."""
    files = [path for folder in folders for path in (checkout / folder).rglob("*")]
    return sorted(path.relative_to(checkout).as_posix() for path in files if path.suffix in (".h", ".cpp"))


def unbuilt(checkout, paths):
    """Sources that no build list of their folder, one above it or in cmake/ names."""
    shared = "".join(file.read_text(encoding="utf-8") for file in checkout.glob("cmake/*.cmake"))
    for path in paths:
        above = [folder / "CMakeLists.txt" for folder in (checkout / path).parents if inside(str(folder), str(checkout))]
        lists = shared + "".join(file.read_text(encoding="utf-8") for file in above if file.is_file())
        if path.endswith(".cpp") and not re.search(rf"(?<![\w-]){re.escape(path.rpartition('/')[2])}", lists):
            yield path


def includes(line, checkout):
    """(header of the checkout, None), (None, header of others), or a pair of None."""
    found = INCLUDE.match(line)
    if not found:
        return None, None
    bracket, target = found.groups()
    return (None, target) if bracket == "<" and not (checkout / target).is_file() else (target, None)


def fault_of_include(path, target):
    """What is wrong when a source of the library includes a header of the checkout, or None."""
    own = room(path, ALLOWED)
    if not inside(target, own) and not any(inside(target, folder) for folder in ALLOWED[own]):
        return f"{target} is not below {own}"
    if is_above(path, target):
        return f"{target} stands on a floor above"
    if target.endswith("_p.h") and target not in SHARED and not inside(path, folder_of(target)):
        return f"{target} is private to its folder"
    if is_public(path) and not is_public(target):
        return f"a public header needs {target}, which is not public"
    return None


def fault_of_system(path, header):
    """What is wrong when it includes one of others, or None."""
    if header.endswith(".h"):
        if any(inside(path, folder) for folder in PORTABLE):
            return "names the system in code that is to run anywhere"
        if is_public(path):
            return "names the system in a public header"
    return None


def faults(checkout):
    listed = set(listed_headers(checkout))
    arrows = collections.defaultdict(set)
    shared = set()
    paths = sources(checkout, "core", "shell", "graphics", "library")
    for path in paths:
        if is_public(path) != (path in listed):
            yield f"{path}:1: {'is not in the build list of its folder' if is_public(path) else 'is listed, though private'}"
        if path.startswith("core/baselib/") and path.count("/") > 2 and not room(path, FLOORS):
            yield f"{path}:1: its folder is none of the floors"
        for number, line in enumerate((checkout / path).read_text(encoding="utf-8").splitlines(), 1):
            here = f"{path}:{number}:"
            if path != HAS_OPERATORS and (word := NOT_OURS.search(line.split("//")[0])):
                yield f"{here} {word.group(1)}: identity and the heap are our own"
            target, other = includes(line, checkout)
            if target and not (checkout / target).is_file():
                yield f"{here} {target} is not spelt from the root"
            elif target:
                if folder_of(target) != folder_of(path):
                    arrows[folder_of(path)].add(folder_of(target))
                if not inside(path, folder_of(target)):
                    shared.add(target)
                if fault := fault_of_include(path, target):
                    yield f"{here} {fault}"
            elif other and (fault := fault_of_system(path, other)):
                yield f"{here} {fault}"
    for header in sorted(set(SHARED) - shared):
        yield f"{header}: is shared by this check, but nobody outside its folder includes it"
    outside = sources(checkout, *(folder for folder in OUTSIDE if "/" not in folder))
    for path in unbuilt(checkout, paths + outside):
        yield f"{path}:1: no build list names it"
    for path in outside:
        own = room(path, OUTSIDE)
        for number, line in enumerate((checkout / path).read_text(encoding="utf-8").splitlines(), 1):
            target, _ = includes(line, checkout)
            if not target or not (checkout / target).is_file() or folder_of(target) == folder_of(path):
                continue
            arrows[folder_of(path)].add(folder_of(target))
            if target.endswith("_p.h") and not any(inside(target, compiled) for compiled in OUTSIDE[own]):
                yield f"{path}:{number}: {target} is private to its folder"
    if circle := circles(arrows):
        yield "a circle of folders: " + " -> ".join(circle)


def main():
    found = list(faults(pathlib.Path(sys.argv[1]).resolve()))
    print("\n".join(found) or "every include points down")
    return 1 if found else 0


sys.exit(main())
