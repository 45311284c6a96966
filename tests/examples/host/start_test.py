#!/usr/bin/env python3
"""What a host makes of its folder at its start: start_test.py BIN_FOLDER SCRATCH_FOLDER EMULATOR..."""
import pathlib
import random
import re
import shutil
import subprocess
import sys

bin_folder, scratch, emulator = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
shutil.rmtree(scratch, ignore_errors=True)
for folder in ("plugins", "more/of them"):
    (scratch / folder).mkdir(parents=True)
for file in [*bin_folder.glob("lib*.dll"), bin_folder / "corvix.dll", bin_folder / "corvix-host.exe"]:
    shutil.copy(file, scratch)
for name in ("a_needs_z", "z_is_needed"):
    shutil.copy(bin_folder / "faulty" / f"{name}.dll", scratch / "plugins")
shutil.copy(next(bin_folder.glob("libgcc*.dll")), scratch / "plugins" / "helper.dll")
shutil.copy(bin_folder / "faulty" / "z_is_needed.dll", scratch / "more" / "of them")

ALL = r"a_needs_z.dll .* described .*helper.dll .* no plug-in .*z_is_needed.dll .* described "
TOLD = ["z_is_needed.dll runs quietly", "z_is_needed.dll is told", "a_needs_z.dll runs quietly", "a_needs_z.dll is told"]
RECENT = ["settings", "get", "Interface", "RecentFileNo"]
NINE = b"[Options]\r\ninterface.RECENTFILENO = 9\r\nNobody.Knows=1\r\n"
NOISE = random.Random(5).randbytes(300_000)
ROWS = [  # name, Brisvane.INI or none, arguments, what plug-ins say of themselves, what is shown
    ("a list runs nobody", None, ["list"], [], ALL),
    ("who is needed is told first", None, ["settings", "list"], TOLD, ""),
    ("safe mode", b"[Plugins]\r\nSafeMode=1\r\n", ["settings", "list"], [], ""),
    ("safe mode is said", b"[Plugins]\r\nSafeMode=True\r\n", ["list"], [], r"a_needs_z.dll .*Brisvane.INI beside the program starts it in safe"),
    ("one is disabled", b"[plugins]\r\nDisabled= x.dll ; A_Needs_Z.DLL\r\n", ["settings", "list"], TOLD[:2], ""),
    ("and that is said", b"[plugins]\r\nDisabled=a_needs_z.dll\r\n", ["list"], [], r"a_needs_z.dll .*FAILED.*Brisvane.INI beside the program disables"),
    ("another folder", b"[Plugins]\r\nFolder=more\\of them\r\n", ["list"], [], r"^(?!.*a_needs_z.dll).*z_is_needed.dll .* described "),
    ("a folder that is not there", b"[Plugins]\r\nFolder=none\r\n", ["list"], [], r"^(?!.*z_is_needed.dll).*corvix.dll "),
    ("an option", NINE, RECENT, None, r"\n9\b"),
    ("is not what is saved", NINE, ["settings", "save"], None, "saved"),
    ("and is as before without it", None, RECENT, None, r"\n4\b"),
    ("in UTF-16", "\ufeff[Options]\r\nGeneral.Language=Сұ\r\n".encode("utf-16-le"), ["settings", "get", "General", "Language"], None, r"\nСұ"),
    ("noise", NOISE, ["list"], [], ALL),
    ("noise in UTF-16", b"\xff\xfe" + NOISE, ["list"], [], ALL),
    ("one that is too large", NINE + b";" * 1_100_000, RECENT, None, r"\n4\b"),
    ("a line without end", b"[Options]\r\nGeneral.X=" + b"x" * 1_000_000, ["list"], [], ALL),
]
wrong = 0
for name, ini, arguments, said, shown in ROWS:
    (scratch / "Brisvane.INI").unlink(missing_ok=True)
    if ini is not None:
        (scratch / "Brisvane.INI").write_bytes(ini)
    run = subprocess.run([*emulator, str(scratch / "corvix-host.exe"), "--unattended", *arguments], capture_output=True, text=True,
                         encoding="utf-8", check=False)
    got = re.findall(r"\[(\w+\.dll [a-z ]+)\]", run.stdout)
    if (run.returncode, got if said is not None else None) != (0, said) or not re.search(shown, run.stdout, re.S):
        wrong += 1
        print(f"{name}: {run.returncode}, {got}\n{run.stdout}{run.stderr}")
sys.exit(wrong)
