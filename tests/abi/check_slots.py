#!/usr/bin/env python3
"""Compares the slots of the public interfaces, by the rules of the Microsoft compiler, with slots.txt, for both word sizes: their
order, and what each gives and takes.

check_slots.py CHECKOUT [--write]     (--write prints what slots.txt would have to say)

Every class of the public headers that has an identity, or is the first of its line with slots, must be listed there unless it is
final; others with slots may be.

Programs and plug-ins of other compilers call these slots by number, with arguments of these types: neither ever changes. (GCC
puts two destructors where that compiler has one; modules of the two cannot be mixed.)
"""
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
import identities  # noqa: E402
import windows_clang  # noqa: E402


def listed():
    """[(class, header, [operation, ...]), ...] of slots.txt."""
    classes, slots = [], {}
    for line in (HERE / "slots.txt").read_text(encoding="utf-8").splitlines():
        if line.startswith("#") or not line.strip():
            continue
        if line.startswith("  those of "):
            classes[-1][2].extend(slots[line.split()[-1]])
        elif line.startswith(" "):
            classes[-1][2].append(line.strip())
        else:
            name, header = line.split()
            classes.append((name, header, []))
            slots[name] = classes[-1][2]
    return classes


def name_of(slot):
    """The operation of a slot, without what it takes and gives."""
    return re.search(r"\w+(?=\(|$)", slot).group()


def above(name, bases):
    """All that a class derives from, as far as it has an identity."""
    for base in bases.get(name, []):
        yield base
        yield from above(base, bases)


def written(name, header, slots, others):
    """A class as slots.txt has it; `others` are those above it that were written before, as in listed()."""
    first = max((other for other in others if slots[:len(other[2])] == other[2]), key=lambda other: len(other[2]),
                default=(None, None, []))
    lines = [f"{name} {header}"] + ([f"  those of {first[0]}"] if first[2] else [])
    return "\n".join(lines + [f"  {slot}" for slot in slots[len(first[2]):]]) + "\n"


def probe(classes):
    """A source that makes the compiler lay out every class: a table is printed for what is exported."""
    lines = [f'#include "{header}"' for header in sorted({c[1] for c in classes})]
    for name, _, _ in classes:
        lines.append(f"struct __declspec(dllexport) ProbeOf{name} : corvix::{name} {{ ~ProbeOf{name}(); }};")
    return "\n".join(lines) + "\n"


def tables(checkout, source, processor):
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "probe.cpp"
        file.write_text(source)
        run = subprocess.run(
            windows_clang.command(checkout, processor) +
            ["-S", "-o", "/dev/null", "-Xclang", "-fdump-vtable-layouts", str(file)],
            capture_output=True, text=True)
    if run.returncode:
        sys.exit(run.stderr)
    return run.stdout


def spelt(slot):
    """As slots.txt has it: what the operation gives and takes, by the names that the header has for the types."""
    own = re.sub(r"(\w+::)+(?=\w+\()", "", slot.split(" [")[0], count=1)
    return re.sub(r"(::)?corvix::", "", own)


def primary_slots(dump, name):
    """The operations of the class's own table: the one that starts with the destructor, or the first."""
    found = []
    for table in re.split(r"(?m)^(?=VFTable for )", dump):
        heading = table.splitlines()[0] if table else ""
        if not re.search(rf"'corvix::{name}'(?: \(|$)|in 'corvix::{name}' \(", heading):
            continue
        slots = [m.group(1) for m in re.finditer(r"(?m)^ +\d+ \| (.*)$", table.split("Thunks for")[0].split("VFTable indices")[0])]
        found.append(["destructor" if "::~" in slot else spelt(slot) for slot in slots if not slot.endswith(" RTTI")])
    with_destructor = [slots for slots in found if slots and slots[0] == "destructor"]
    return (with_destructor or found or [[]])[0]


def main():
    checkout = pathlib.Path(sys.argv[1])
    classes = listed()
    names = {name for name, _, _ in classes}
    public = identities.public(checkout)
    bases = {one.name: one.bases for one in public}
    missing = [(one.name, one.path, []) for one in public if one.name not in names and not one.is_final]
    if "--write" in sys.argv:
        classes += missing
    dumps = {processor: tables(checkout, probe(classes), processor) for processor in ("i686", "x86_64")}
    wrong, done = 0, []
    for name, header, _ in [] if "--write" in sys.argv else missing:
        wrong += 1
        print(f"{header}: {name} is not in slots.txt; add what --write prints")
    for name, header, expected in classes:
        if "--write" in sys.argv:
            actual = primary_slots(dumps["i686"], name)
            print(written(name, header, actual, [other for other in done if other[0] in above(name, bases)]))
            done.append((name, header, actual))
            continue
        for processor, dump in dumps.items():
            actual = primary_slots(dump, name)
            if actual != expected:
                wrong += 1
                print(f"{name}, {processor}: expected {expected}\n{' ' * len(name)}  actual   {actual}")
    if "--write" not in sys.argv:
        print(f"{len(classes)} classes for {len(dumps)} processors, {wrong} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
