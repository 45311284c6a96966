#!/usr/bin/env python3
"""Checks that every include points down the layers, or stays inside its own: check_layers.py CHECKOUT"""
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
# Code that is to run anywhere, and public headers, do not name the system.
PORTABLE = ["core/baselib/identity", "core/baselib/text", "core/xml"]
SYSTEM_HEADERS = re.compile(r'#include <(windows|winsock|wininet|shellapi|gdiplus|objidl|winreg|winuser|wingdi)')

INCLUDE = re.compile(r'#include "([^"]+)"')


def inside(path, folder):
    return path == folder or path.startswith(folder + "/")


def room(path):
    rooms = [folder for folder in ALLOWED if inside(path, folder)]
    return max(rooms, key=len) if rooms else None


def public_headers(checkout):
    text = (checkout / "cmake/CorvixLibrary.cmake").read_text(encoding="utf-8")
    return set(re.search(r"set\(CORVIX_PUBLIC_HEADERS([^)]*)\)", text).group(1).split())


def faults(checkout):
    public = public_headers(checkout)
    files = [p for folder in ("core", "shell", "graphics", "library") for p in (checkout / folder).rglob("*")]
    for file in sorted(p for p in files if p.suffix in (".h", ".cpp")):
        path = file.relative_to(checkout).as_posix()
        own = room(path)
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            here = f"{path}:{number}:"
            if SYSTEM_HEADERS.search(line):
                if any(inside(path, folder) for folder in PORTABLE):
                    yield f"{here} names the system in code that is to run anywhere"
                elif path in public:
                    yield f"{here} names the system in a public header"
            found = INCLUDE.match(line)
            if not found:
                continue
            target = found.group(1)
            if not (checkout / target).is_file():
                yield f"{here} {target} is not spelt from the root"
            elif own and not inside(target, own) and not any(inside(target, f) for f in ALLOWED[own]):
                yield f"{here} {target} is not below {own}"
            elif target.endswith("_p.h") and not inside(path, target.rpartition("/")[0]):
                yield f"{here} {target} is private to its folder"
            elif path in public and target not in public:
                yield f"{here} a public header needs {target}, which is not public"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "every include points down")
    return 1 if found else 0


sys.exit(main())
