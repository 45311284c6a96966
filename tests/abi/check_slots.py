#!/usr/bin/env python3
"""Compares the slot orders of the public interfaces, by the rules of the Microsoft compiler, with slots.txt.

check_slots.py CHECKOUT [--write]     (--write prints what slots.txt would have to say)

Programs and plug-ins of other compilers call these slots by number: an order never changes. (GCC puts two
destructors where that compiler has one; modules of the two cannot be mixed.)
"""
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def listed():
    """[(class, header, [operation, ...]), ...] of slots.txt."""
    classes = []
    for line in (HERE / "slots.txt").read_text(encoding="utf-8").splitlines():
        if line.startswith("#") or not line.strip():
            continue
        if line.startswith(" "):
            classes[-1][2].append(line.strip())
        else:
            name, header = line.split()
            classes.append((name, header, []))
    return classes


def probe(classes):
    """A source that makes the compiler lay out every class: a table is printed for what is exported."""
    lines = [f'#include "{header}"' for header in sorted({c[1] for c in classes})]
    for name, _, _ in classes:
        lines.append(f"struct __declspec(dllexport) ProbeOf{name} : corvix::{name} {{ ~ProbeOf{name}(); }};")
    return "\n".join(lines) + "\n"


def tables(checkout, source):
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "probe.cpp"
        file.write_text(source)
        run = subprocess.run(
            ["clang++", "--target=i686-pc-windows-msvc", "-std=c++17", "-ffreestanding", "-nostdinc++", "-fexceptions",
             "-fcxx-exceptions", "-fno-rtti", "-w", "-isystem", str(HERE / "stubs"), "-I", str(checkout),
             "-DCORVIX_BUILDING", "-S", "-o", "/dev/null", "-Xclang", "-fdump-vtable-layouts", str(file)],
            capture_output=True, text=True)
    if run.returncode:
        sys.exit(run.stderr)
    return run.stdout


def primary_slots(dump, name):
    """The operations of the class's own table: the one that starts with the destructor, or the first."""
    found = []
    for table in re.split(r"(?m)^(?=VFTable for )", dump):
        heading = table.splitlines()[0] if table else ""
        if not re.search(rf"'corvix::{name}'(?: \(|$)|in 'corvix::{name}' \(", heading):
            continue
        slots = [m.group(1) for m in re.finditer(r"(?m)^ +\d+ \| (.*)$", table.split("Thunks for")[0].split("VFTable indices")[0])]
        operations = [re.sub(r".*?::(~?\w+)\(.*", r"\1", s) for s in slots if not s.endswith(" RTTI")]
        found.append(["destructor" if o.startswith("~") else o for o in operations])
    with_destructor = [slots for slots in found if slots and slots[0] == "destructor"]
    return (with_destructor or found or [[]])[0]


def main():
    checkout = pathlib.Path(sys.argv[1])
    classes = listed()
    dump = tables(checkout, probe(classes))
    wrong = 0
    for name, header, expected in classes:
        actual = primary_slots(dump, name)
        if "--write" in sys.argv:
            print(f"{name} {header}", *("  " + slot for slot in actual), "", sep="\n")
        elif actual != expected:
            wrong += 1
            print(f"{name}: expected {expected}\n{' ' * len(name)}  actual   {actual}")
    if "--write" not in sys.argv:
        print(f"{len(classes)} classes, {wrong} with another slot order")
    return 1 if wrong else 0


sys.exit(main())
