#!/usr/bin/env python3
"""corvix-desk on a screen, with the keys that the screen's server sends: display_test.py, with a command line as in desk.py.

It opens a text and a picture, and is ended by its menu and by Alt+F4. Without an X server and xdotool it says so and
ends with 77; `make test` brings both.
"""
import os
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
lacking = [what for what, is_there in (("an X server in $DISPLAY", os.environ.get("DISPLAY")),
                                       ("CORVIX_DISPLAY=1", os.environ.get("CORVIX_DISPLAY") == "1"),
                                       ("xdotool", shutil.which("xdotool"))) if not is_there]
if lacking:
    print("skipped; missing: " + ", ".join(lacking))
    sys.exit(77)
import desk as desks  # noqa: E402
from desk import Desk, checkout, complain, emulator  # noqa: E402

PATIENCE_S = 60


def ask(*words):
    return subprocess.run(["xdotool", *words], capture_output=True, text=True, check=False).stdout.split("\n")[:-1]


def names():
    return [ask("getwindowname", window)[0] for window in ask("search", "--onlyvisible", "--name", ".*")]


def is_menu_open():
    return names().count("") == 2  # beside the screen's own window


def come(what):
    """Whether it comes true while one waits."""
    end = time.monotonic() + PATIENCE_S
    while not what() and time.monotonic() < end:
        time.sleep(0.2)
    return what()


for name, keys in {"by the menu": ["alt+f", "x"], "by Alt+F4": ["alt+F4"]}.items():
    desk = Desk(name.replace(" ", "-"))
    shutil.copy(checkout / "docs/page.png", desk.folder)
    picture = "page.png" if "format-image" in desks.plugins else "three.pages"
    with open(desk.folder / "output", "wb") as output:
        program = subprocess.Popen([*emulator, str(desk.folder / "corvix-desk.exe"), "words.plain", picture], cwd=desk.folder,
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=output)
    if not come(lambda: ask("getwindowfocus", "getwindowname") == [f"{picture} - Corvix Desk"]):
        complain(name, f"both documents should be open, the last one in front; there is {ask('getwindowfocus', 'getwindowname')}")
    for key in keys:
        if key == keys[-1] and len(keys) > 1 and not come(is_menu_open):
            complain(name, "no menu opened")
        ask("key", key)
    try:
        code = program.wait(PATIENCE_S)
        if code != 0:
            complain(name, f"exit code {code}\n{(desk.folder / 'output').read_text(errors='replace')}")
    except subprocess.TimeoutExpired:
        complain(name, f"it does not end; there are {names()}")
        program.kill()
sys.exit(desks.wrong != 0)
