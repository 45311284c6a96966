#!/usr/bin/env python3
"""What gdb shows with our printers: printers_test.py PRINTERS PROGRAM"""
import os
import re
import subprocess
import sys

printers, program = sys.argv[1:]
ROWS = [
    ("empty", r'""'), ("text", r'"Ж "é"\\u0009"'), ("longText", r'"x{200}"\.\.\.'),
    ("nothing", "empty"), ("number", "7"), ("truth", "true"), ("fraction", "0.5"), ("words", '"words"'),
    ("object", r".*Greeter at 0x\w+ = \{object = .*"), ("none", r"nothing \(corvix::IBSmartObject\)"),
    ("tree", r'corvix::XMLNodeNode at 0x\w+ = \{object = <Plugin> = \{\[0\] = @Name="Mine", \[1\] = <Interface>\}\}'),
]
commands = ["set print pretty off", f"source {printers}", "break allStand", "run", "up", *(f"print {name}" for name, _ in ROWS)]
run = subprocess.run(["gdb", "-nx", "-batch", *(part for command in commands for part in ("-ex", command)), program],
                     capture_output=True, text=True, env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0", LC_ALL="C.UTF-8"), check=False)
shown = dict(re.findall(r"^\$(\d+) = (.*)$", run.stdout, re.M))
wrong = [f"{name}: {shown.get(str(i))}" for i, (name, pattern) in enumerate(ROWS, 1) if not re.fullmatch(pattern, shown.get(str(i), ""))]
print(*wrong, f"{len(ROWS)} values, {len(wrong)} wrong", sep="\n")
if wrong:
    print(run.stdout, run.stderr)
sys.exit(1 if wrong else 0)
