#!/usr/bin/env python3
"""How processes end: check_endings.py FOLDER PROGRAM MODULE LIBRARY_FOLDER EMULATOR...

A copy of the program, which has a log of its own, ends in each of the ways; a row says what it tells, and what the log.
"""
import pathlib
import re
import shutil
import subprocess
import sys

THREW = r"Called as a destructor of global data, \S.*corvix-endings[.]exe threw: no time"
# (shell or none, way, what is told, what the log says between its first and its last line)
ROWS = [
    ("shell", "plain", "shell\nvalue\n", ""),
    ("none", "plain", "value\n", ""),
    ("shell", "task", "shell\nvalue\n", ""),
    ("shell", "throws", "value, shell there\nshell\n", f"({THREW}( at all)?\n){{2}}"),
    ("shell", "detached", "shell\n(module's )?value\n(module's )?value\n", ""),
    ("none", "unloaded", "value\n", ""),
    ("shell", "heldData", "shell\n", "Global data is left as it is: .*\n"),
    ("none", "heldData", "", "Global data is left as it is: .*\n"),
    ("shell", "heldLists", "value\n", "The shell is left as it is: .*\n"),
    # Only that it ends counts: the system itself may not survive it.
    *[("shell", "windows", None, None)] * 5,
]

folder, program, module, libraries, *emulator = sys.argv[1:]
folder = pathlib.Path(folder)
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
for file in [program, module, *pathlib.Path(libraries).glob("*.dll")]:
    if not (folder / pathlib.Path(file).name).exists():
        shutil.copy(file, folder)
copy = folder / pathlib.Path(program).name
log = copy.with_name(copy.name + ".log")


def run(*arguments):
    try:
        return subprocess.run([*emulator, copy, *arguments], capture_output=True, timeout=20, cwd=folder)
    except subprocess.TimeoutExpired:
        return None


run("none", "log")
failures = 0
for shell, way, told, logged in ROWS:
    log.unlink(missing_ok=True)
    ended = run(shell, way)
    if ended is None:
        print(f"{shell} {way}: hangs")
        failures += 1
        continue
    if told is None:
        continue
    text = ended.stderr.decode(errors="replace").replace("\r", "")
    lines = log.read_text(errors="replace").replace("\r", "") if log.exists() else ""
    whole = f"Start .*\n\n{logged}End .*\n\n"
    if ended.returncode != 0 or not re.fullmatch(told, text) or not re.fullmatch(whole, lines):
        print(f"{shell} {way}: exit code {ended.returncode}, told:\n{text}logged:\n{lines}")
        failures += 1
sys.exit(failures > 0)
