#!/usr/bin/env python3
"""Checks the identities of all sources and descriptors: check_identities.py CHECKOUT

No two classes have the same four words, no two modules the same identifier; a module's identifier is not a class's. The
bases in an identity line stand in the order in which the class declares them, and none with an identity is left out. The
library's classes of library_classes.txt all have one.
"""
import pathlib
import sys
import xml.etree.ElementTree as xml

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[2] / "support"))
import identities  # noqa: E402

FOLDERS = ("core", "shell", "graphics", "library", "plugins", "examples", "tools/corvix", "sdk", "bench", "tests")
ON_PURPOSE = {"tests/core/baselib/identity/mistakes.cpp"}


def modules(checkout):
    """(path, identifier) of every descriptor."""
    for folder in FOLDERS + ("resources",):
        for path in sorted((checkout / folder).rglob("plugin.xml")):
            for plugin in xml.parse(path).iter("Plugin"):
                yield path.relative_to(checkout).as_posix(), identities.words_of(plugin.get("GUID").split(","))


def nearest(names, with_identity, without):
    """The names, those of classes without an identity replaced by what these derive from."""
    for name in names:
        if name in with_identity:
            yield name
        elif name in without:
            yield from nearest(without[name], with_identity, without)


def faults(checkout):
    found = [one for one in identities.in_tree(checkout, *FOLDERS) if one.path not in ON_PURPOSE]
    classes = [one for one in found if one.words]
    without = {one.name: one.declared for one in found if not one.words}
    if len(classes) < 100:
        yield f"only {len(classes)} identities were found: does this script still understand the sources?"
    known = {one.name for one in classes}
    listed = (HERE / "library_classes.txt").read_text(encoding="utf-8").splitlines()[1:]
    for name in sorted(set(" ".join(listed).split()) - {one.name for one in classes if not one.path.startswith("tests/")}):
        yield f"{name} has no identity any more: other modules know it"
    owners = {}
    for one in classes:
        here = f"{one.path}:{one.line}:"
        other = owners.setdefault(one.words, f"{one.name} ({one.path})")
        if other != f"{one.name} ({one.path})":
            yield f"{here} {one.name} has the words of {other}"
        expected = list(nearest(one.declared, known, without))
        if not one.is_root and one.bases != expected:
            yield f"{here} {one.name} declares {', '.join(expected)}, its identity line names {', '.join(one.bases)}"
    for path, words in modules(checkout):
        other = owners.setdefault(words, path)
        if other != path:
            yield f"{path}: the module's identifier is that of {other}"


def main():
    found = list(faults(pathlib.Path(sys.argv[1]).resolve()))
    print("\n".join(found) or "every class and every module has words of its own")
    return 1 if found else 0


sys.exit(main())
