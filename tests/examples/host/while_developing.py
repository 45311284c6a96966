#!/usr/bin/env python3
"""What the host tells those who write plug-ins: while_developing.py RUNNER HOST FAULTY_FOLDER FOLDER

Each row runs a copy of the host, which has settings and a log of its own, with faulty plug-ins in a further folder.
"""
import pathlib
import shutil
import subprocess
import sys

runner, host, faulty, folder = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
shutil.rmtree(folder, ignore_errors=True)
extra = folder / "extra"
extra.mkdir(parents=True)
for file in [host, *host.parent.glob("*.dll")]:
    shutil.copy(file, folder)
shutil.copytree(host.parent / "plugins", folder / "plugins")
for name in ("makes_nothing", "three_number_guid", "throws"):
    shutil.copy(faulty / f"{name}.dll", extra)

WITH = ["--plugins", extra]
ROWS = [  # arguments, exit code, parts of what is said
    (["create", "Example.Greeter"], 0,
     ["a Greeter, made by greeter.dll", "IGreeter", "identifiers declared for Example.Greeter", "it is gone"]),
    (["--watch-objects", "create", "Example.Greeter"], 0, ["Every object that was made by name was released."]),
    (["create", "AGDC.Screen"], 0, ["made by corvix.dll", "IAGDCCreator"]),
    (["create", "IActionManager.Instance"], 0, ["it is kept by others"]),
    (["create", "Example.Greter"], 1, ['declares "Example.Greter"; did you mean "Example.Greeter"?', "--plugins"]),
    (WITH + ["create", "Faulty.three_number_guid"], 0, ["does not answer to its own declared identifier, 0xFA017E02"]),
    (["create", "Faulty.three_number_guid"], 1, ["no module declares"]),
    (["--plugins", folder / "absent", "list"], 1, ["there is no such folder"]),
    (["--plugins", folder / "plugins", "explain", "AGDC.Screen"], 0, ["not known already"]),
    (WITH + ["--plugins", folder, "explain", "Faulty.throws"], 1, ["throws.dll: ", "no paper left"]),
    (WITH + ["explain", "Faulty.makes_nothing"], 1, ["made no such object"]),
    (["explain", "Example.Greeter", "IGreeter"], 0, ["All is well"]),
    (["explain", "Example.Greeter", "Example.Greeter"], 0, ["All is well"]),
    (["explain", "Example.Greeter", "0xFA017E02, 1, 2, 3"], 1, ["answers to no 0xFA017E02", "Greeter, "]),
    (["explain", "Example.Greeter", "IWitness"], 1, ["answers to no IWitness", "IGreeter"]),
    (["action", "Example.Wrk"], 1, ['did you mean "Actions.Example.Work"?']),
    (WITH + ["action", "makes_nothing"], 1, ['no object "Actions.makes_nothing"', "made no such object"]),
    (WITH + ["event", "makes_nothing"], 1, ["was not told", "made no such object", "0 declared targets told"]),
    (WITH + ["event", "three_number_guid"], 1, ["was not told", "it is no IGlobalEventTarget", "0 declared targets told"]),
    (["event", "Nobody"], 0, ["0 declared targets told"]),
    (["settings", "set", "Worker", "Steps", "7"], 0, ["saved"]),
    (["settings", "reset", "Worker", "Speed"], 1, ["there is no setting"]),
    (["settings", "reset", "Nothing"], 1, ["there is no setting"]),
    (["settings", "reset", "Interface"], 0, ["0 of "]),
    (["settings", "get", "Worker", "Steps"], 0, ["7"]),
    (["settings", "reset", "Worker", "Steps"], 0, ["1 of 1"]),
    (["settings", "set", "Worker", "Steps", "7"], 0, ["saved"]),
    (["settings", "reset"], 0, ["1 of "]),
    (["catalogue", "on"], 0, []),  # an earlier run may have ended between the two below
    (["catalogue"], 0, ["is on", "from the catalogue ", "Catalogues"]),
    (["catalogue", "off"], 0, []),
    (["catalogue"], 0, ["is off", "All of these descriptors from the files: the catalogue is switched off"]),
    (["catalogue", "on"], 0, []),
    (["list"], 0, ["from the catalogue "]),
    (["log", "on"], 0, []),
    (["--show-log"] + WITH + ["create", "Faulty.makes_nothing"], 1,
     ['No object "Faulty.makes_nothing" from ', "makes_nothing.dll: Asked for "]),
    (["--show-log"] + WITH + ["create", "Faulty.three_number_guid"], 0,
     ['Warning: the object "Faulty.three_number_guid" from ', "a BSmartObject, does not answer", "0xFA017E02"]),
]

wrong = 0
for arguments, code, parts in ROWS:
    run = subprocess.run([runner, folder / host.name, "--unattended", *arguments], capture_output=True, text=True,
                         encoding="utf-8", timeout=60)
    said = run.stdout + run.stderr
    missing = [part for part in parts if part not in said]
    if run.returncode != code or missing:
        wrong += 1
        print(f"{[str(a) for a in arguments]}: exit code {run.returncode}, not said {missing}, said:\n{said}")
print(f"{len(ROWS)} commands, {wrong} wrong")
sys.exit(1 if wrong else 0)
