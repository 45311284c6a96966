#!/usr/bin/env python3
"""What of its plug-ins a host runs at its start: start_test.py BIN_FOLDER SCRATCH_FOLDER EMULATOR..."""
import pathlib
import re
import shutil
import subprocess
import sys

bin_folder, scratch, emulator = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
shutil.rmtree(scratch, ignore_errors=True)
(scratch / "plugins").mkdir(parents=True)
for file in [*bin_folder.glob("lib*.dll"), bin_folder / "corvix.dll", bin_folder / "corvix-host.exe"]:
    shutil.copy(file, scratch)
for name in ("a_needs_z", "z_is_needed"):
    shutil.copy(bin_folder / "faulty" / f"{name}.dll", scratch / "plugins")
shutil.copy(next(bin_folder.glob("libgcc*.dll")), scratch / "plugins" / "helper.dll")
wrong = 0
for name, arguments, said, shown in [
        ("a list runs nobody", ["list"], [],
         r"a_needs_z.dll .* described .*helper.dll .* no plug-in .*z_is_needed.dll .* described "),
        ("who is needed is told first", ["settings", "list"],
         ["z_is_needed.dll runs quietly", "z_is_needed.dll is told", "a_needs_z.dll runs quietly", "a_needs_z.dll is told"], ""),
]:
    run = subprocess.run([*emulator, str(scratch / "corvix-host.exe"), "--unattended", *arguments], capture_output=True, text=True,
                         encoding="utf-8", check=False)
    got = re.findall(r"\[(\w+\.dll [a-z ]+)\]", run.stdout)
    if (run.returncode, got) != (0, said) or not re.search(shown, run.stdout, re.S):
        wrong += 1
        print(f"{name}: {run.returncode}, {got}\n{run.stdout}{run.stderr}")
sys.exit(wrong)
