#!/usr/bin/env python3
"""Whether a program stands whatever lies in its folder of plug-ins:

    hostile_modules.py listed|asked|shown|inspected FOLDER BIN EMULATOR...

makes every module of rows.py in FOLDER, then "listed" has one program read all of them; "shown" has corvix-host print
what some of them say, "inspected" corvix info and check; "asked" has one program ask each of them for an object. Both must end by themselves, with the memory that the
descriptors need, and say of each module what its row says."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing beside the sources
import pe
import rows

MOST_SECONDS = 60   # a way out, no measure: all of it takes a few seconds
MOST_MEBIBYTES = 200


def make(modules, table):
    shutil.rmtree(modules.parent, ignore_errors=True)
    modules.mkdir(parents=True)
    for name, build, *_ in table:
        (modules / f"{name}.dll").write_bytes(build().bytes)


def make_files(modules, greeter):
    """Sizes, names and links: each a name and what is said of it."""
    table = []

    def sparse(name, content, size, said):
        with open(modules / f"{name}.dll", "wb") as file:
            file.write(content)
            file.truncate(size)
        table.append((name, said))

    good = greeter.read_bytes()
    sparse("text_of_600_MiB", b"text", 600 << 20, rows.NONE)
    sparse("text_of_5_GiB", b"text", 5 << 30, rows.NONE)
    sparse("module_of_600_MiB", good, 600 << 20, "")
    for name in ("x" * 200, "blanks and  ümläute", "semi;colon", "two.dots"):
        (modules / f"{name}.dll").write_bytes(good)
        table.append((name, ""))
    os.symlink(greeter, modules / "link.dll")
    os.link(modules / "two.dots.dll", modules / "hard_link.dll")
    os.symlink(modules / "missing", modules / "link_to_nothing.dll")
    os.symlink("link_to_itself.dll", modules / "link_to_itself.dll")
    os.symlink("/dev/zero", modules / "link_to_a_device.dll")
    (modules / "folder.dll").mkdir()
    return table + [("link", ""), ("hard_link", ""), ("link_to_a_device", "a device")]


def run(command, given=""):
    try:
        done = subprocess.run(command, input=given.encode(), capture_output=True, timeout=MOST_SECONDS)
        code, said = done.returncode, done.stdout
    except subprocess.TimeoutExpired as late:
        code, said = "a hang", late.stdout or b""
    return code, [line.split("\t") for line in said.decode("utf-8", "replace").splitlines()]


def said_of(lines):
    return {line[1]: (line[2], line[3]) for line in lines if line[0] == "module"}


def is_right(found, said):
    return said in found if said else not found


def listed(modules, bin_folder, emulator):
    table = rows.HEADERS + rows.DIRECTORIES + rows.RESOURCE + rows.BLOCKS
    make(modules, table)
    table = [(row[0], row[2]) for row in table] + make_files(modules, bin_folder / "plugins" / "greeter.dll")
    code, lines = run([*emulator, bin_folder / "corvix-module-probe.exe", modules])
    if code != 42 or ["alive"] not in lines:
        yield f"the program that lists them ended with {code}, {lines[-3:]}"
    found = said_of(lines)
    for name, said in table:
        state, reason = found.pop(name + ".dll", ("not listed", ""))
        if not is_right(reason, said) or not state.startswith(("described", "failed", "no plug-in")):
            yield f"{name}: {state}, \"{reason[:200]}\", not \"{said}\""
    for name in set(found) - {"link_to_nothing.dll", "link_to_itself.dll"}:
        yield f"{name}: listed, but in no row"
    for line in lines:
        if line[0] == "memory" and int(line[1]) > MOST_MEBIBYTES:
            yield f"{line[1]} MiB were held at once"
    added = [line[1] for line in lines if line[0] == "added"]
    if added[1:] != ["0"] * 3:
        yield f"modules were added once more in another spelling of the folder: {added}"


def asked(modules, bin_folder, emulator):
    table = [row for row in rows.HEADERS + rows.DIRECTORIES + rows.BLOCKS if len(row) > 3]
    make(modules, table)
    wanted = {row[0]: row[3] for row in table}
    code, lines = run([*emulator, bin_folder / "corvix-module-probe.exe", modules, "ask"],
                      "".join(name + ".dll\n" for name in wanted))
    if code != 42 or ["alive"] not in lines:
        yield f"the program that asks them ended with {code}, {lines[-3:]}"
    found = said_of(lines)
    boxes = {asking[1] for asking, box in zip(lines, lines[1:])
             if box == ["box", "Teldane Quill", ". Module may be corrupt!"]}
    yield from (f"{line[1]} left numbers in another mode" for line in lines if line[0] == "mode")
    for name, said in wanted.items():
        state, reason = found.get(name + ".dll", ("not asked", ""))
        if state != "failed" or said not in reason or not reason:
            yield f"{name}: {state}, \"{reason[:200]}\", not \"{said}\""
        if ("may be corrupt" in reason) != (name + ".dll" in boxes):
            yield f"{name}: \"{reason[:200]}\", but {'no ' if 'may be corrupt' in reason else 'a '}box"


SHOWN = ("names_that_paint", "names_of_nothing", "names_with_zeros", "names_of_half_a_letter", "long_but_allowed",
         "import_that_paints", "a_name_of_half_a_million")
STEERING = re.compile("[\0-\x09\x0b-\x1f\x7f-\x9f\u202e]")


def shown(modules, bin_folder, emulator):
    """What stands in a terminal when corvix-host lists them, or does whatever else prints what they say."""
    make(modules, [row for row in rows.DIRECTORIES + rows.BLOCKS if row[0] in SHOWN])
    for file in [bin_folder / "corvix-host.exe", bin_folder / "corvix.dll", *bin_folder.glob("lib*.dll")]:
        shutil.copy(file, modules.parent)
    # Targets that could not be told are said, and the exit code says so too.
    for code, command in ((0, ["list"]), (0, ["settings", "list"]), (1, ["--unattended", "--show-log", "event", "Paint"])):
        if command[-1] == "Paint":  # the only one that tells modules of the start: in the order of their needs
            for i, needing in enumerate([rows.many_needs()] * 60 + [rows.many_declared()]):
                (modules / f"needs{i}.dll").write_bytes(needing.bytes)
        done = subprocess.run([*emulator, modules.parent / "corvix-host.exe", *command], capture_output=True,
                              timeout=MOST_SECONDS)
        yield from wrong_in(f"corvix-host {command}", done, code, 600)


def wrong_in(command, done, code, longest):
    text = done.stdout.decode("utf-8").replace("\r\n", "\n")
    if done.returncode != code or not text:
        yield f"{command} ended with {done.returncode} and said {text[:500]}, {done.stderr}"
    for found in STEERING.finditer(text):
        yield f"{command} shows {found.group()!r} in {text[found.start() - 20:found.end() + 20]!r}"
    for line in text.splitlines():
        if len(line) > longest:
            yield f"{command} shows a line of {len(line)} letters"


def inspected(modules, bin_folder, emulator):
    """The same of the tool for authors."""
    table = [row for row in rows.DIRECTORIES + rows.RESOURCE + rows.BLOCKS if row[0] in SHOWN + ("imports_of_one_name",)]
    make(modules, table)
    for row in table:
        for code, command in ((0, ["info"]), (0, ["info", "--json"]), (1, ["check"])):
            done = subprocess.run([*emulator, bin_folder / "corvix.exe", *command, modules / f"{row[0]}.dll"],
                                  capture_output=True, timeout=MOST_SECONDS)
            yield from wrong_in(f"corvix {command} {row[0]}", done, code, 70_000 if "--json" in command else 5_000)


def main():
    step, folder, bin_folder, *emulator = sys.argv[1:]
    folder, bin_folder = pathlib.Path(folder), pathlib.Path(bin_folder).resolve()
    pe.take_word_size(bin_folder / "corvix.dll")
    steps = {"listed": listed, "asked": asked, "shown": shown, "inspected": inspected}
    found = list(steps[step](folder / "plugins", bin_folder, emulator))
    shutil.rmtree(folder)
    print("\n".join(found) or "every module is as its row says")
    return 1 if found else 0


sys.exit(main())
