#!/usr/bin/env python3
"""Checks that the sweeps of failures know every public operation: check_operations.py CHECKOUT

Every class and free function that the library exports, and every operation of the public interfaces that it implements
(tests/abi/slots.txt), is used in the rows of tests/library/*Operations.cpp, or stands below with its reason. Operations count by
their names: two classes that have one of the same name are one.
"""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent / "support"), str(HERE.parent / "abi")]
import check_slots  # noqa: E402
import identities  # noqa: E402

TOLD = "the library calls it, whatever row delivers"
BASE = "a base: its own work is done in every row of a class derived from it"
PLAIN = "asks for nothing of the heap or the system"

# Classes, free functions and operations (Class.operation) that have no row.
NEEDS_NONE = {
    "BClassFactory": "modules implement it; the library's own is what every created object comes from",
    "BFileInputStream": "opened by the file supplier, in the row of files by location",
    "BFixedMemoryPool": "made by BMemoryManager::getPool, as callers have it",
    "BForwardInputStream": BASE,
    "BRAInputStream": BASE,
    "BSizeClassMemoryPool": "made by BMemoryManager::getPool, as callers have it",
    "BStream": BASE,
    "BSystemMemoryPool": "made by BMemoryManager::getPool, as callers have it",
    "BThread.run": TOLD,
    "IBRTTISupport": PLAIN,
    "IBTransportable": PLAIN,
    "IDestroyListener.onDestroy": TOLD,
    "IDocument.history": "asks the shell of the process for the list, as the row of steps does",
    "IDocumentEvent.document": PLAIN,
    "IDocumentPlace.setPlace": "the manager calls it, in the row of documents",
    "ISettingListener.onSettingChanged": TOLD,
    "ITextTarget": "drawText and its like call it, in the rows of text",
    "QueryVisitor": TOLD,
    "SCriticalSection": "the system makes it a few words that are there already",
    "TimerData": "there is one, timerData, in the row of timers",
    "dataCSProc": PLAIN,
    "enterClass": PLAIN,
    "leaveClass": PLAIN,
    "logThrown": "callForeign calls it, in the rows of errors and the log",
    "stype_info": PLAIN,
}

EXPORTED_CLASS = re.compile(r"\b(?:class|struct)\s+CORVIX_API\s+(\w+)")
EXPORTED_FUNCTION = re.compile(r"^(?:\S[^;{}()\n]*)?\bCORVIX_API\s+[^;{}()=]*?(\w+)\s*\(", re.M)
USES = re.compile(r"\b(\w+)\b")


def public_headers(checkout):
    for folder in ("core", "shell", "graphics"):
        for path in sorted((checkout / folder).rglob("*.h")):
            if not path.name.endswith("_p.h") and path.name != "Api.h":
                yield path


def exported(checkout):
    """What the headers export outside of classes: functions and members are told apart by the indentation."""
    for path in public_headers(checkout):
        text = identities.without_comments(path.read_text(encoding="utf-8"))
        for name in EXPORTED_CLASS.findall(text) + EXPORTED_FUNCTION.findall(text):
            yield name, path.relative_to(checkout)


def operations():
    """Those that a class has of its own."""
    known = {}
    for name, header, slots in check_slots.listed():
        inherited = max((other for other in known.values() if slots[:len(other)] == other), key=len, default=[])
        known[name] = list(slots)
        for slot in slots[len(inherited):]:
            if slot != "destructor":
                yield name, check_slots.name_of(slot), header


def implemented(checkout):
    """The classes that the library has a class for, or that are no mere interfaces."""
    bases = {}
    for one in identities.in_tree(checkout, "core", "shell", "graphics", "library"):
        bases.setdefault(one.name, set()).update(one.bases + one.declared)
    reached, todo = set(), [name for name in bases if not re.match(r"I[A-Z]", name)]
    while todo:
        name = todo.pop()
        if name not in reached:
            reached.add(name)
            todo.extend(bases.get(name, ()))
    return reached


def main(checkout):
    rows = sorted((checkout / "tests/library").glob("*Operations.cpp"))
    text = "\n".join(identities.without_comments(path.read_text(encoding="utf-8")) for path in rows)
    text = "\n".join(line for line in text.splitlines() if not line.startswith("#include"))
    used, called = set(USES.findall(text)), set(re.findall(r"(?:->|\.)(\w+)\(", text))
    missing, needed = [], set()

    def ask(names, is_there, header):
        reason = next((name for name in names if name in NEEDS_NONE), None)
        if is_there:
            return
        if reason:
            needed.add(reason)
        else:
            missing.append(f"{header}: {names[0]}")

    for name, header in exported(checkout):
        ask([name], name in used, header)
    own = implemented(checkout)
    for name, slot, header in operations():
        if name in own:
            ask([f"{name}.{slot}", name], slot in called, header)
    for line in missing:
        print(f"{line} is in no row of tests/library/*Operations.cpp")
    for name in sorted(set(NEEDS_NONE) - needed):
        print(f"check_operations.py: {name} needs no reason any more")
    print(f"{len(missing)} operations without a row")
    return 1 if missing or set(NEEDS_NONE) - needed else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
