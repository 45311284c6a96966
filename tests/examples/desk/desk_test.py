#!/usr/bin/env python3
"""corvix-desk as its user has it, driven by steps: desk_test.py BIN_FOLDER SCRATCH_FOLDER PLUGIN,... EMULATOR...

EMULATOR ends with corvix-on-desktop and the name of a desktop.

Every row runs in a copy of its own with those plug-ins, so that settings, window places and the log are its own. Pictures
are left in the scratch folder; docs/ has copies of some.
"""
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
import desk as desks  # noqa: E402
from desk import Desk, bin_folder, checkout, complain, emulator, plugins  # noqa: E402

# Of the desktop that the emulator puts programs on. Two that make it at once may wait for each other.
keeper = subprocess.Popen(emulator, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
keeper.stdout.readline()

# What only shows what plug-ins declare loads none of them.
desk = Desk("looks")
desk.run("log on\nquit\n")
desk.run("""wait idle
key Alt+F
wait idle
shot menu.png
key Right
wait idle
key Right
wait idle
key Down
key Right
wait idle
key Esc
key Esc
key Esc
key Esc
wait idle
key Ctrl+O
wait idle
expect dialog Open
key Esc
wait idle
action Actions.Tools.Options
wait idle
expect dialog Options
shot options.png
key Esc
wait idle
action Actions.Help.About
wait idle
expect dialog About
key Esc
wait idle
quit
""")
if desk.loaded() != ["dialogs", "drive", "gui"]:
    complain("looks", f"loaded were {desk.loaded()}")

# Why there are no windows is said.
desk = Desk("no-windows")
desk.run("log on\nquit\n")
for ini, why in (("[Plugins]\nSafeMode=1\n", "in safe mode"), ("[Plugins]\nDisabled=gui.dll\n", "disables it"),
                 ("[Plugins]\nFolder=none\n", "gui.dll is missing")):
    (desk.folder / "Brisvane.INI").write_text(ini)
    desk.run("quit\n", "--unattended", code=1)
    said = re.findall("There is no user interface: (.*)", desk.log())
    if not said or why not in said[-1]:
        complain("no-windows", f"{ini!r}: {said}")

# Any one plug-in taken away, everything else works.
for gone in plugins:
    if gone in ("drive",):
        continue
    desk = Desk(f"without-{gone}", without=[gone])
    if gone == "gui":
        desk.run("quit\n", "--unattended", code=1)
        continue
    options = "yes" if gone != "dialogs" else "no"
    desk.run(f"""wait idle
expect title Corvix Desk
expect enabled Actions.Tools.Options {options}
expect enabled Actions.File.Exit yes
action Actions.View.ToolBar
wait idle
action Actions.File.Exit
""")
# Documents in views, by what the user does.
Desk("documents").run("""wait idle
size 800 600
open three.pages
wait idle
expect title three.pages - Corvix Desk
expect status 1 Page 1 of 3
expect status 2 100 %
expect focus CorvixPages
key Ctrl+PgDn
wait idle
expect status 1 Page 2 of 3
key End
wait idle
expect status 1 Page 3 of 3
key Ctrl+Plus
wait idle
expect status 2 125 %
expect enabled Actions.View.FitWidth yes
key Ctrl+1
wait idle
expect enabled Actions.View.ActualSize no
panel Panel.Pages yes
wait idle
wait 500
shot pages.png
open words.plain
wait idle
expect documents 2
expect panel Panel.Pages no
expect focus Edit
expect status 1 Line 1, column 1
type Hi,
wait idle
expect status 1 Line 1, column 4
expect title * words.plain - Corvix Desk
expect enabled Actions.File.Save yes
expect enabled Actions.Edit.Cut no
key Ctrl+A
wait idle
expect enabled Actions.Edit.Cut yes
key Ctrl+X
wait idle
expect status 1 Line 1, column 1
key Ctrl+V
wait idle
expect status 1 Line 3, column 1
shot text.png
key Ctrl+Tab
wait idle
expect title three.pages - Corvix Desk
expect panel Panel.Pages yes
key F6
wait idle
expect focus CorvixPagePictures
key Home
wait idle
expect status 1 Page 1 of 3
key Esc
wait idle
expect focus CorvixPages
key Ctrl+W
wait idle
expect documents 1
expect title * words.plain - Corvix Desk
open many.pages
wait idle
wait 500
key Ctrl+End
wait idle
shot many.png
key Ctrl+W
wait idle
action Actions.File.Exit
wait idle
expect dialog Teldane Quill
key N
""")
# What is typed is undone in one step, done again, saved, and asked about. The test's own format comes behind the product's.
if "format-text" in plugins:
    desk = Desk("text")
    (desk.folder / "notes.txt").write_bytes("one\r\ntwo äöü\r\n".encode())
    desk.run("""wait idle
size 760 300
open notes.txt
wait idle
type Hello
wait idle
expect text Helloone
expect enabled Actions.Edit.Undo yes
key Ctrl+Z
wait idle
expect text one
expect title notes.txt - Corvix Desk
expect enabled Actions.Edit.Undo no
key Ctrl+Y
wait idle
expect text Helloone
key Del
wait idle
expect text Hellone
key Ctrl+Z
wait idle
key Ctrl+S
wait idle
expect title notes.txt - Corvix Desk
shot notes.png
type X
wait idle
key Ctrl+W
wait idle
expect dialog Teldane Quill
key Esc
wait idle
expect documents 1
expect title * notes.txt - Corvix Desk
key Ctrl+Z
wait idle
key Ctrl+W
wait idle
expect documents 0
expect title Corvix Desk
quit
""")
    if (desk.folder / "notes.txt").read_bytes() != "Helloone\r\ntwo äöü\r\n".encode():
        complain("text", "the file is " + repr((desk.folder / "notes.txt").read_bytes()))

# A plug-in that comes before all others and claims everybody's keys: it gets those of menus, but nobody writes without
# letters, and the window can be closed.
desk = Desk("claims")
shutil.copy(bin_folder / "test-plugins" / "claims.dll", desk.folder / "plugins")
desk.run("""wait idle
open words.plain
wait idle
key A
key Space
key A
key Backspace
wait idle
expect text a first line
expect title * words.plain - Corvix Desk
key Ctrl+AltGr+Q
wait idle
expect status 0
key Ctrl+Alt+Q
wait idle
expect status 0 claimed
key Alt+F4
wait idle
expect dialog Teldane Quill
key N
""")

# Names that are long, or beyond the basic plane; a recent file comes back by the menu's key.
desk = Desk("names")
deep = "/".join(["a folder of a name of forty letters, or so"] * 8)
(desk.folder / deep).mkdir(parents=True)
(desk.folder / deep / "end.plain").write_text("at the end")
(desk.folder / "\U0001D11E ünï & co.plain").write_text("a clef")
desk.run(f"""wait idle
open \U0001D11E ünï & co.plain
wait idle
expect title \U0001D11E ünï & co.plain - Corvix Desk
expect text a clef
open {deep}/end.plain
wait idle
expect title end.plain - Corvix Desk
expect text at the end
shot names.png
key Ctrl+W
key Ctrl+W
wait idle
expect documents 0
key Alt+F
key R
wait idle
shot recent.png
key 1
wait idle
expect title end.plain - Corvix Desk
quit
""")

# The picture of the pages: a picture and a text, with panels.
if "format-image" in plugins and "format-text" in plugins:
    desk = Desk("picture")
    for name in ("docs/page.png", "README.md"):
        shutil.copy(checkout / name, desk.folder)
    desk.run("""wait idle
size 900 640
open README.md
open page.png
wait idle
panel Panel.Pages yes
wait idle
wait 600
expect title page.png - Corvix Desk
shot desk.png
open missing.png
""", code=1)

# In another language, chosen while it runs and kept.
desk = Desk("language")
desk.run("""wait idle
open three.pages
panel Panel.Pages yes
language de
wait idle
expect status 1 Seite 1 von 3
expect title three.pages - Corvix Desk
key Alt+A
wait idle
shot german.png
key Esc
key Esc
action Actions.Tools.Options
wait idle
expect dialog Optionen
key Esc
wait idle
quit
""")
keeper.communicate()
sys.exit(desks.wrong != 0)
