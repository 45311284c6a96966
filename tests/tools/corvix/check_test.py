#!/usr/bin/env python3
"""Tries `corvix check` and `corvix info`: check_test.py BIN_FOLDER PAGE EMULATOR...

Each faulty plug-in is found under its own rule and no other, good ones hold, and the page lists the rules that there are.
"""
import json
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing beside the sources
sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "shell" / "modules" / "hostile"))
import pe

bin_folder = pathlib.Path(sys.argv[1])
page = pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")
emulator = sys.argv[3:]
wrong = []


def corvix(*arguments):
    run = subprocess.run([*emulator, str(bin_folder / "corvix.exe"), *map(str, arguments)], cwd=bin_folder, capture_output=True,
                         text=True, encoding="utf-8", check=False)
    return run.returncode, run.stdout, run.stderr


def expect(name, got, wanted):
    if got != wanted:
        wrong.append(f"{name}: {got}, not {wanted}")


scratch = bin_folder / "checked"
(scratch / "no module.dll").write_text("a text\n")
good = (scratch / "good.dll").read_bytes()
(scratch / "cut.dll").write_bytes(good[:len(good) // 2])
header = good.index(b"PE\0\0")
IS_64 = good[header + 4:header + 6] == b"\x64\x86"
(scratch / "other.dll").write_bytes(good[:header + 4] + (b"\x4c\x01" if IS_64 else b"\x64\x86") + good[header + 6:])
magic = header + 24  # of the optional header
(scratch / "contradicts.dll").write_bytes(good[:magic] + (b"\x0b\x01" if IS_64 else b"\x0b\x02") + good[magic + 2:])
pe.take_word_size(bin_folder / "corvix.dll")
(scratch / "imports_other.dll").write_bytes(pe.Module(imports=[b"other.dll"]).bytes)
(scratch / "imports_absent.dll").write_bytes(pe.Module(imports=[b"imports_nothing_there.dll"]).bytes)
(scratch / "imports_nothing_there.dll").write_bytes(pe.Module(imports=[b"absent.dll"], name="function").bytes)
(scratch / "twice.dll").write_bytes(good)
(scratch / "arm.dll").write_bytes(good[:header + 4] + b"\x64\xaa" + good[header + 6:])
for name, needed in (("circle_a", "circle_b"), ("circle_b", "circle_a")):
    needs = pe.descriptor(pe.interface(name), pe.element("Requires", Interface=needed))
    (scratch / f"{name}.dll").write_bytes(pe.Module(plugin=needs).bytes)
(scratch / "unreadable.dll").write_bytes(good.replace(b"xmlbin\0\1", b"xmlbin\0\2"))

# module: its rules, the interfaces of it that are made
ROWS = {
    "checked/good.dll": ([], 1),
    "checked/shared.dll": ([], 1),
    "checked/row_missing.dll": (["row-missing"], 0),
    "checked/name_typo.dll": (["name-typo"], 0),
    "checked/identifier_differs.dll": (["identifier-differs"], 1),
    "checked/wrong_object.dll": (["wrong-object", "wrong-object"], 2),
    "checked/crashes.dll": (["crash-in-constructor"], 1),
    "checked/overflows.dll": (["crash-in-constructor"], 1),
    "checked/overflows_in_query.dll": (["crash-in-query"], 1),
    "checked/crashes_in_query.dll": (["crash-in-query"], 1),
    "checked/declares_nothing.dll": (["nothing-declared"], 0),
    "checked/crashes_on_release.dll": (["crash-on-release"], 1),
    "checked/static_throws.dll": (["static-constructor-throws"], 0),
    "checked/exits.dll": (["ended-process"], 0),
    "checked/leaks_reference.dll": (["reference-leaked"], 1),
    "checked/leaks_memory.dll": (["memory-leaked"], 1),
    "checked/released_twice.dll": (["released-twice"], 1),
    "checked/released_before.dll": (["released-twice"], 1),
    "checked/leaves_thread.dll": (["thread-left"], 1),
    "checked/imports_function.dll": (["missing-function"], 0),
    "checked/other_sdk.dll": (["sdk-mismatch"], 0),
    "checked/needs_newer.dll": (["requirement-too-old", "requirement-unseen"], 1),
    "checked/needs_itself.dll": ([], 1),  # others of this run have what it needs
    "checked/own_runtime.dll": (["static-constructor-throws", "static-runtime"], 0),
    "checked/bare.dll": (["no-build-identifier"], 1),
    "checked/no module.dll": (["not-a-module"], 0),
    "checked/cut.dll": (["not-a-module"], 0),
    "checked/other.dll": (["other-machine"], 0),
    "checked/contradicts.dll": (["not-a-module"], 0),
    "checked/unreadable.dll": (["descriptor-malformed"], 0),
    "corvix-host.exe": (["not-a-module"], 0),
    "faulty/missing_import.dll": (["missing-dll"], 0),
    "faulty/no_descriptor.dll": (["no-descriptor", "no-factory"], 0),
    "faulty/no_factory.dll": (["no-factory"], 0),
    "faulty/null_factory.dll": (["factory-fails"], 0),
    "checked/load_crashes.dll": (["crash-on-load"], 0),
    "checked/load_overflows.dll": (["crash-on-load"], 0),
    "checked/load_divides.dll": (["crash-on-load"], 0),
    "checked/load_refused.dll": (["load-refused"], 0),
    "faulty/makes_nothing.dll": (["makes-nothing"] + 3 * ["row-missing"], 0),
    "faulty/throws.dll": (2 * ["exception-in-constructor"] + 2 * ["row-missing"], 0),
}
# The tests of the shell share one descriptor, which has an identifier of two numbers and is in several modules.
SHARED_FAULTS = {"descriptor-doubtful", "duplicate-identifier", "no-version-information"}

code, out, err = corvix("check", "--json", "--timeout", "100", *ROWS)
expect("exit code", code, 1)
reports = {report["module"]: report for report in json.loads(out)["modules"]}
for module, (rules, made) in ROWS.items():
    report = reports[module]
    found = [finding["rule"] for finding in report["findings"]]
    if module.startswith("faulty/"):
        found = [rule for rule in found if rule not in SHARED_FAULTS]
    expect(module, (sorted(found), report["made"]), (rules, made))
    expect(module + " holds", report["holds"], rules in ([], ["no-build-identifier"], ["nothing-declared"]))

examples = sorted(path.relative_to(bin_folder) for path in (bin_folder / "plugins").glob("*.dll"))
for name, arguments, exit_code, pattern in [
        ("examples and library", ["corvix.dll", *examples], 0, r"corvix.dll: holds; 7 of 7 interfaces made"),
        ("one that hangs", ["checked/hangs.dll", "--timeout", "5"], 1, r"\[hang\]"),
        ("one of them holds", ["checked/good.dll", "checked/name_typo.dll"], 1, r"good.dll: holds;.*\[name-typo\]"),
        ("two with one identifier", ["checked/good.dll", "checked/twice.dll"], 1, r"\[duplicate-identifier\]"),
        ("one in three spellings", ["checked/good.dll", "checked/../checked/good.dll", "CHECKED\\GOOD.dll"], 0, r"\A[^\n]*good.dll: holds;[^\n]*\n\Z"),
        ("a circle", ["checked/circle_a.dll", "checked/circle_b.dll"], 1, r"\[requirement-circle\].*circle_a.dll needs circle_b.dll needs circle_a.dll\."),
        ("a circle of one", ["checked/needs_itself.dll"], 1, r"\[requirement-own\].*\"Faulty.Object\""),
        ("of another processor", ["checked/other.dll"], 1, r"\[other-machine\] .*for (32|64)-bit x86.*in x64"),
        ("of no such processor", ["checked/arm.dll"], 1, r"64-bit ARM(?!.*in x64)"),
        ("headers that contradict", ["checked/contradicts.dll"], 1, r"headers contradict"),
        ("an import of the other word size", ["checked/imports_other.dll"], 1, r"\[unusable-dll\].*other.dll.*is made for(?!.*in x64)"),
        ("an import of an import", ["checked/imports_absent.dll"], 1, r"\[missing-dll\].*absent.dll, which imports_nothing_there.dll needs"),
        ("no such file", ["checked/absent.dll"], 2, r"not tried: the file cannot be read"),
        ("no such file, as JSON", ["--json", "checked/absent.dll"], 2, r'"holds": false'),
        ("fault outweighs", ["checked/absent.dll", "checked/no_such.dll", "checked/name_typo.dll"], 1, r"Faulty.Objekt"),
        ("no module named", [], 2, r""),
]:
    code, out, err = corvix("check", *arguments)
    expect(name, (code, bool(re.search(pattern, out, re.S))), (exit_code, True))

# Nothing runs: the module would hang, and is another SDK's.
code, out, err = corvix("info", "checked/hangs.dll")
expect("info", (code, bool(re.search(r"Faulty.Object.*corvix.dll", out, re.S))), (0, True))
code, out, err = corvix("info", "--json", "checked/other_sdk.dll")
expect("info --json", (code, json.loads(out)["plugin"]["SdkVersion"]), (0, "0.2.0"))
code, out, err = corvix("info", "--xml", "checked/good.dll")
expect("info --xml", (code, '<Interface Name="Faulty.Object"' in out), (0, True))
pe.IS_64 = not pe.IS_64
(scratch / "foreign.dll").write_bytes(pe.Module(imports=[b"absent.dll"]).bytes)
code, out, err = corvix("info", "checked/foreign.dll")
expect("info of the other word size", (code, bool(re.search(r"Hostile.object.*is made for.*absent.dll", out, re.S))), (0, True))
expect("version", corvix("--version")[1].strip().split(", ")[1], "64-bit" if IS_64 else "32-bit")
expect("info of none", corvix("info", "checked/no module.dll")[0], 1)

rules = {rule["rule"] for rule in json.loads(corvix("check", "--rules", "--json")[1])}
expect("rules of the page", set(re.findall(r"^\| `([a-z-]+)` \|", page, re.M)), rules)
tried = {rule for row in ROWS.values() for rule in row[0]} | SHARED_FAULTS | {"hang", "requirement-circle", "requirement-own", "unusable-dll"}
expect("rules without a faulty plug-in", sorted(rules - tried), [])
print(*wrong, f"{len(ROWS)} modules, {len(wrong)} faults", sep="\n")
sys.exit(1 if wrong else 0)
