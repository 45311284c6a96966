#!/usr/bin/env python3
"""Checks who includes whom: check_layers.py CHECKOUT

Includes point down the layers and, in the base library, down its floors; no folders include each other in a circle. A
header is public, and installed, unless it is called X_p.h; an X_p.h is private to its folder unless it is listed here.
No source asks for the compiler's type information, and one header alone has operators for `new`.
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
    graphics/fonts/FakeFonts_p.h graphics/fonts/FakeFonts_p.h graphics/fonts/FallbackFonts_p.h graphics/fonts/FontSettings_p.h graphics/fonts/GlyphCache_p.h
    graphics/gdi/Gdi_p.h graphics/gdiplus/ClipStack_p.h graphics/gdiplus/Wrappers_p.h graphics/images/AGImage_p.h
    graphics/images/ImageBits_p.h graphics/images/ImageFiles_p.h graphics/images/Recolor_p.h graphics/path/PathClip_p.h graphics/quality/Quality_p.h
    graphics/quality/QualityListener_p.h shell/DeclaredObjects_p.h shell/actions/KActionManager_p.h shell/guard/GuardedCall_p.h
    shell/guard/EarlierStarts_p.h shell/guard/GuardedModule_p.h shell/guard/KeptStack_p.h shell/guard/LoaderLock_p.h shell/guard/StartSentinel_p.h
    shell/guard/UserAlert_p.h shell/modules/KClassFactoryLocal_p.h
    shell/documents/manager/KDocManager_p.h shell/services/KReport_p.h
    shell/history/KStateHistory_p.h shell/history/KStateList_p.h
    shell/language/KTranslator_p.h shell/menus/KMenuManager_p.h shell/modules/KPluginManager_p.h shell/modules/ModuleFile_p.h
    shell/services/KReport_p.h shell/services/KSecretary_p.h shell/services/KSelfReg_p.h""".split()
# Code that is to run anywhere, and public headers, do not name the system.
PORTABLE = ["core/baselib/identity", "core/baselib/text", "core/xml"]
SYSTEM_HEADERS = re.compile(r'#include <(windows|winsock|wininet|shellapi|gdiplus|objidl|winreg|winuser|wingdi)')

# Identity is ours, and so is the heap, without a word to other modules.
NOT_OURS = re.compile(r"\b(dynamic_cast<|typeid\(|operator (new|delete)\b)")
HAS_OPERATORS = "core/baselib/heap/HeapAllocated.h"

INCLUDE = re.compile(r'#include "([^"]+)"')


def folder_of(path):
    return path.rpartition("/")[0]


def inside(path, folder):
    return path == folder or path.startswith(folder + "/")


def room(path):
    rooms = [folder for folder in ALLOWED if inside(path, folder)]
    return max(rooms, key=len) if rooms else None


def is_public(path):
    return path.endswith(".h") and not path.endswith("_p.h")


def is_above(path, target):
    """Whether the target stands on a higher floor than the includer."""
    own, other = folder_of(path), folder_of(target)
    return own in FLOORS and other in FLOORS and FLOORS.index(other) > FLOORS.index(own)


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


def faults(checkout):
    listed = set(listed_headers(checkout))
    arrows = collections.defaultdict(set)
    files = [p for folder in ("core", "shell", "graphics", "library") for p in (checkout / folder).rglob("*")]
    paths = sorted(p.relative_to(checkout).as_posix() for p in files if p.suffix in (".h", ".cpp"))
    for path in paths:
        own = room(path)
        if is_public(path) != (path in listed):
            yield f"{path}:1: {'is not in the build list of its folder' if is_public(path) else 'is listed, though private'}"
        for number, line in enumerate((checkout / path).read_text(encoding="utf-8").splitlines(), 1):
            here = f"{path}:{number}:"
            if SYSTEM_HEADERS.search(line):
                if any(inside(path, folder) for folder in PORTABLE):
                    yield f"{here} names the system in code that is to run anywhere"
                elif is_public(path):
                    yield f"{here} names the system in a public header"
            if path != HAS_OPERATORS and (word := NOT_OURS.search(line.split("//")[0])):
                yield f"{here} {word.group(1)}: identity and the heap are our own"
            found = INCLUDE.match(line)
            if not found:
                continue
            target = found.group(1)
            if not (checkout / target).is_file():
                yield f"{here} {target} is not spelt from the root"
                continue
            if folder_of(target) != folder_of(path):
                arrows[folder_of(path)].add(folder_of(target))
            if own and not inside(target, own) and not any(inside(target, f) for f in ALLOWED[own]):
                yield f"{here} {target} is not below {own}"
            elif is_above(path, target):
                yield f"{here} {target} stands on a floor above"
            elif target.endswith("_p.h") and target not in SHARED and not inside(path, folder_of(target)):
                yield f"{here} {target} is private to its folder"
            elif is_public(path) and not is_public(target):
                yield f"{here} a public header needs {target}, which is not public"
    for header in sorted(set(SHARED) - set(paths)):
        yield f"{header}: is shared by this check, but does not exist"
    if circle := circles(arrows):
        yield "a circle of folders: " + " -> ".join(circle)


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "every include points down")
    return 1 if found else 0


sys.exit(main())
