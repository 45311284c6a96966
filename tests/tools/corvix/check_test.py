#!/usr/bin/env python3
"""Tries `corvix check` and `corvix info`: check_test.py BIN_FOLDER PAGE EMULATOR...

Each faulty plug-in is found under its own rule and no other, good ones hold, and the page lists the rules that there are.
"""
import json
import pathlib
import re
import subprocess
import sys

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
    "checked/unreadable.dll": (["descriptor-malformed"], 0),
    "corvix-host.exe": (["not-a-module"], 0),
    "faulty/missing_import.dll": (["missing-dll"], 0),
    "faulty/no_descriptor.dll": (["no-descriptor", "no-factory"], 0),
    "faulty/no_factory.dll": (["no-factory"], 0),
    "faulty/null_factory.dll": (["factory-fails"], 0),
    "checked/load_crashes.dll": (["crash-on-load"], 0),
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
        ("two with one identifier", ["checked/good.dll", "checked/../checked/good.dll"], 1, r"\[duplicate-identifier\]"),
        ("a circle", ["checked/needs_itself.dll"], 1, r"\[requirement-circle\].*needs_itself.dll needs needs_itself.dll\."),
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
expect("info of none", corvix("info", "checked/no module.dll")[0], 1)

rules = {rule["rule"] for rule in json.loads(corvix("check", "--rules", "--json")[1])}
expect("rules of the page", set(re.findall(r"^\| `([a-z-]+)` \|", page, re.M)), rules)
tried = {rule for row in ROWS.values() for rule in row[0]} | SHARED_FAULTS | {"hang", "requirement-circle"}
expect("rules without a faulty plug-in", sorted(rules - tried), [])
print(*wrong, f"{len(ROWS)} modules, {len(wrong)} faults", sep="\n")
sys.exit(1 if wrong else 0)
