#!/usr/bin/env python3
"""Starts that end within: ended_starts.py FOLDER FAULTY_FOLDER ENDINGS LIBRARY_FOLDER EMULATOR...

Each story has a fresh folder with the host, a program of its own, the plug-in ends_at_start, which ends where it is told,
and the records of starts. A step runs a program: (what ends where, arguments), the exit code, and a pattern that what it
says has, or with a ! before it has not. A function changes something in between.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

base, faulty, endings, library, *emulator = sys.argv[1:]
base, faulty, endings, library = map(pathlib.Path, (base, faulty, endings, library))
LIST = ["corvix-host", "--unattended", "list"]
USE = ["corvix-host", "--unattended", "settings", "save"]  # a start with plug-ins
FINE, OUT = r"ends_at_start.dll .* described ", r"ends_at_start.dll .* FAILED .*ended in it at its start of 20\d\d-.*retry"
DIES, MODULES = ["corvix-endings", "shell", "dies"], ["corvix-endings", "shell", "modules"]


def run(folder, ends, arguments, starts):
    environment = dict(os.environ, CORVIX_TEST_END=ends, CORVIX_STARTS=starts)
    ended = subprocess.run([*emulator, str(folder / f"{arguments[0]}.exe"), *arguments[1:]], capture_output=True, timeout=60,
                           env=environment)
    return ended.returncode, (ended.stdout + ended.stderr).decode(errors="replace")


def meanwhile(folder, starts):
    """A second program of the same name, while the first is being told of its start."""
    environment = dict(os.environ, CORVIX_TEST_END="wait", CORVIX_STARTS=starts)
    first = subprocess.Popen([*emulator, str(folder / "corvix-host.exe"), *USE[1:]], stdout=subprocess.DEVNULL, env=environment)
    while not any(True for _ in (folder / "starts").glob("*.start")):
        pass
    code, said = run(folder, "", USE, starts)
    said += run(folder, "", LIST, starts)[1]
    first.kill()
    first.wait()
    return None if code == 0 and re.search(FINE, said, re.S) else said


def rebuilt(folder, starts):
    (folder / "plugins" / "ends_at_start.dll").open("ab").write(b"\0")


def damaged(folder, starts):
    for number, record in enumerate(list((folder / "starts").glob("*.start"))):
        bytes_ = bytearray(record.read_bytes())
        module = int.from_bytes(bytes_[20:23], "little")
        for at in (0, 4, 20, 48, 50, module + 16, module + 18):  # magic, layout, who is busy, lengths of names
            copy = bytearray(bytes_)
            copy[at:at + 2] = b"\xFF\xFF"
            record.with_name(f"corvix-host.exe.{number}{at}.start").write_bytes(copy)
        record.with_name("corvix-host.exe.short.start").write_bytes(bytes_[:50])
        record.unlink()


def logged(folder, starts):
    text = (folder / "corvix-endings.exe.log").read_text(errors="replace")
    return None if re.search(r"\nA start ended before its end, nobody knows why: 20\d\d-\d\d-\d\d \d\d:\d\d\s", text) else text


def nothing_left(folder, starts):
    left = [path.name for path in (folder / "starts").glob("*")]
    return f"left: {left}" if left else None


WATCHED = ["corvix-host", "--unattended", "--show-log", "--watch-objects", "settings", "save"]
LEFT = (r"Object watch: a \w+, made for .AGDC.Screen. by .*corvix.dll on thread \d+, was released on thread .*2 +\w+ +AGDC.Memory +corvix.dll"
        r"\n +1 +Told +Faulty.ends_at_start +ends_at_start.dll")
crash = [("crash", USE, 5, "!saved")]
STORIES = {
    **{f"ends when {phase}": [(phase, USE, 9, "!saved"), ("", LIST, 0, where), ("", LIST, 0, OUT),
                              (phase, USE, 0, r"\n?\d+ settings saved"), (phase, USE, 0, "saved")]
       for phase, where in [("load", "its code was loaded"), ("factory", "asked for its factory"), ("object", "made an object"),
                            ("told", "told of the start"), ("initialize", "told of the start")]},
    "a host goes down once": [*crash, *[("crash", USE, 0, "saved")] * 3, ("", ["corvix-host", "settings", "get", "Ends", "Number"], 0, "7")],
    "tried again by name": [*crash, ("", ["corvix-host", "retry", "other.dll"], 1, "no plug-in of that name"),
                            ("", ["corvix-host", "retry", "plugins/ENDS_AT_START.dll"], 0, "tried again"), ("", LIST, 0, FINE), nothing_left,
                            *crash, ("crash", USE, 0, "saved"), ("", ["corvix-host", "retry"], 0, "tried again"),
                            ("", ["corvix-host", "retry"], 0, "No plug-in")],
    "tried again when it is another": [*crash, rebuilt, ("", LIST, 0, FINE), ("", USE, 0, "saved"), nothing_left],
    "an end in good order counts too": [("exit", USE, 0, "!saved"), ("", LIST, 0, OUT)],
    "two at once, and the user ends the one that hangs": [meanwhile, ("", LIST, 0, OUT)],
    "killed in the message loop": [("", ["corvix-endings", "shell", "killed"], 9, ""), nothing_left, ("", MODULES, 0, "^1 \n")],
    "nobody knows why, twice": [("", DIES, 9, ""), ("", DIES, 9, ""),
                                ("", MODULES, 0, "^box: The last two starts .*\n0 The last two starts .* nobody knows"),
                                nothing_left, ("", MODULES, 0, "^1 \n")],
    "its user is told once": [("told", MODULES, 9, ""), ("", MODULES, 0, r"^box: \S.*ends_at_start.dll: The program ended in it.*\n2 "),
                              ("", MODULES, 0, "^2 The program ended in it")],
    "in the user's own folder": [*crash, ("", LIST, 0, r"deleted: C:.*\\Marrowby\\Corvix\\Starts\\corvix-host.exe\.\d+\.\w+\.start"),
                                 ("", ["corvix-host", "retry"], 0, "tried again")],
    "nobody knows why, once": [("", ["corvix-endings", "none", "log"], 0, ""), *[("", DIES, 9, ""), ("", MODULES, 0, "^1 \n")] * 2, nothing_left, logged],
    "the program itself ends": [*[("", ["corvix-endings", "shell", "exits"], 0, "")] * 3, nothing_left, ("", MODULES, 0, "^1 \n")],
    "a damaged record": [*crash, damaged, ("", USE, 0, "saved"), ("", LIST, 0, FINE)],
    "a read-only folder": [*[("crash", USE, 5, "!saved")] * 2, ("", USE, 0, "saved"), nothing_left],
    "nobody releases": [("", ["corvix-host", "log", "on"], 0, ""), ("leak", WATCHED, 0, LEFT), ("", WATCHED, 0, r" 1 +Told +IPluginManagerAfterInit +ends_at_start.dll *$")],
    "unattended": [("", ["corvix-host", "log", "on"], 0, ""), *crash, ("crash", USE, 0, ""),
                   ("", ["corvix-host", "--show-log", *USE[1:]], 0, r"\nModule .*ends_at_start.dll failed: The program ended in it")],
}

wrong = 0
for name, steps in STORIES.items():
    story = base / name
    shutil.rmtree(story, ignore_errors=True)
    (story / "plugins").mkdir(parents=True)
    for file in [*library.glob("*.dll"), library / "corvix-host.exe", endings]:
        shutil.copy(file, story)
    shutil.copy(faulty / "ends_at_start.dll", story / "plugins")
    own = "Z:" + str(story / "starts").replace("/", "\\")
    records = {"a read-only folder": "Z:\\sys", "in the user's own folder": ""}.get(name, own)
    for number, step in enumerate(steps):
        if callable(step):
            fault = step(story, records)
        else:
            ends, arguments, code, pattern = step
            got, text = run(story, ends, arguments, records)
            found = re.search(pattern.lstrip("!"), text.replace("\r", ""), re.S) is not None
            fault = None if got == code and found != pattern.startswith("!") else f"exit code {got}, said:\n{text}"
        if fault:
            wrong += 1
            print(f"{name}, step {number + 1}: {fault}")
print(f"{len(STORIES)} stories, {wrong} wrong")
sys.exit(1 if wrong else 0)
